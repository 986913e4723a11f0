#include "du/hardware/BellyPlates.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "db/DBErrors.hpp"
#include "du/geometry/Primitives.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/du/Paths.hpp"
#include "tests/du/RootWarnings.hpp"
#include "tests/du/UsualVessel.hpp"
#include "tests/support/Captured.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::Below;
using Testing::ExpectSamePoints;
using Testing::FindChange;
using Testing::kOuterAVRadius;
using Testing::kTolerance;
using Testing::Neighbours;
using Testing::OneCrossing;
using Testing::RootWarnings;
using Testing::SegmentsOf;
using Testing::Tables;
using Testing::TwoCrossings;

BellyPlateModel PlatesAt(const std::vector<TVector3>& centres) {
  BellyPlateModel model;
  model.BellyPlatePositions = centres;
  model.BellyPlateHalfHeight = 600.0;
  return model;
}

bool IsShadowed(const BellyPlateModel& model, const WaterSegments& path,
                double tolerance = kTolerance) {
  return CheckForBellyPlateShadowing(model, tolerance, kOuterAVRadius, path);
}

bool IsShadowedAt(const BellyPlateModel& model, const TVector3& point,
                  double tolerance = kTolerance) {
  return IsShadowed(model, SegmentsOf(OneCrossing(point)), tolerance);
}

const TVector3 kOnThePlate(5860, 0, 0);
const TVector3 kBesideThePlate(0, 5860, 0);

const BellyPlateModel& OnePlate() {
  static const BellyPlateModel model = PlatesAt({kOnThePlate});
  return model;
}

/// The limits of the azimuthal test, by the formulas.
struct Edges {
  Edges(const BellyPlateModel& model, double tolerance) {
    const TVector3 p = model.BellyPlatePositions[0];
    const double h = model.BellyPlateHalfHeight;
    TVector3 top = p + h * TVector3(0, 0, 1);
    top.SetMag(p.Mag());
    TVector3 bottom = p - h * TVector3(0, 0, 1);
    bottom.SetMag(p.Mag());
    const double w = top.Angle(bottom);
    const double phiStart = p.Phi() - 0.5 * w;
    const double dphi = tolerance / kOuterAVRadius;
    left = right = p;
    left.SetPhi(phiStart - dphi);
    right.SetPhi(dphi + (w + phiStart));
    leftAngle = left.Angle(p);
    rightAngle = right.Angle(p);
  }

  TVector3 left;
  TVector3 right;
  double leftAngle;
  double rightAngle;
};

TEST(BellyPlates, ExcludeAPointExactlyOnTheEdgeOfTheirHeightBand) {
  for (const double sign : {1.0, -1.0}) {
    EXPECT_FALSE(IsShadowedAt(OnePlate(), {5860, 0, sign * 750.0}));
    EXPECT_TRUE(IsShadowedAt(OnePlate(), {5860, 0, sign * Below(750.0)}));
    EXPECT_FALSE(IsShadowedAt(OnePlate(), {5860, 0, sign * Above(750.0)}));
  }
}

TEST(BellyPlates, ExcludeASecondCrossingExactlyOnTheEdgeOfTheirHeightBand) {
  const auto isShadowed = [](double z) {
    return IsShadowed(OnePlate(),
                      SegmentsOf(TwoCrossings(kBesideThePlate, {5860, 0, z})));
  };
  for (const double sign : {1.0, -1.0}) {
    EXPECT_FALSE(isShadowed(sign * 750.0));
    EXPECT_TRUE(isShadowed(sign * Below(750.0)));
  }
}

TEST(BellyPlates, HaveTheSameHeightBandWhereverTheirCentreIs) {
  const BellyPlateModel model = PlatesAt({{5860, 0, 500}});
  EXPECT_TRUE(IsShadowedAt(model, {5860, 0, Above(-750.0)}));
  EXPECT_FALSE(IsShadowedAt(model, {5860, 0, 750.0}));
}

/// Find a plate whose edges, after rounding, have different angles, with the
/// wanted one nearer: then only that one decides.
template <class IsWanted>
std::optional<BellyPlateModel> FindPlate(const IsWanted& isWanted) {
  for (double phi = 0.01; phi < 3.0; phi += 0.01) {
    BellyPlateModel model = PlatesAt({WithPhi({5860, 0, 40}, phi)});
    if (isWanted(Edges(model, kTolerance))) return model;
  }
  return std::nullopt;
}

