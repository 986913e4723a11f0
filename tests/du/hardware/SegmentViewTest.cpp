#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "du/hardware/WaterSegments.hpp"
#include "tests/du/PathColumns.hpp"
#include "tests/du/Paths.hpp"

namespace ZARN::DU {
namespace {

const TVector3 kPoint(1, 2, 3);
const TVector3 kDirection(0.5, -0.25, 8);

TEST(SegmentView, CopiesTheDirectionInItsSense) {
  const WaterSegment onward = SegmentView{kPoint, kDirection, 1.0}.Copy();
  EXPECT_EQ(onward.point, kPoint);
  EXPECT_EQ(onward.direction, kDirection);
  const WaterSegment back = SegmentView{kPoint, kDirection, -1.0}.Copy();
  EXPECT_EQ(back.point, kPoint);
  EXPECT_EQ(back.direction, -kDirection);
}

TEST(SegmentView, CopiesZeroVectorsForAMissingSegment) {
  const WaterSegment none = SegmentView{kPoint, kDirection, 0.0}.Copy();
  EXPECT_EQ(none.point, TVector3());
  EXPECT_EQ(none.direction, TVector3());
}

void ExpectSame(const WaterSegments& actual, const WaterSegments& expected) {
  EXPECT_EQ(actual.kind, expected.kind);
  EXPECT_EQ(actual.first.point, expected.first.point);
  EXPECT_EQ(actual.first.direction, expected.first.direction);
  EXPECT_EQ(actual.second.point, expected.second.point);
  EXPECT_EQ(actual.second.direction, expected.second.direction);
}

/// A path of each type, and of two types without a name.
std::vector<LightPath> PathsOfEachType() {
  std::vector<LightPath> paths;
  double x = 1;
  for (int type = -1; type <= kNumberOfLightPathTypes; ++type) {
    LightPath path;
    path.LightPathType = static_cast<eLightPathType>(type);
    for (TVector3* const vector :
         {&path.FinalDirection, &path.InitialDirection, &path.StartPos,
          &path.EndPos, &path.AVPoint1, &path.AVPoint2, &path.AVPoint3,
          &path.AVPoint4}) {
      *vector = {x, x + 0.25, x + 0.5};
      ++x;
    }
    paths.push_back(path);
  }
  return paths;
}

TEST(ViewsOf, GiveTheSegmentsOfThePath) {
  for (const LightPath& path : PathsOfEachType()) {
    SCOPED_TRACE(path.LightPathType);
    const PathShape& shape = ShapeOfType(path.LightPathType);
    const WaterSegments expected = SegmentsOf(path, shape);
    ExpectSame(ViewsOf(path, shape).Copy(), expected);
    ExpectSame(ViewsOf(expected).Copy(), expected);
  }
}

TEST(SegmentsOfColumns, AreThoseOfTheRecord) {
  const std::vector<LightPath> paths = PathsOfEachType();
  const Testing::PathColumns columns(paths);
  const LightPathArrays arrays = columns.Arrays();
  for (std::size_t i = 0; i < paths.size(); ++i) {
    SCOPED_TRACE(paths[i].LightPathType);
    ExpectSame(SegmentsOf(arrays, i), Testing::SegmentsOf(paths[i]));
  }
}

TEST(ShapeOfTypeNamed, UsesTheNameWhateverTheType) {
  for (int type = -1; type <= kNumberOfLightPathTypes; ++type) {
    for (const std::string name :
         {"Light Path Uninitialised", "LightPath Uninitialised",
          "Scint/InnerAV->AV->Water", "AV->Scint/InnerAV->AV->Water",
          "AV->Water", "Water->AV->Scint/InnerAV->AV->Water",
          "Water->AV->Water", "Water", "Water->Reflection->Water", "", "water",
          "AV->Wate", "AV->Water "}) {
      SCOPED_TRACE(name);
      const PathShape& shape =
          ShapeOfTypeNamed(static_cast<eLightPathType>(type), name);
      const PathShape& expected = ShapeOfName(name);
      EXPECT_EQ(shape.kind, expected.kind);
      EXPECT_EQ(shape.firstPoint, expected.firstPoint);
      EXPECT_EQ(shape.secondPoint, expected.secondPoint);
    }
  }
}

}  // namespace
}  // namespace ZARN::DU
