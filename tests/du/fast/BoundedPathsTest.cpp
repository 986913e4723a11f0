#include <gtest/gtest.h>

#include <cmath>
#include <optional>

#include "TMath.h"
#include "du/fast/ShadowingFilter.hpp"
#include "du/geometry/CylinderCrossing.hpp"
#include "tests/du/Detector.hpp"
#include "tests/du/Formulas.hpp"
#include "tests/du/Paths.hpp"
#include "tests/du/PathsAtHardware.hpp"
#include "tests/property/Random.hpp"

// What a filter says of paths that are only known within BoundedBands.

namespace ZARN::DU {
namespace {

using eComponent = eShadowingComponent;
using Testing::Formulas;
using Testing::InRun;
using Testing::OneCrossing;
using Testing::Only;
using Testing::Random;

std::optional<eComponent> FindBounded(const ShadowingFilter& filter,
                                      const LightPath& path, double error) {
  return filter.FindBounded(ViewsOf(path, ShapeOfType(path.LightPathType)),
                            error);
}

/// How many paths are decided of those that leave the vessel at a height, in
/// all directions from the axis.
int CountDecided(const ShadowingFilter& filter, double radius, double height,
                 double error) {
  constexpr int kDirections = 1000;
  int decided = 0;
  for (int i = 0; i < kDirections; ++i) {
    TVector3 point(std::sqrt(radius * radius - height * height), 0.0, height);
    point.RotateZ(TMath::TwoPi() * i / kDirections);
    const LightPath path = OneCrossing(point, point.Unit());
    decided += FindBounded(filter, path, error).has_value() ? 1 : 0;
  }
  return decided;
}

void ExpectOpenWithin(double error, double height, eComponent component) {
  const ShadowingCalculator detector = InRun(Only({component}));
  const ShadowingFilter filter(detector.GetHardware(), {});
  for (const double side : {-1.0, 1.0}) {
    const auto decidedAt = [&](double errors) {
      return CountDecided(filter, detector.GetOuterAVRadius(),
                          height + side * errors * error, error);
    };
    EXPECT_EQ(decidedAt(0.9), 0);
    EXPECT_GT(decidedAt(1.1), 500);
  }
}

TEST(BoundedPaths, AreOpenWhereTheirHeightDecidesWhichRopesAreTested) {
  const ShadowingFilter filter(InRun(Testing::DetectorTables()).GetHardware(),
                               {});
  for (const double error : {1e-8, 1e-3}) {
    ExpectOpenWithin(error, filter.HoldDownEndHeight(), eComponent::kAVHDRope);
    ExpectOpenWithin(error, filter.SupportFootHeight(),
                     eComponent::kSupportRope);
  }
}

TEST(BoundedPaths, GetTheVerdictOfEveryPathWithinTheBands) {
  const ShadowingCalculator detector = InRun(Testing::VariedTables());
  const ShadowingFilter filter(detector.GetHardware(), {});
  const double radius = detector.GetOuterAVRadius();
  const double error = BoundedBands::kPathError * radius;
  Random random(98);
  int decided = 0;
  constexpr int kPaths = 8000;
  for (const LightPath& any :
       Testing::PathsAtHardware(detector, 44).Make(kPaths)) {
    const LightPath path = OneCrossing(any.AVPoint1, any.FinalDirection.Unit());
    LightPath near = path;
    near.AVPoint1 += random.Uniform(0, error) * random.Direction();
    near.FinalDirection +=
        random.Uniform(0, BoundedBands::kPathError) * random.Direction();
    const auto found = FindBounded(filter, near, error);
    if (!found.has_value()) continue;
    ++decided;
    EXPECT_EQ(*found, Formulas(detector, path).Find())
        << ::testing::PrintToString(path.AVPoint1);
  }
  EXPECT_GT(decided, kPaths / 2);
}

}  // namespace
}  // namespace ZARN::DU
