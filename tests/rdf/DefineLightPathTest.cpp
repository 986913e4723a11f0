#include <Math/Vector3D.h>
#include <gmock/gmock.h>
#include <ROOT/RDataFrame.hxx>
#include <array>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "io/LightPathColumns.hpp"
#include "rdf/DataFrame.hpp"
#include "tests/property/Random.hpp"
#include "tests/rdf/Frames.hpp"
#include "tests/rdf/InDetector.hpp"
#include "tests/support/SpecialNumbers.hpp"
#include "tests/support/TextOf.hpp"

namespace ZARN::Testing {
namespace {

using DU::eLight;
using ROOT::Math::XYZVector;
using ROOT::RDF::RNode;

/// Pairs in which light takes every way, and some without a path.
struct Pairs {
  std::vector<TVector3> events;
  std::vector<TVector3> pmts;

  explicit Pairs(std::size_t count) {
    Random random(15);
    for (std::size_t i = 0; i < count; ++i) {
      const double radius = std::array{3000.0, 5799.0, 5830.0, 7000.0}[i % 4];
      events.push_back(random.Direction() * radius);
      pmts.push_back(random.Direction() * 8400.0);
    }
    events[0].SetX(kNaN);
    events[1] = pmts[1];
    pmts[2] = {0, 0, 5830};
  }