TEST(BellyPlates, DoNotShadowAPointAtExactlyTheirLeftHalfWidth) {
  const auto model = FindPlate(
      [](const Edges& edges) { return edges.leftAngle < edges.rightAngle; });
  ASSERT_TRUE(model.has_value());
  const Edges edges(*model, kTolerance);
  // The edge itself, which has the height of the plate's centre.
  EXPECT_EQ(edges.left.Z(), model->BellyPlatePositions[0].Z());
  EXPECT_FALSE(IsShadowedAt(*model, edges.left));
}

TEST(BellyPlates, DoNotShadowAPointAtExactlyTheirRightHalfWidth) {
  const auto model = FindPlate(
      [](const Edges& edges) { return edges.rightAngle < edges.leftAngle; });
  ASSERT_TRUE(model.has_value());
  const Edges edges(*model, kTolerance);
  EXPECT_FALSE(IsShadowedAt(*model, edges.right));
}

TEST(BellyPlates, ShadowExactlyThePointsNearerThanBothEdges) {
  for (const double side : {1.0, -1.0}) {
    for (const TVector3& centre :
         {TVector3(5860, 0, 0), TVector3(-3000, 5000, 40)}) {
      const BellyPlateModel model = PlatesAt({centre});
      const Edges edges(model, kTolerance);
      const auto pointAt = [&](double phi) {
        TVector3 point = WithPhi(centre, centre.Phi() + side * phi);
        point.SetZ(123.0);
        return point;
      };
      const auto isNearer = [&](double phi) {
        TVector3 level = pointAt(phi);
        level.SetZ(centre.Z());
        return edges.leftAngle > level.Angle(centre) &&
               edges.rightAngle > level.Angle(centre);
      };
      const Neighbours phi = FindChange(0.0, 1.0, isNearer);
      EXPECT_TRUE(IsShadowedAt(model, pointAt(phi.before)));
      EXPECT_FALSE(IsShadowedAt(model, pointAt(phi.after)));
    }
  }
}

TEST(BellyPlates, AreAsWideInAzimuthAsTheyAreHigh) {
  // Half of the angular height, atan(600 / 5860), and the tolerance's angle.
  const double halfWidth = std::atan(600.0 / 5860.0) + 150.0 / 5860.0;
  const auto isShadowedAtPhi = [](double phi) {
    return IsShadowedAt(OnePlate(), WithPhi({5860, 0, 100}, phi));
  };
  EXPECT_TRUE(isShadowedAtPhi(halfWidth - 1e-9));
  EXPECT_FALSE(isShadowedAtPhi(halfWidth + 1e-9));
  EXPECT_TRUE(isShadowedAtPhi(-halfWidth + 1e-9));
  EXPECT_FALSE(isShadowedAtPhi(-halfWidth - 1e-9));
}

TEST(BellyPlates, WidenByTheToleranceAsAnAngleOnTheOuterVessel) {
  const TVector3 point = WithPhi({5860, 0, 0}, 0.15);
  EXPECT_FALSE(IsShadowedAt(OnePlate(), point, kTolerance));
  EXPECT_TRUE(IsShadowedAt(OnePlate(), point, 300.0));
  const WaterSegments path = SegmentsOf(OneCrossing(point));
  EXPECT_TRUE(
      CheckForBellyPlateShadowing(OnePlate(), kTolerance, 2930.0, path));
}

TEST(BellyPlates, AreAllTested) {
  const BellyPlateModel model =
      PlatesAt({{5860, 0, 0}, {0, -5860, 0}, {-5860, 0, 0}});
  for (const TVector3& centre : model.BellyPlatePositions) {
    EXPECT_TRUE(IsShadowedAt(model, centre));
  }
  EXPECT_FALSE(IsShadowedAt(model, {0, 5860, 0}));
}

TEST(BellyPlates, CompareAzimuthsAtTheHeightOfEachPlate) {
  // The point is moved to the height of each plate in turn.
  const BellyPlateModel model = PlatesAt({{-5860, 0, 700}, {5860, 0, -700}});
  EXPECT_TRUE(IsShadowedAt(model, {5860, 0, 700}));
}

TEST(BellyPlates, NeverShadowAPathInWater) {
  EXPECT_FALSE(
      IsShadowed(OnePlate(), SegmentsOf(Testing::AllAt(kWater, kOnThePlate))));
}

