#include "tests/rdf/Frames.hpp"

#include <Math/Vector3D.h>
#include <TROOT.h>
#include <ROOT/RDataFrame.hxx>

#include "io/LightPathColumns.hpp"

namespace ZARN::Testing {
namespace {

using ROOT::RDF::RNode;

const DU::LightPath& At(const std::vector<DU::LightPath>* paths, ULong64_t i) {
  return (*paths)[static_cast<std::size_t>(i)];
}

template <class Number>
RNode WithCoordinates(RNode frame, const std::vector<DU::LightPath>* paths) {
  for (const IO::LightPathVector& vector : IO::kLightPathVectors) {
    for (int axis = 0; axis < 3; ++axis) {
      frame = frame.Define(
          vector.name + std::string("_") + "xyz" [axis],
          [paths, member = vector.member, axis](ULong64_t i) {
            return static_cast<Number>((At(paths, i).*member)[axis]);
          },
          { "rdfentry_" });
    }
  }
  return frame;
}

template <class Vector>
RNode WithVectors(RNode frame, const std::vector<DU::LightPath>* paths) {
  for (const IO::LightPathVector& vector : IO::kLightPathVectors) {
    frame = frame.Define(
        vector.name,
        [paths, member = vector.member](ULong64_t i) {
          const TVector3& of = At(paths, i).*member;
          return Vector(ROOT::Math::XYZVector(of.X(), of.Y(), of.Z()));
        },
        {"rdfentry_"});
  }
  return frame;
}

RNode WithTypes(RNode frame, const std::vector<DU::LightPath>* paths,
                eTypes types) {
  const auto number = [paths](ULong64_t i) {
    return static_cast<int>(At(paths, i).LightPathType);
  };
  switch (types) {
    case eTypes::kNumbers:
      return frame.Define("type", number, {"rdfentry_"});
    case eTypes::kBytes:
      return frame.Define("type",
                          [number](ULong64_t i) {
                            return static_cast<std::uint8_t>(number(i));
                          },
                          {"rdfentry_"});
    case eTypes::kNames:
      return frame.Define(
          "type",
          [number](ULong64_t i) {
            const int type = number(i);
            return DU::IsKnownType(type)
                       ? std::string(
                             DU::kLightPathTypeNames[static_cast<unsigned>(
                                 type)])
                       : std::string("Sideways");
          },
          {"rdfentry_"});
  }
  return frame;
}

}  // namespace

RNode FrameOf(const std::vector<DU::LightPath>& paths, eCoordinates coordinates,
              eTypes types) {
  RNode frame =
      ROOT::RDataFrame(paths.size())
          .Define("row", [](ULong64_t i) { return i; }, {"rdfentry_"});
  frame = WithTypes(frame, &paths, types);
  switch (coordinates) {
    case eCoordinates::kDouble:
      return WithCoordinates<double>(frame, &paths);
    case eCoordinates::kFloat:
      return WithCoordinates<float>(frame, &paths);
    case eCoordinates::kVectors:
      return WithVectors<ROOT::Math::XYZVector>(frame, &paths);
    case eCoordinates::kFloatVectors:
      return WithVectors<ROOT::Math::XYZVectorF>(frame, &paths);
  }
  return frame;
}

std::vector<DU::LightPath> InSinglePrecision(std::vector<DU::LightPath> paths) {
  for (DU::LightPath& path : paths) {
    for (const IO::LightPathVector& vector : IO::kLightPathVectors) {
      for (int axis = 0; axis < 3; ++axis) {
        double& value = (path.*vector.member)[axis];
        value = static_cast<double>(static_cast<float>(value));
      }
    }
  }
  return paths;
}

RNode ThroughFile(RNode frame, const std::string& file, eFormat format) {
  ROOT::RDF::RSnapshotOptions options;
  if (format == eFormat::kTree) {
    options.fAutoFlush = 1000;
  } else {
    options.fOutputFormat = ROOT::RDF::ESnapshotOutputFormat::kRNTuple;
    options.fApproxZippedClusterSize = 50'000;
    options.fMaxUnzippedClusterSize = 250'000;
    options.fMaxUnzippedPageSize = 50'000;
  }
  frame.Snapshot("paths", file, frame.GetColumnNames(), options);
  return ROOT::RDataFrame("paths", file);
}

void UseThreads(unsigned int threads) {
  if (ROOT::IsImplicitMTEnabled()) ROOT::DisableImplicitMT();
  if (threads > 1) ROOT::EnableImplicitMT(threads);
}

std::vector<int> ByRow(RNode frame, const std::string& column) {
  auto rows = frame.Take<ULong64_t>("row");
  auto values = frame.Take<int>(column);
  std::vector<int> sorted(rows->size(), -1);
  for (std::size_t i = 0; i < rows->size(); ++i) {
    sorted.at(static_cast<std::size_t>((*rows)[i])) = (*values)[i];
  }
  return sorted;
}

}  // namespace ZARN::Testing
