#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "du/hardware/ShadowingComponent.hpp"
#include "io/CountsNTuple.hpp"
#include "io/Origin.hpp"
#include "io/OutputFile.hpp"
#include "io/PositionReader.hpp"

namespace ZARN::IO {

/// A file with one row of counts per PMT or per event: CSV, or a CountsNTuple
/// if its name ends in ".root". Columns: the name, paths, shadowed, fraction
/// (empty if there are no paths) and by, the component that shadows most paths;
/// and smeared_fraction for smeared counts (empty if there is none). Counts at
/// several tolerances have a row for each, and the column tolerance (mm) after
/// the name.
class CountsFile {
 public:
  /// @param path        as for OutputFile and CountsNTuple
  /// @param nameColumn  header of the name column
  /// @param origin      is written to an RNTuple only
  /// @throws as OutputFile and CountsNTuple
  CountsFile(const std::optional<std::string>& path,
             const std::string& nameColumn, const Origin& origin,
             eCounts counts = eCounts::kPlain);

  bool IsNTuple() const { return ntuple_.has_value(); }

  /// As in CountsNTuple; does nothing for CSV.
  void Begin(bool hasIntegerNames);

  /// @param item      the PMT or the event
  /// @param paths     number of light paths
  /// @param shadowed  number of shadowed light paths
  /// @param by        the component that shadows most, kNone for none
  /// @param smearedFraction  used only for smeared counts
  /// @param tolerance        used only for counts at several tolerances
  /// @throws as OutputFile::Write
  void Write(const NamedPosition& item, std::uint64_t paths,
             std::uint64_t shadowed, DU::eShadowingComponent by,
             std::optional<double> smearedFraction = std::nullopt,
             double tolerance = 0.0);

  /// As in OutputFile.
  void Finish();
  void Commit();

 private:
  void WriteLine(const std::string& cell, std::uint64_t paths,
                 std::uint64_t shadowed, DU::eShadowingComponent by,
                 std::optional<double> smearedFraction, double tolerance);

  eCounts counts_;
  // One of these:
  std::optional<OutputFile> csv_;
  std::optional<CountsNTuple> ntuple_;
};

}  // namespace ZARN::IO