TEST(BellyPlates, TestTheReflectionPoint) {
  LightPath path = Testing::AllAt(kWaterReflection, kBesideThePlate);
  EXPECT_FALSE(IsShadowed(OnePlate(), SegmentsOf(path)));
  path.AVPoint1 = kOnThePlate;
  EXPECT_TRUE(IsShadowed(OnePlate(), SegmentsOf(path)));
  // It is both crossings: if the first one were missed, the second would block.
  WaterSegments secondOnly = SegmentsOf(path);
  EXPECT_EQ(secondOnly.second.point, kOnThePlate);
  secondOnly.first.point = kBesideThePlate;
  EXPECT_TRUE(IsShadowed(OnePlate(), secondOnly));
}

TEST(BellyPlates, TestEveryCrossingOfEachTypeOfPath) {
  const auto deciding = Testing::DecidingPoints(
      kOnThePlate, kBesideThePlate,
      [](const WaterSegments& path) { return IsShadowed(OnePlate(), path); });
  EXPECT_EQ(deciding, Testing::EveryCrossing());
}

TEST(BellyPlates, ShadowAPathOfUnknownTypeWhereAPlateIsAtTheEquator) {
  const WaterSegments path = Testing::UnknownSegments();
  EXPECT_TRUE(IsShadowed(OnePlate(), path));
  // Elsewhere the path's point is on the axis, far from the plate.
  EXPECT_FALSE(IsShadowed(PlatesAt({{5860, 0, 40}}), path));
  // Without a band around z = 0 nothing is tested.
  EXPECT_FALSE(IsShadowed(OnePlate(), path, -600.0));
}

TEST(BellyPlates, ShadowAPathOfUnknownTypeWherePlatesReachTheAxis) {
  // A plate near the top of the vessel that is more than 60 degrees of azimuth
  // wide, with its tolerance: its edge is farther from its centre than the axis
  // is.
  const BellyPlateModel model = PlatesAt({{100, 0, 5860}});
  EXPECT_TRUE(IsShadowed(model, Testing::UnknownSegments(), 6500.0));
  EXPECT_FALSE(IsShadowed(model, Testing::UnknownSegments(), 5900.0));
}

TEST(BellyPlates, NeverShadowAnUninitialisedPath) {
  EXPECT_FALSE(IsShadowed(OnePlate(), SegmentsOf(LightPath())));
  EXPECT_FALSE(IsShadowed(OnePlate(), Testing::MisspeltSegments()));
}

TEST(BellyPlates, ShadowNothingWhenThereAreNone) {
  for (int type = 0; type < kNumberOfLightPathTypes; ++type) {
    const auto pathType = static_cast<eLightPathType>(type);
    EXPECT_FALSE(IsShadowed(PlatesAt({}),
                            SegmentsOf(Testing::AllAt(pathType, kOnThePlate))));
  }
}

TEST(BellyPlates, AcceptAPlateAtTheCentreWithoutADirection) {
  const RootWarnings warnings;
  // The path is at angle 0 to such a plate, and no edge is nearer.
  EXPECT_FALSE(IsShadowedAt(PlatesAt({{0, 0, 0}}), kOnThePlate));
  EXPECT_EQ(RootWarnings::Messages(), std::vector<std::string>());
  EXPECT_TRUE(IsShadowedAt(PlatesAt({{0, 0, 0}, kOnThePlate}), kOnThePlate));
  // Without height, the edges cannot be scaled to the plate's distance.
  BellyPlateModel flat = PlatesAt({{0, 0, 0}});
  flat.BellyPlateHalfHeight = 0.0;
  EXPECT_FALSE(IsShadowedAt(flat, kOnThePlate));
  EXPECT_EQ(RootWarnings::Messages(),
            (std::vector<std::string>(2, Testing::kZeroVectorWarning)));
}

const std::vector<TVector3> kLocations = {{5860, 0, 0}, {-4000, 4200, 35}};

Tables PlateTables() {
  Tables tables;
  tables.Set("SOLID", "belly_plate_vintar", "octahedron_half_height", 600.0);
  tables.Set("GEO", "inner_av", "belly_plate_locations", "belly_plates");
  tables.SetPositions("GEO_LOCATIONS", "belly_plates", kLocations);
  return tables;
}

