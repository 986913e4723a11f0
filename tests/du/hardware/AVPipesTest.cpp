#include "du/hardware/AVPipes.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "db/DBErrors.hpp"
#include "du/geometry/Constants.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/du/Paths.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::Below;
using Testing::ExpectSamePoints;
using Testing::FindChange;
using Testing::FindExact;
using Testing::Neighbours;
using Testing::OneCrossing;
using Testing::SegmentsOf;
using Testing::Tables;
using Testing::TwoCrossings;

bool IsShadowedAt(const TVector3& point) {
  return CheckForAVPipeShadowing(SegmentsOf(OneCrossing(point)));
}

TVector3 PointAt(double thetaDegrees, double phiDegrees) {
  TVector3 point;
  point.SetMagThetaPhi(5860.0, thetaDegrees / kDegreesPerRadian,
                       phiDegrees / kDegreesPerRadian);
  return point;
}

double ThetaDegrees(const TVector3& point) {
  return kDegreesPerRadian * point.Theta();
}

double PhiDegrees(const TVector3& point) {
  return kDegreesPerRadian * point.Phi();
}

/// Expect that the azimuths of a band, at this polar angle, are blocked up to
/// and including its limits, and not one unit in the last place beyond.
void ExpectBand(double thetaDegrees, double lowest, double highest) {
  SCOPED_TRACE(thetaDegrees);
  const TVector3 middle = PointAt(thetaDegrees, 90.0);
  // Moving a point along x changes its azimuth and keeps its polar angle near
  // the given one.
  const auto pointWith = [&](double x) {
    return TVector3(x, middle.Y(), middle.Z());
  };
  const auto phiAt = [&](double x) { return -PhiDegrees(pointWith(x)); };
  const auto xOf = [&](double phiDegrees) {
    return FindExact(-middle.Y(), middle.Y(), phiAt, -phiDegrees);
  };
  // A polar angle below 30 must stay below it, and so on.
  ASSERT_LT(std::abs(ThetaDegrees(pointWith(middle.Y() * 0.3)) - thetaDegrees),
            4.0);
  const auto atLowest = xOf(lowest);
  const auto below = xOf(Below(lowest));
  const auto atHighest = xOf(highest);
  const auto above = xOf(Above(highest));
  ASSERT_TRUE(atLowest.has_value() && below.has_value());
  ASSERT_TRUE(atHighest.has_value() && above.has_value());
  EXPECT_TRUE(IsShadowedAt(pointWith(*atLowest)));
  EXPECT_FALSE(IsShadowedAt(pointWith(*below)));
  EXPECT_TRUE(IsShadowedAt(pointWith(*atHighest)));
  EXPECT_FALSE(IsShadowedAt(pointWith(*above)));
  EXPECT_TRUE(IsShadowedAt(middle));
  EXPECT_FALSE(IsShadowedAt(-middle));
}

TEST(AVPipes, BlockThirtyDegreesNearTheTop) { ExpectBand(10.0, 75.0, 105.0); }

TEST(AVPipes, BlockTwentyDegreesAroundTheEquator) {
  ExpectBand(60.0, 80.0, 100.0);
}

TEST(AVPipes, BlockTenDegreesNearTheBottom) { ExpectBand(150.0, 85.0, 95.0); }

TEST(AVPipes, BlockAnAzimuthOf96DegreesAtTheEquatorOnly) {
  EXPECT_TRUE(IsShadowedAt(PointAt(150.0, 90.0)));
  EXPECT_FALSE(IsShadowedAt(PointAt(150.0, 96.0)));
  EXPECT_TRUE(IsShadowedAt(PointAt(60.0, 96.0)));
}

TEST(AVPipes, BlockAnAzimuthOf75DegreesButNoLessNearTheTop) {
  EXPECT_FALSE(IsShadowedAt(PointAt(10.0, 74.999)));
  EXPECT_TRUE(IsShadowedAt(PointAt(10.0, 75.001)));
}

/// Expect that the verdict at an azimuth changes where the polar angle passes
/// the limit. Neither 30 nor 120 is a product of 57.29577951308232 and a
/// double, so the polar angles just below and just above are used.
void ExpectBandEdge(double limit, double phiDegrees) {
  const TVector3 start = PointAt(limit, phiDegrees);
  const auto pointWith = [&](double z) {
    return TVector3(start.X(), start.Y(), z);
  };
  const auto isUpper = [&](double z) {
    return ThetaDegrees(pointWith(z)) < limit;
  };
  const Neighbours z =
      FindChange(start.Z() + 100.0, start.Z() - 100.0, isUpper);
  EXPECT_LT(limit - ThetaDegrees(pointWith(z.before)), 2e-14);
  EXPECT_LT(ThetaDegrees(pointWith(z.after)) - limit, 2e-14);
  EXPECT_TRUE(IsShadowedAt(pointWith(z.before)));
  EXPECT_FALSE(IsShadowedAt(pointWith(z.after)));
}

