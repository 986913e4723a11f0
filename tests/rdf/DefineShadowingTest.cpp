#include <Math/Point3D.h>
#include <TVector3.h>
#include <gmock/gmock.h>
#include <ROOT/RDataFrame.hxx>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include "rdf/DataFrame.hpp"
#include "tests/property/ExamplePaths.hpp"
#include "tests/rdf/Frames.hpp"
#include "tests/rdf/InDetector.hpp"
#include "tests/support/TextOf.hpp"

namespace ZARN::Testing {
namespace {

using ROOT::RDF::RNode;

class DefineShadowing : public InDetector {
 protected:
  DefineShadowing() : paths_(ExamplePaths(kExamplePaths)) {}

  std::vector<int> Judged(const RNode& frame) const {
    return ByRow(RDF::DefineShadowing(frame, calculator_), "code");
  }

  std::vector<DU::LightPath> paths_;
};

TEST_F(DefineShadowing, GivesTheVerdictsOfFindShadowing) {
  const std::vector<int> expected = CodesOf(paths_);
  EXPECT_EQ(Judged(FrameOf(paths_)), expected);
  for (const eTypes types : {eTypes::kBytes, eTypes::kNames}) {
    EXPECT_EQ(Judged(FrameOf(paths_, eCoordinates::kVectors, types)), expected);
  }
  const std::vector<int> ofFloats = CodesOf(InSinglePrecision(paths_));
  for (const eCoordinates floats :
       {eCoordinates::kFloat, eCoordinates::kFloatVectors}) {
    EXPECT_EQ(Judged(FrameOf(paths_, floats)), ofFloats);
  }
}

TEST_F(DefineShadowing, GivesThemOnAnyNumberOfThreadsFromFiles) {
  const std::vector<int> expected = CodesOf(paths_);
  for (const eFormat format : {eFormat::kTree, eFormat::kNTuple}) {
    for (const unsigned int threads : {1U, 2U, 7U}) {
      SCOPED_TRACE(std::to_string(threads) + " threads");
      UseThreads(1);
      ThroughFile(FrameOf(paths_, eCoordinates::kDouble, eTypes::kNames),
                  "paths.root", format);
      UseThreads(threads);
      EXPECT_EQ(Judged(ROOT::RDataFrame("paths", "paths.root")), expected);
    }
    UseThreads(1);
    for (const eCoordinates vectors :
         {eCoordinates::kVectors, eCoordinates::kFloatVectors}) {
      const RNode written = ThroughFile(
          FrameOf(paths_, vectors, eTypes::kBytes), "vectors.root", format);
      EXPECT_EQ(Judged(written), vectors == eCoordinates::kVectors
                                     ? expected
                                     : CodesOf(InSinglePrecision(paths_)));
    }
  }
}

TEST_F(DefineShadowing, GivesThemForAMillionPathsOnSeveralThreads) {
  std::vector<DU::LightPath> many;
  while (many.size() < 1'000'000) {
    many.insert(many.end(), paths_.begin(), paths_.end());
  }
  const std::vector<int> expected = CodesOf(many);
  for (const unsigned int threads : {2U, 7U}) {
    UseThreads(threads);
    EXPECT_EQ(Judged(FrameOf(many)), expected);
  }
}

TEST_F(DefineShadowing, TakesPointsAndROOTsOldVectors) {
  paths_.resize(1000);
  RNode frame = FrameOf(paths_);
  frame = frame
              .Define("event",
                      [](double x, double y, double z) {
                        return ROOT::Math::XYZPoint(x, y, z);
                      },
                      {"start_x", "start_y", "start_z"})
              .Define("tube",
                      [](double x, double y, double z) {
                        return TVector3(x, y, z);
                      },
                      {"end_x", "end_y", "end_z"});
  RDF::PathColumns columns;
  columns.start = "event";
  columns.end = "tube";
  EXPECT_EQ(ByRow(RDF::DefineShadowing(frame, calculator_, columns), "code"),
            CodesOf(paths_));
}

TEST_F(DefineShadowing, TakesColumnsWithAliases) {
  paths_.resize(1000);
  const RNode frame = FrameOf(paths_)
                          .Alias("vertex_x", "start_x")
                          .Alias("vertex_y", "start_y")
                          .Alias("vertex_z", "start_z");
  RDF::PathColumns columns;
  columns.start = "vertex";
  columns.code = "by";
  EXPECT_EQ(ByRow(RDF::DefineShadowing(frame, calculator_, columns), "by"),
            CodesOf(paths_));
}

TEST_F(DefineShadowing, TreatsAnyOtherTypeAsUnknown) {
  paths_.resize(8);
  const auto codesOf = [&](auto type) {
    return Judged(FrameOf(paths_).Redefine("type", [type] { return type; }));
  };
  std::vector<DU::LightPath> unknown = paths_;
  for (DU::LightPath& path : unknown) {
    path.LightPathType = DU::kNumberOfLightPathTypes;
  }
  const std::vector<int> expected = CodesOf(unknown);
  ASSERT_NE(expected, CodesOf(paths_));
  EXPECT_EQ(codesOf(DU::kNumberOfLightPathTypes + 1), expected);
  EXPECT_EQ(codesOf(-1), expected);
  EXPECT_EQ(codesOf(short{-1}), expected);
  EXPECT_EQ(codesOf(std::int64_t{1} << 32), expected);
  EXPECT_EQ(codesOf(std::numeric_limits<std::uint64_t>::max()), expected);
  EXPECT_EQ(codesOf(std::string("Sideways")), expected);
  EXPECT_EQ(codesOf(std::string()), expected);
}

TEST_F(DefineShadowing, HidesTheColumnsThatItConverts) {
  RNode frame = FrameOf(paths_, eCoordinates::kFloat, eTypes::kNames);
  std::vector<std::string> expected = {"code"};
  for (const std::string& name : frame.GetColumnNames()) {
    expected.push_back(name);
  }
  RNode judged = RDF::DefineShadowing(frame, calculator_);
  EXPECT_THAT(judged.GetColumnNames(),
              testing::UnorderedElementsAreArray(expected));
}

TEST_F(DefineShadowing, JudgesAtTheToleranceOfTheCall) {
  RNode frame = RDF::DefineShadowing(FrameOf(paths_), calculator_);
  const std::vector<int> wide = CodesOf(paths_);
  calculator_.SetAllGeometryTolerances(0.0);
  RDF::PathColumns columns;
  columns.code = "narrow";
  frame = RDF::DefineShadowing(frame, calculator_, columns);
  const std::vector<int> narrow = CodesOf(paths_);
  ASSERT_NE(wide, narrow);
  EXPECT_EQ(ByRow(frame, "code"), wide);
  EXPECT_EQ(ByRow(frame, "narrow"), narrow);
}

TEST_F(DefineShadowing, TellsEverythingThatIsWrongBeforeTheLoop) {
  const auto reasonFor = [&](const RNode& frame) {
    return TextOf<std::invalid_argument>(
        [&] { RDF::DefineShadowing(frame, calculator_); });
  };
  EXPECT_EQ(reasonFor(ROOT::RDataFrame(1)
                          .Define("type", [] { return 1.0; })
                          .Define("start", [] { return std::string(); })
                          .Define("end_x", [] { return 1.0; })
                          .Define("end_y", [] { return 1.0F; })
                          .Define("end_z", [] { return 1; })
                          .Define("initial_x", [] { return 1.0; })),
            "DefineShadowing: there is no column initial_y, initial_z, "
            "final_x, final_y, final_z, av1_x, av1_y, av1_z, av2_x, av2_y, "
            "av2_z, av3_x, av3_y, av3_z, av4_x, av4_y, av4_z; "
            "the column type is of type double, expected an integer or "
            "std::string; "
            "the column start is of type string, expected a vector; "
            "the columns end_x, end_y, end_z are of type double, float, int, "
            "expected all float or all double");
  EXPECT_EQ(reasonFor(RDF::DefineShadowing(FrameOf(paths_), calculator_)),
            "DefineShadowing: the column code exists already");
}

}  // namespace
}  // namespace ZARN::Testing