std::vector<TVector3> ExpectedGrid(const std::vector<TVector3>& centres,
                                   double n) {
  std::vector<TVector3> points;
  const TVector3 zHat(0, 0, 1);
  for (const TVector3& p : centres) {
    TVector3 top = p + 600.0 * zHat;
    top.SetMag(p.Mag());
    TVector3 bottom = p - 600.0 * zHat;
    bottom.SetMag(p.Mag());
    const double w = top.Angle(bottom);
    const double phiStart = p.Phi() - 0.5 * w;
    for (int a = 0; a < n; ++a) {
      TVector3 v = bottom;
      v.SetPhi(a / n * w + phiStart);
      for (int b = 0; b < n; ++b) {
        TVector3 q = v + (2 * (b / n) * 600.0) * zHat;
        q.SetMag(p.Mag());
        points.push_back(q);
      }
    }
  }
  return points;
}

TEST(LoadBellyPlateInfo, FollowsTheNameInTheVesselsEntry) {
  PlateTables().Load();
  BellyPlateModel model;
  LoadBellyPlateInfo(DB::Get(), model, 0.0);
  EXPECT_EQ(model.BellyPlateHalfHeight, 600.0);
  EXPECT_EQ(model.BellyPlatePositions, kLocations);

  PlateTables()
      .Set("GEO", "inner_av", "belly_plate_locations", "other_plates")
      .SetPositions("GEO_LOCATIONS", "other_plates", {{1, 2, 3}})
      .Load();
  LoadBellyPlateInfo(DB::Get(), model, 0.0);
  EXPECT_EQ(model.BellyPlatePositions, (std::vector<TVector3>{{1, 2, 3}}));
}

TEST(LoadBellyPlateInfo, BuildsAGridFromTheLowerLeftCornerOfEveryPlate) {
  PlateTables().Load();
  BellyPlateModel model;
  LoadBellyPlateInfo(DB::Get(), model, 7.0);
  EXPECT_EQ(model.BellyPlateGridPoints.size(), 2U * 49U);
  ExpectSamePoints(model.BellyPlateGridPoints, ExpectedGrid(kLocations, 7.0));
}

TEST(LoadBellyPlateInfo, BuildsThe22500PointsOfTheDefaultTolerance) {
  PlateTables().Load();
  BellyPlateModel model;
  LoadBellyPlateInfo(DB::Get(), model, 150.0);
  EXPECT_EQ(model.BellyPlateGridPoints.size(), 2U * 22500U);
  ExpectSamePoints(model.BellyPlateGridPoints, ExpectedGrid(kLocations, 150.0));
}

TEST(LoadBellyPlateInfo, DoesNotReachTheFarEdges) {
  PlateTables().Load();
  BellyPlateModel model;
  LoadBellyPlateInfo(DB::Get(), model, 50.0);
  const Edges edges(PlatesAt({kLocations[0]}), 0.0);
  double highest = -1e9;
  double farthest = -1e9;
  for (std::size_t i = 0; i < 2500; ++i) {
    highest = std::max(highest, model.BellyPlateGridPoints[i].Z());
    farthest = std::max(farthest, model.BellyPlateGridPoints[i].Phi());
  }
  EXPECT_GT(highest, 500.0);
  EXPECT_LT(highest, 590.0);
  EXPECT_GT(farthest, 0.95 * edges.right.Phi());
  EXPECT_LT(farthest, 0.99 * edges.right.Phi());
}

TEST(LoadBellyPlateInfo, RoundsAFractionalToleranceUp) {
  PlateTables().Load();
  BellyPlateModel model;
  LoadBellyPlateInfo(DB::Get(), model, 2.5);
  EXPECT_EQ(model.BellyPlateGridPoints.size(), 2U * 9U);
  ExpectSamePoints(model.BellyPlateGridPoints, ExpectedGrid(kLocations, 2.5));
}

TEST(LoadBellyPlateInfo, BuildsASinglePointForASmallFraction) {
  PlateTables().Load();
  BellyPlateModel model;
  LoadBellyPlateInfo(DB::Get(), model, 5e-324);
  EXPECT_EQ(model.BellyPlateGridPoints.size(), 2U);
}