TEST(AVPipes, NarrowTheirBandFromThirtyDegreesOn) {
  ExpectBandEdge(30.0, 78.0);
  ExpectBandEdge(30.0, 102.0);
}

TEST(AVPipes, NarrowTheirBandAgainFrom120DegreesOn) {
  ExpectBandEdge(120.0, 83.0);
  ExpectBandEdge(120.0, 97.0);
}

TEST(AVPipes, KeepTheMiddleBandUpToJustBelow120Degrees) {
  const TVector3 start = PointAt(120.0, 78.0);
  const auto pointWith = [&](double z) {
    return TVector3(start.X(), start.Y(), z);
  };
  const Neighbours z =
      FindChange(start.Z() + 100.0, start.Z() - 100.0,
                 [&](double x) { return ThetaDegrees(pointWith(x)) < 120.0; });
  EXPECT_FALSE(IsShadowedAt(pointWith(z.before)));
  EXPECT_FALSE(IsShadowedAt(pointWith(z.after)));
}

TEST(AVPipes, JudgeAPathOnlyByItsFirstCrossing) {
  const TVector3 inside = PointAt(60.0, 90.0);
  const TVector3 outside = PointAt(60.0, 0.0);
  EXPECT_TRUE(
      CheckForAVPipeShadowing(SegmentsOf(TwoCrossings(inside, outside))));
  EXPECT_FALSE(
      CheckForAVPipeShadowing(SegmentsOf(TwoCrossings(outside, inside))));
}

TEST(AVPipes, TestTheFirstCrossingOfEachTypeOfPath) {
  auto expected = Testing::EveryCrossing();
  expected[kWaterThroughInnerAV] = "1";
  expected[kWaterThroughAV] = "1";
  EXPECT_EQ(Testing::DecidingPoints(PointAt(60.0, 90.0), PointAt(60.0, 0.0),
                                    CheckForAVPipeShadowing),
            expected);
}

TEST(AVPipes, NeverBlockAPathInWater) {
  EXPECT_FALSE(CheckForAVPipeShadowing(
      SegmentsOf(Testing::AllAt(kWater, PointAt(60.0, 90.0)))));
}

TEST(AVPipes, NeverBlockAPathOfUnknownType) {
  EXPECT_FALSE(CheckForAVPipeShadowing(Testing::UnknownSegments()));
  EXPECT_FALSE(CheckForAVPipeShadowing(Testing::MisspeltSegments()));
  EXPECT_FALSE(CheckForAVPipeShadowing(SegmentsOf(LightPath())));
}

const std::vector<std::string> kIndices = {
    "av_pipe-1",    "av_pipe-2", "av_pipe-3",   "av_pipe-4",
    "av_pipe-labs", "av_pipe-6", "av_pipe-labr"};

/// Three points of the pipe with this index, different for each pipe.
std::vector<TVector3> CentreLine(std::size_t pipe) {
  const double x = 70.0 * static_cast<double>(pipe);
  return {{x, 820, 7800}, {x, 830, 5900}, {x, 5950, 10}};
}

Tables PipeTables() {
  Tables tables;
  for (std::size_t pipe = 0; pipe < kIndices.size(); ++pipe) {
    tables.SetPositions("SOLID", kIndices[pipe], CentreLine(pipe));
  }
  tables.Set("SOLID", "av_pipe-1", "r_max", 25.0);
  tables.Set("SOLID", "av_pipe-labs", "r_max", 33.0);
  return tables;
}

void AppendStretch(const TVector3& a, const TVector3& b,
                   std::vector<TVector3>& points) {
  const TVector3 d = b - a;
  for (int step = 0; step <= 50; ++step) {
    const double f = (2.0 * step) / 100.0;
    points.push_back(a + (d.Mag() * f) * d.Unit());
  }
}

std::vector<TVector3> ExpectedPoints() {
  std::vector<TVector3> points;
  for (std::size_t pipe = 0; pipe < kIndices.size(); ++pipe) {
    const std::vector<TVector3> line = CentreLine(pipe);
    AppendStretch(line[0], line[1], points);
    AppendStretch(line[1], line[2], points);
  }
  return points;
}

TEST(LoadAVPipeInfo, ReadsEveryCentreLineAndTwoRadii) {
  PipeTables().Load();
  AVPipeModel model;
  LoadAVPipeInfo(DB::Get(), model);
  EXPECT_EQ(model.AVPipe1Positions, CentreLine(0));
  EXPECT_EQ(model.AVPipe2Positions, CentreLine(1));
  EXPECT_EQ(model.AVPipe3Positions, CentreLine(2));
  EXPECT_EQ(model.AVPipe4Positions, CentreLine(3));
  EXPECT_EQ(model.AVPipeLABSPositions, CentreLine(4));
  EXPECT_EQ(model.AVPipe6Positions, CentreLine(5));
  EXPECT_EQ(model.AVPipeLABRPositions, CentreLine(6));
  EXPECT_EQ(model.AVPipeRadius, 25.0);
  EXPECT_EQ(model.AVPipeLABSRadius, 33.0);
}