  RNode Frame() const {
    RNode frame =
        ROOT::RDataFrame(events.size())
            .Define("row", [](ULong64_t i) { return i; }, {"rdfentry_"});
    for (const auto& [name, positions] :
         {std::pair("event", &events), std::pair("pmt", &pmts)}) {
      frame = frame.Define(name,
                           [positions = positions](ULong64_t i) {
                             const TVector3& p = (*positions)[i];
                             return XYZVector(p.X(), p.Y(), p.Z());
                           },
                           {"rdfentry_"});
    }
    return frame;
  }
};

using DefineLightPath = InDetector;
using DefineScan = InDetector;

TEST_F(DefineLightPath, GivesPathsOfCalcByPositionUnderTheNamesOfOurFiles) {
  const Pairs pairs(400);
  for (const eLight kind : {eLight::kDirect, eLight::kReflected}) {
    RNode frame = RDF::DefineLightPath(pairs.Frame(), light_, {}, kind);
    auto types = frame.Take<int>("type");
    using Wanted = std::pair<ROOT::RDF::RResultPtr<std::vector<double>>,
                             std::vector<double>>;
    std::vector<Wanted> columns;
    const auto add = [&](const std::string& name, const auto& value) {
      Wanted& column =
          columns.emplace_back(frame.Take<double>(name), std::vector<double>());
      for (std::size_t i = 0; i < pairs.events.size(); ++i) {
        if (kind == eLight::kDirect) {
          light_.CalcByPosition(pairs.events[i], pairs.pmts[i]);
        } else {
          light_.CalcReflectionByPosition(pairs.events[i], pairs.pmts[i]);
        }
        column.second.push_back(value());
      }
    };
    for (const IO::LightPathVector& vector : IO::kLightPathVectors) {
      for (int axis = 0; axis < 3; ++axis) {
        add(vector.name + std::string("_") + "xyz"[axis],
            [&] { return (light_.GetLightPath().*vector.member)[axis]; });
      }
    }
    add("length_inner",
        [&] { return light_.GetLength(DU::eMedium::kInnerAV); });
    add("length_av", [&] { return light_.GetLength(DU::eMedium::kAcrylic); });
    add("length_water", [&] { return light_.GetLength(DU::eMedium::kWater); });
    add("optical_length", [&] { return light_.GetOpticalLength(); });
    add("time", [&] { return light_.GetTimeOfFlight(); });
    add("angle", [&] { return light_.GetIncidenceAngle(); });
    for (Wanted& column : columns) EXPECT_EQ(*column.first, column.second);
    const std::set<int> found(types->begin(), types->end());
    EXPECT_EQ(found,
              kind == eLight::kDirect
                  ? (std::set<int>{DU::kUninitialised, DU::kInnerAVToWater,
                                   DU::kAVThroughInnerAVToWater, DU::kAVToWater,
                                   DU::kWaterThroughInnerAV, DU::kWater})
                  : (std::set<int>{DU::kUninitialised, DU::kWaterReflection}));
  }
}

TEST_F(DefineLightPath, GivesWhatDefineShadowingTakes) {
  const Pairs pairs(2000);
  for (const unsigned int threads : {1U, 2U, 7U}) {
    UseThreads(threads);
    const RNode frame = RDF::DefineShadowing(
        RDF::DefineLightPath(pairs.Frame(), light_), calculator_);
    std::vector<int> expected;
    for (std::size_t i = 0; i < pairs.events.size(); ++i) {
      light_.CalcByPosition(pairs.events[i], pairs.pmts[i]);
      expected.push_back(
          static_cast<int>(calculator_.FindShadowing(light_.GetLightPath())));
    }
    EXPECT_EQ(ByRow(frame, "code"), expected);
  }
}

TEST_F(DefineLightPath, NeedsARunAndColumnsThatAreFree) {
  const Pairs pairs(3);
  EXPECT_THROW(RDF::DefineLightPath(pairs.Frame(), DU::LightPathCalculator()),
               std::logic_error);
  const RNode frame = pairs.Frame().Define("time", [] { return 1.0; });
  RDF::PairColumns columns;
  columns.pmt = "tube";
  EXPECT_EQ(TextOf<std::invalid_argument>(
                [&] { RDF::DefineLightPath(frame, light_, columns); }),
            "DefineLightPath: there is no column tube_x, tube_y, tube_z; "
            "the column time exists already");
}

TEST_F(DefineScan, GivesTheVerdictsOfFindVerdict) {
  const Pairs pairs(2000);
  for (const eLight kind : {eLight::kDirect, eLight::kReflected}) {
    std::vector<int> expected;
    for (std::size_t i = 0; i < pairs.events.size(); ++i) {
      expected.push_back(static_cast<int>(calculator_.FindVerdict(
          light_, pairs.events[i], pairs.pmts[i], kind)));
    }
    EXPECT_THAT(expected, kind == eLight::kDirect
                              ? testing::IsSupersetOf({0, 1, 7, 8, 9, 10})
                              : testing::IsSupersetOf({0, 1, 11}));
    for (const unsigned int threads : {1U, 2U, 7U}) {
      UseThreads(threads);
      const RNode frame =
          RDF::DefineScan(pairs.Frame(), calculator_, light_, {}, kind);
      EXPECT_EQ(ByRow(frame, "code"), expected);
    }
  }
}

TEST_F(DefineScan, TakesPositionsBesideNames) {
  const Pairs pairs(10);
  RNode frame = pairs.Frame();
  for (const std::string name : {"event", "pmt"}) {
    for (const auto& [axis, at] :
         {std::pair("_x", 0), std::pair("_y", 1), std::pair("_z", 2)}) {
      frame = frame.Define(name + axis,
                           [at = at](const XYZVector& v) {
                             return at == 0 ? v.X() : at == 1 ? v.Y() : v.Z();
                           },
                           {name});
    }
    frame = frame.Redefine(name, [] { return 12345; });
  }
  EXPECT_EQ(ByRow(RDF::DefineScan(frame, calculator_, light_), "code"),
            ByRow(RDF::DefineScan(pairs.Frame(), calculator_, light_), "code"));
}

TEST_F(DefineScan, NeedsARunAndPositions) {
  const Pairs pairs(3);
  EXPECT_THROW(
      RDF::DefineScan(pairs.Frame(), calculator_, DU::LightPathCalculator()),
      std::logic_error);
  EXPECT_EQ(TextOf<std::invalid_argument>([&] {
              RDF::DefineScan(ROOT::RDataFrame(1), calculator_, light_);
            }),
            "DefineScan: there is no column event_x, event_y, event_z, pmt_x, "
            "pmt_y, pmt_z");
}

}  // namespace
}  // namespace ZARN::Testing