TEST(LoadBellyPlateInfo, BuildsNoGridWithoutAPositiveTolerance) {
  PlateTables().Load();
  for (const double tolerance : {0.0, -1.0, -150.0, std::nan("")}) {
    BellyPlateModel model;
    LoadBellyPlateInfo(DB::Get(), model, tolerance);
    EXPECT_EQ(model.BellyPlateGridPoints, std::vector<TVector3>());
    EXPECT_EQ(model.BellyPlatePositions, kLocations);
  }
}

TEST(LoadBellyPlateInfo, AppendsToAnExistingGrid) {
  PlateTables().Load();
  BellyPlateModel model;
  LoadBellyPlateInfo(DB::Get(), model, 3.0);
  LoadBellyPlateInfo(DB::Get(), model, 2.0);
  std::vector<TVector3> expected = ExpectedGrid(kLocations, 3.0);
  for (const TVector3& point : ExpectedGrid(kLocations, 2.0)) {
    expected.push_back(point);
  }
  ExpectSamePoints(model.BellyPlateGridPoints, expected);
  EXPECT_EQ(model.BellyPlatePositions, kLocations);
}

TEST(LoadBellyPlateInfo, LetsRootWarnAboutAPlateAtTheCentreWithoutHeight) {
  PlateTables()
      .Set("SOLID", "belly_plate_vintar", "octahedron_half_height", 0.0)
      .SetPositions("GEO_LOCATIONS", "belly_plates", {{0, 0, 0}})
      .Load();
  const RootWarnings warnings;
  BellyPlateModel model;
  LoadBellyPlateInfo(DB::Get(), model, 1.0);
  EXPECT_EQ(model.BellyPlateGridPoints, (std::vector<TVector3>{{0, 0, 0}}));
  // The top, the bottom and the one point of the grid.
  EXPECT_EQ(RootWarnings::Messages(),
            (std::vector<std::string>(3, Testing::kZeroVectorWarning)));
}

TEST(LoadBellyPlateInfo, StopsAtAMissingFieldAndKeepsWhatItHasRead) {
  PlateTables().Remove("SOLID", "belly_plate_vintar").Load();
  BellyPlateModel withoutSize;
  EXPECT_THROW(LoadBellyPlateInfo(DB::Get(), withoutSize, 2.0),
               DBNotFoundError);
  EXPECT_EQ(withoutSize.BellyPlateHalfHeight, 0.0);

  PlateTables().RemoveField("GEO", "inner_av", "belly_plate_locations").Load();
  BellyPlateModel withoutName;
  EXPECT_THROW(LoadBellyPlateInfo(DB::Get(), withoutName, 2.0),
               DBNotFoundError);
  EXPECT_EQ(withoutName.BellyPlateHalfHeight, 600.0);

  PlateTables().RemoveField("GEO_LOCATIONS", "belly_plates", "z").Load();
  BellyPlateModel withoutLocations;
  EXPECT_THROW(LoadBellyPlateInfo(DB::Get(), withoutLocations, 2.0),
               DBNotFoundError);
  EXPECT_EQ(withoutLocations.BellyPlatePositions, std::vector<TVector3>());
  EXPECT_EQ(withoutLocations.BellyPlateGridPoints, std::vector<TVector3>());
}

TEST(LoadBellyPlateInfo, ReadsNoPlateFromListsOfDifferentLengths) {
  PlateTables()
      .Set("GEO_LOCATIONS", "belly_plates", "z", std::vector<double>{0.0})
      .Load();
  const Testing::Captured captured(warn);
  BellyPlateModel model;
  LoadBellyPlateInfo(DB::Get(), model, 2.0);
  EXPECT_EQ(model.BellyPlatePositions, std::vector<TVector3>());
  EXPECT_EQ(model.BellyPlateGridPoints, std::vector<TVector3>());
  EXPECT_NE(captured.Text(), "");
}

TEST(BellyPlateModel, KeepsItsHalfHeightWhenCleared) {
  PlateTables().Load();
  BellyPlateModel model;
  LoadBellyPlateInfo(DB::Get(), model, 3.0);
  const std::size_t capacity = model.BellyPlateGridPoints.capacity();
  model.Clear();
  EXPECT_EQ(model.BellyPlatePositions, std::vector<TVector3>());
  EXPECT_EQ(model.BellyPlateGridPoints, std::vector<TVector3>());
  EXPECT_EQ(model.BellyPlateGridPoints.capacity(), capacity);
  EXPECT_EQ(model.BellyPlateHalfHeight, 600.0);
}

}  // namespace
}  // namespace ZARN::DU