TEST(LoadAVPipeInfo, SamplesEveryStretchAtFiftyOnePoints) {
  PipeTables().Load();
  AVPipeModel model;
  LoadAVPipeInfo(DB::Get(), model);
  EXPECT_EQ(model.AVPipePoints.size(), 7U * 51U * 2U);
  ExpectSamePoints(model.AVPipePoints, ExpectedPoints());
}

TEST(LoadAVPipeInfo, SamplesNothingOfAPipeWithASinglePosition) {
  Tables tables = PipeTables();
  for (const std::string& index : kIndices) {
    tables.SetPositions("SOLID", index, {{1, 2, 3}});
  }
  tables.SetPositions("SOLID", "av_pipe-6", CentreLine(0));
  tables.Load();
  AVPipeModel model;
  LoadAVPipeInfo(DB::Get(), model);
  EXPECT_EQ(model.AVPipePoints.size(), 51U * 2U);
}

TEST(LoadAVPipeInfo, AppendsAnotherCopyOfTheSamplesWhenCalledAgain) {
  PipeTables().Load();
  AVPipeModel model;
  LoadAVPipeInfo(DB::Get(), model);
  LoadAVPipeInfo(DB::Get(), model);
  std::vector<TVector3> expected = ExpectedPoints();
  const std::vector<TVector3> copy = expected;
  expected.insert(expected.end(), copy.begin(), copy.end());
  ExpectSamePoints(model.AVPipePoints, expected);
  EXPECT_EQ(model.AVPipe1Positions, CentreLine(0));
}

TEST(LoadAVPipeInfo, RejectsAPipeWithoutAPointAfterAllReads) {
  for (const std::string& index : kIndices) {
    SCOPED_TRACE(index);
    PipeTables().SetPositions("SOLID", index, {}).Load();
    AVPipeModel model;
    EXPECT_THROW(LoadAVPipeInfo(DB::Get(), model), DBNotFoundError);
    EXPECT_EQ(model.AVPipeLABSRadius, 33.0);
    EXPECT_EQ(model.AVPipeLABRPositions.empty(), index == "av_pipe-labr");
    EXPECT_EQ(model.AVPipePoints, std::vector<TVector3>());
  }
}

TEST(LoadAVPipeInfo, StopsAtAMissingFieldAndKeepsWhatItHasRead) {
  PipeTables().RemoveField("SOLID", "av_pipe-labs", "r_max").Load();
  AVPipeModel withoutSecondRadius;
  EXPECT_THROW(LoadAVPipeInfo(DB::Get(), withoutSecondRadius), DBNotFoundError);
  EXPECT_EQ(withoutSecondRadius.AVPipeRadius, 25.0);
  EXPECT_EQ(withoutSecondRadius.AVPipe1Positions, std::vector<TVector3>());

  PipeTables().RemoveField("SOLID", "av_pipe-labs", "z").Load();
  AVPipeModel withoutFifthPipe;
  EXPECT_THROW(LoadAVPipeInfo(DB::Get(), withoutFifthPipe), DBNotFoundError);
  EXPECT_EQ(withoutFifthPipe.AVPipe4Positions, CentreLine(3));
  EXPECT_EQ(withoutFifthPipe.AVPipeLABSPositions, std::vector<TVector3>());
  EXPECT_EQ(withoutFifthPipe.AVPipe6Positions, std::vector<TVector3>());
  EXPECT_EQ(withoutFifthPipe.AVPipePoints, std::vector<TVector3>());
}

TEST(LoadAVPipeInfo, NeedsNoRadiusOfAnotherPipe) {
  PipeTables().RemoveField("SOLID", "av_pipe-1", "r_max").Load();
  AVPipeModel model;
  EXPECT_THROW(LoadAVPipeInfo(DB::Get(), model), DBNotFoundError);
  PipeTables().Set("SOLID", "av_pipe-2", "r_max", "no number").Load();
  EXPECT_NO_THROW(LoadAVPipeInfo(DB::Get(), model));
}

TEST(AVPipeModel, KeepsItsRadiiWhenCleared) {
  PipeTables().Load();
  AVPipeModel model;
  LoadAVPipeInfo(DB::Get(), model);
  const std::size_t capacity = model.AVPipePoints.capacity();
  model.Clear();
  for (const auto* list : {&model.AVPipe1Positions, &model.AVPipe2Positions,
                           &model.AVPipe3Positions, &model.AVPipe4Positions,
                           &model.AVPipeLABSPositions, &model.AVPipe6Positions,
                           &model.AVPipeLABRPositions, &model.AVPipePoints}) {
    EXPECT_TRUE(list->empty());
  }
  EXPECT_EQ(model.AVPipePoints.capacity(), capacity);
  EXPECT_EQ(model.AVPipeRadius, 25.0);
  EXPECT_EQ(model.AVPipeLABSRadius, 33.0);
}

}  // namespace
}  // namespace ZARN::DU
