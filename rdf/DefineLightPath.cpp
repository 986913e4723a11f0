#include <string>
#include <vector>

#include "io/LightPathColumns.hpp"
#include "lightpath/PathBetween.hpp"
#include "lightpath/PathLengths.hpp"
#include "rdf/DataFrame.hpp"
#include "rdf/Inputs.hpp"

namespace ZARN::RDF {
namespace {

// Hidden by ROOT, and each computed only if a column of it is used.
constexpr const char* kPath = "rdf_path_";
constexpr const char* kLengths = "rdf_lengths_";

std::vector<std::string> Results() {
  std::vector<std::string> names = IO::LightPathColumns();
  for (const char* name : {"length_inner", "length_av", "length_water",
                           "optical_length", "time", "angle"}) {
    names.emplace_back(name);
  }
  return names;
}

::ROOT::RDF::RNode DefinePath(::ROOT::RDF::RNode frame,
                              const DU::ConcentricMedia& media, DU::eLight kind,
                              const std::vector<std::string>& inputs) {
  const auto find = kind == DU::eLight::kDirect ? &DU::FindDirectPath
                                                : &DU::FindReflectedPath;
  return frame.Define(
      kPath,
      [media, find](const Vector& event, const Vector& pmt) {
        DU::LightPath path;
        find(media, AsTVector3(event), AsTVector3(pmt), path);
        return path;
      },
      inputs);
}

::ROOT::RDF::RNode DefinePoints(::ROOT::RDF::RNode frame) {
  frame = frame.Define("type",
                       [](const DU::LightPath& path) {
                         return static_cast<int>(path.LightPathType);
                       },
                       {kPath});
  for (const IO::LightPathVector& vector : IO::kLightPathVectors) {
    for (int axis = 0; axis < 3; ++axis) {
      frame = frame.Define(
          vector.name + std::string("_") + "xyz" [axis],
          [member = vector.member, axis](const DU::LightPath& path) {
            return (path.*member)[axis];
          },
          { kPath });
    }
  }
  return frame;
}

::ROOT::RDF::RNode DefineLengths(::ROOT::RDF::RNode frame,
                                 const DU::LightPathCalculator& light) {
  frame = frame.Define(kLengths, &DU::LengthsOf, {kPath});
  for (const auto& [name, medium] :
       {std::pair("length_inner", 0U), std::pair("length_av", 1U),
        std::pair("length_water", 2U)}) {
    frame = frame.Define(name,
                         [medium = medium](const DU::PerMedium& lengths) {
                           return lengths[medium];
                         },
                         {kLengths});
  }
  return frame
      .Define("optical_length",
              [indices = light.GetMedia().RefractiveIndex](
                  const DU::PerMedium& lengths) {
                return DU::OpticalLengthOf(lengths, indices);
              },
              {kLengths})
      .Define(
          "time",
          [indices = light.GetGroupIndices()](const DU::PerMedium& lengths) {
            return DU::TimeOfFlightOf(lengths, indices);
          },
          {kLengths})
      .Define("angle", &DU::IncidenceAngleOf, {kPath});
}

}  // namespace

::ROOT::RDF::RNode DefineLightPath(::ROOT::RDF::RNode frame,
                                   const DU::LightPathCalculator& light,
                                   const PairColumns& columns,
                                   DU::eLight kind) {
  light.RequireRun();
  Inputs inputs(std::move(frame), "DefineLightPath", Results());
  inputs.AddVector(columns.event);
  inputs.AddVector(columns.pmt);
  frame = DefinePath(inputs.Frame(), light.GetMedia(), kind, inputs.Names());
  return DefineLengths(DefinePoints(std::move(frame)), light);
}

}  // namespace ZARN::RDF
