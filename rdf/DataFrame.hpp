#pragma once

#include <map>
#include <string>

#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/LightPathType.hpp"

// ROOT's header takes seconds to compile, so it is for those who use a frame.
namespace ROOT {
class RDataFrame;
namespace Detail::RDF {
class RNodeBase;
}
namespace RDF {
template <typename Proxied>
class RInterface;
using RNode = RInterface<::ROOT::Detail::RDF::RNodeBase>;
}  // namespace RDF
}  // namespace ROOT

/// Verdicts and light paths as columns of a data frame (ROOT::RDataFrame).
///
/// A vector in a frame is either three columns, <name>_x, <name>_y and
/// <name>_z, all float or all double; or one column <name> of TVector3 or of
/// ROOT::Math::XYZVector, XYZVectorF, XYZPoint or XYZPointF. Columns that have
/// other names can be given these with the frame's Alias.
///
/// A frame is lazy: it computes when its first result is read. So each function
/// keeps copies of the calculators, which share what makes them fast; a later
/// change of the caller's changes no frame. What is wrong with a column is told
/// before that, in one exception. All work with ROOT::EnableImplicitMT, and
/// write no messages while the frame computes.
namespace ZARN::RDF {

/// The names of the columns of light paths.
struct PathColumns {
  /// An integer of eLightPathType, or a std::string of kLightPathTypeNames;
  /// any other is an unknown type, as in FindShadowing.
  std::string type = "type";
  std::string start = "start";      ///< LightPath::StartPos
  std::string end = "end";          ///< EndPos
  std::string initial = "initial";  ///< InitialDirection
  std::string final = "final";      ///< FinalDirection
  std::string av1 = "av1";          ///< AVPoint1, and so on
  std::string av2 = "av2";
  std::string av3 = "av3";
  std::string av4 = "av4";
  std::string code = "code";  ///< of the new column
};

/// The names of the columns of events and PMTs: vectors.
struct PairColumns {
  std::string event = "event";
  std::string pmt = "pmt";
  std::string code = "code";  ///< of the new column of DefineScan
};

/// Add the verdict on each light path: a column of int with the number of an
/// eVerdict, 0 to 6. (An int, as in the files of `zarn-shadow`: other integers
/// of a byte are letters to much that prints them.) A path without a type,
/// kUninitialised, is clear, because nothing blocks it.
///
/// @throws std::invalid_argument naming every column that is missing or has
///         another type, and the new one if it exists already
::ROOT::RDF::RNode DefineShadowing(::ROOT::RDF::RNode frame,
                                   const DU::ShadowingCalculator& calculator,
                                   const PathColumns& columns = {});

/// Add the light path of CalcByPosition, or of CalcReflectionByPosition, for
/// each event and PMT, under the names with which DefineShadowing and the files
/// of `zarn-shadow` know it:
///
/// - type (int, 0 where there is no path);
/// - start_x ... start_z, end_*, initial_*, final_* and av1_* to av4_* (mm and
///   directions; 0 in points that the type does not use);
/// - length_inner, length_av, length_water and optical_length (mm), time (ns)
///   and angle (rad): what the getters of LightPathCalculator tell.
///
/// Only columns that are used cost time.
///
/// @param light  BeginOfRun was called
/// @throws as DefineShadowing; std::logic_error before @p light had its
///         BeginOfRun
::ROOT::RDF::RNode DefineLightPath(::ROOT::RDF::RNode frame,
                                   const DU::LightPathCalculator& light,
                                   const PairColumns& columns = {},
                                   DU::eLight kind = DU::eLight::kDirect);

/// Add the verdict of FindVerdict for each event and PMT: a column of int with
/// the number of an eVerdict, also of those that tell why there is no path.
///
/// @throws as DefineLightPath
::ROOT::RDF::RNode DefineScan(::ROOT::RDF::RNode frame,
                              const DU::ShadowingCalculator& calculator,
                              const DU::LightPathCalculator& light,
                              const PairColumns& columns = {},
                              DU::eLight kind = DU::eLight::kDirect);

/// The light paths of a ROOT file, a TTree or an RNTuple, as a frame. It reads
/// them in bulk, and with a calculator judges them in batches: several times
/// faster than DefineShadowing on ROOT's own frame of the file. One thread
/// works on each cluster. The columns are
///
/// - row (ULong64_t), the entry: the order of a frame's results is that of the
///   rows only with one thread;
/// - type (int, an eLightPathType), and start_x ... av4_z (double), whatever
///   numbers the file has;
/// - event and pmt, if the file has them: std::int64_t or std::string;
/// - with a calculator, the verdict as of DefineShadowing.
///
/// While the frame computes, IO::BadInput tells file, tree, column and entry of
/// what cannot be read.
///
/// @param input       "paths.root", or "paths.root:tree" if it has several
/// @param calculator  null if no verdicts are wanted
/// @param columns     what columns are called in the file, by our name, where
///                    it is another
/// @param code        the name of the column of verdicts
/// @throws IO::BadInput if the file is damaged, if a column is missing or holds
///         something else; std::invalid_argument if @p code exists already
::ROOT::RDataFrame FromPaths(
    const std::string& input,
    const DU::ShadowingCalculator* calculator = nullptr,
    const std::map<std::string, std::string>& columns = {},
    const std::string& code = "code");

}  // namespace ZARN::RDF
