#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/LightPathType.hpp"
#include "tests/lightpath/InRealVessel.hpp"
#include "tests/lightpath/LightPathFlaws.hpp"
#include "tests/lightpath/Vessels.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::Testing {
namespace {

class Reflection : public testing::Test {
 protected:
  void Calculate(const TVector3& eventPos, const TVector3& pmtPos) {
    calculator_.CalcReflectionByPosition(eventPos, pmtPos);
  }

  void ExpectNone(const TVector3& eventPos, const TVector3& pmtPos) {
    SCOPED_TRACE("event " + Exact(eventPos) + ", PMT " + Exact(pmtPos));
    Calculate({0, 6000, 6000}, {0, 0, 8400});  // results that must be cleared
    ASSERT_TRUE(calculator_.HasPath());
    Calculate(eventPos, pmtPos);
    EXPECT_FALSE(calculator_.HasPath());
    EXPECT_EQ(calculator_.GetLightPathType(), DU::kUninitialised);
    EXPECT_EQ(calculator_.GetAVPoint1(), TVector3());
    EXPECT_EQ(calculator_.GetInitialDirection(), TVector3());
    EXPECT_EQ(calculator_.GetFinalDirection(), TVector3());
    EXPECT_EQ(calculator_.GetOpticalLength(), 0.0);
    EXPECT_EQ(calculator_.GetTimeOfFlight(), 0.0);
  }

  std::string Flaw(const TVector3& eventPos, const TVector3& pmtPos) const;

  const DU::ConcentricMedia media_{5800, kOuter, {1.5, 1.49, 1.33}};
  DU::LightPathCalculator calculator_ = CalculatorFor(media_);
};

/// The first flaw found in a reflected path, or "".
std::string Reflection::Flaw(const TVector3& eventPos,
                             const TVector3& pmtPos) const {
  const DU::LightPathCalculator& path = calculator_;
  if (path.GetLightPathType() != DU::kWaterReflection) return "wrong type";
  if (path.GetStartPos() != eventPos) return "start is not the event";
  if (path.GetEndPos() != pmtPos) return "end is not the PMT";
  for (const TVector3& unused :
       {path.GetAVPoint2(), path.GetAVPoint3(), path.GetAVPoint4()}) {
    if (unused != TVector3()) return "unused point is not zero";
  }
  const TVector3 point = path.GetAVPoint1();
  const TVector3 in = path.GetInitialDirection();
  const TVector3 out = path.GetFinalDirection();
  if (!(std::abs(point.Mag() - kOuter) <= 1e-11)) return "off the sphere";
  if (!(std::abs(in.Mag2() - 1.0) <= 2e-14)) return "initial is not unit";
  if (!(std::abs(out.Mag2() - 1.0) <= 2e-14)) return "final is not unit";

  const double first = (point - eventPos).Mag();
  const double second = (pmtPos - point).Mag();
  if (!((eventPos + first * in - point).Mag() <= 1e-6)) {
    return "start misses the point";
  }
  if (!((point + second * out - pmtPos).Mag() <= 1e-6)) {
    return "point misses the end";
  }

  const TVector3 normal = point * (1.0 / kOuter);
  const double sines =
      std::abs(normal.Cross(in).Mag() - normal.Cross(out).Mag());
  if (!(sines <= 1e-12)) return "sines differ by " + Exact(sines);
  const double bend = (normal.Cross(in) - normal.Cross(out)).Mag();
  if (!(bend <= 1e-12)) return "leaves its plane by " + Exact(bend);
  // Arrives from outside and leaves to outside.
  if (!(in.Dot(normal) <= 1e-14)) return "arrives from within";
  if (!(out.Dot(normal) >= -1e-14)) return "leaves inwards";

  const double length = first + second;
  const auto off = [&](double value, double expected) {
    return !(std::abs(value - expected) <= 1e-14 * expected);
  };
  if (off(path.GetLength(DU::eMedium::kWater), length)) return "length";
  if (path.GetLength(DU::eMedium::kAcrylic) != 0.0) return "length in the wall";
  if (path.GetLength(DU::eMedium::kInnerAV) != 0.0) return "length inside";
  if (off(path.GetOpticalLength(), 1.33 * length)) return "optical length";
  if (off(path.GetTimeOfFlight(), 1.33 * length / 299.792458)) return "time";
  return "";
}

/// Whether the straight line stays outside the vessel or only touches it.
bool IsClear(const TVector3& a, const TVector3& b) {
  return DistanceFromSegment(TVector3(), a, b) >= kOuter;
}

TVector3 InTheWater(Random& random) {
  return kOuter * random.Uniform(1.0001, 2.5) * random.Direction();
}

TEST_F(Reflection, ExistsIfTheStraightLineIsClear) {
  Random random(21);
  int reflected = 0;
  const int pairs = std::max(1000, PairsInAll() / 5);
  for (int i = 0; i < pairs; ++i) {
    const TVector3 eventPos = InTheWater(random);
    const TVector3 pmtPos = InTheWater(random);
    Calculate(eventPos, pmtPos);
    SCOPED_TRACE("event " + Exact(eventPos) + ", PMT " + Exact(pmtPos));
    ASSERT_EQ(calculator_.HasPath(), IsClear(eventPos, pmtPos));
    if (!calculator_.HasPath()) continue;
    ++reflected;
    ASSERT_EQ(Flaw(eventPos, pmtPos), "");
  }
  EXPECT_GT(reflected, pairs / 10);
  EXPECT_LT(reflected, pairs);
}

TEST_F(Reflection, IsTheShortestWayOverTheOuterSurface) {
  Random random(23);
  int compared = 0;
  const int pairs = std::max(200, PairsInAll() / 1000);
  for (int i = 0; i < pairs; ++i) {
    const TVector3 eventPos = InTheWater(random);
    const TVector3 pmtPos = InTheWater(random);
    Calculate(eventPos, pmtPos);
    if (!calculator_.HasPath()) continue;
    SCOPED_TRACE("event " + Exact(eventPos) + ", PMT " + Exact(pmtPos));
    const double shortest = calculator_.GetLength(DU::eMedium::kWater);
    for (int k = 0; k < 300; ++k) {
      // Anywhere, or on the arc between the two ends.
      const TVector3 point =
          k % 3 == 0 ? kOuter * random.Direction()
                     : kOuter * (random.Uniform(0, 1) * eventPos.Unit() +
                                 random.Uniform(0, 1) * pmtPos.Unit())
                                    .Unit();
      const bool isSeen = (eventPos - point).Dot(point) > 0.0 &&
                          (pmtPos - point).Dot(point) > 0.0;
      if (!isSeen) continue;
      ++compared;
      const double other = (eventPos - point).Mag() + (pmtPos - point).Mag();
      ASSERT_GE(other, shortest * (1.0 - 1e-15)) << Exact(point);
    }
  }
  EXPECT_GT(compared, 1000);
}

TEST_F(Reflection, AgreesWithBisection) {
  // From the foot of the event to the foot of the PMT, the angle of incidence
  // grows and the angle of the leaving light falls.
  Random random(25);
  const int pairs = std::max(500, PairsInAll() / 50);
  for (int i = 0; i < pairs; ++i) {
    const TVector3 eventPos = InTheWater(random);
    const TVector3 pmtPos = InTheWater(random);
    Calculate(eventPos, pmtPos);
    if (!calculator_.HasPath()) continue;
    const TVector3 x = eventPos.Unit();
    const TVector3 y = (pmtPos - pmtPos.Dot(x) * x).Unit();
    const auto at = [&](double angle) {
      return std::cos(angle) * x + std::sin(angle) * y;
    };
    double low = 0.0;
    double high = AngleBetween(eventPos, pmtPos);
    for (int step = 0; step < 60; ++step) {
      const double middle = low + (high - low) / 2.0;
      const TVector3 normal = at(middle);
      const double arrives = AngleBetween(eventPos - kOuter * normal, normal);
      const double leaves = AngleBetween(pmtPos - kOuter * normal, normal);
      (arrives < leaves ? low : high) = middle;
    }
    ASSERT_LE((calculator_.GetAVPoint1() - kOuter * at(low)).Mag(), 2e-10)
        << "event " << Exact(eventPos) << ", PMT " << Exact(pmtPos);
  }
}

TEST_F(Reflection, IsTheSameBackwards) {
  Random random(27);
  DU::LightPathCalculator back = calculator_;
  for (int i = 0; i < 5000; ++i) {
    const TVector3 eventPos = InTheWater(random);
    const TVector3 pmtPos = InTheWater(random);
    Calculate(eventPos, pmtPos);
    const std::array ends = {pmtPos, eventPos};  // swapped
    back.CalcReflectionByPosition(ends[0], ends[1]);
    SCOPED_TRACE("event " + Exact(eventPos) + ", PMT " + Exact(pmtPos));
    ASSERT_EQ(calculator_.HasPath(), back.HasPath());
    const TVector3 gap = calculator_.GetAVPoint1() - back.GetAVPoint1();
    ASSERT_LE(gap.Mag(), 2e-10);
  }
}

TEST_F(Reflection, GoesStraightBackOnOneRadius) {
  const auto expectExactly = [&](double z, double pmtZ) {
    SCOPED_TRACE("z " + Exact(z) + ", PMT at " + Exact(pmtZ));
    Calculate({0, 0, z}, {0, 0, pmtZ});
    EXPECT_EQ(calculator_.GetLightPathType(), DU::kWaterReflection);
    EXPECT_EQ(calculator_.GetAVPoint1(), TVector3(0, 0, kOuter));
    EXPECT_EQ(calculator_.GetInitialDirection(), TVector3(0, 0, -1));
    EXPECT_EQ(calculator_.GetFinalDirection(), TVector3(0, 0, 1));
    EXPECT_EQ(calculator_.GetLength(DU::eMedium::kWater),
              z + pmtZ - 2.0 * kOuter);
  };
  expectExactly(7000, 8400);
  expectExactly(9000, 8400);
  Random random(29);
  for (int i = 0; i < 1000; ++i) {
    const TVector3 pmtPos = InTheWater(random);
    const TVector3 eventPos = 2.0 * pmtPos;  // exactly on one line
    Calculate(eventPos, pmtPos);
    SCOPED_TRACE("event " + Exact(eventPos) + ", PMT " + Exact(pmtPos));
    ASSERT_EQ(Flaw(eventPos, pmtPos), "");
    ASSERT_LE((calculator_.GetAVPoint1() - kOuter * pmtPos.Unit()).Mag(),
              1e-11);
  }
}

TEST_F(Reflection, HasNoFlawIfTheStraightLineNearlyTouches) {
  // The straight line passes the sphere at various heights.
  for (int power = -12; power <= 3; ++power) {
    for (const double reach : {1.0, 100.0, 3000.0, 20000.0}) {
      const double height = kOuter + std::pow(10.0, power);
      const TVector3 eventPos(-reach, height, 0);
      const TVector3 pmtPos(7000, height, 0);
      SCOPED_TRACE("event " + Exact(eventPos));
      Calculate(eventPos, pmtPos);
      EXPECT_EQ(Flaw(eventPos, pmtPos), "");
    }
  }
  // Touching counts; lines deeper than rounding do not.
  Calculate({-3000, kOuter, 0}, {7000, kOuter, 0});
  EXPECT_EQ(Flaw({-3000, kOuter, 0}, {7000, kOuter, 0}), "");
  EXPECT_LE((calculator_.GetAVPoint1() - TVector3(0, kOuter, 0)).Mag(), 1e-9);
  const double deeper = kOuter * (1.0 - 2e-14);
  ExpectNone({-3000, deeper, 0}, {7000, deeper, 0});
}

TEST_F(Reflection, HasNoFlawForEndsCloseToTheSurface) {
  Random random(31);
  for (int i = 0; i < 20000; ++i) {
    const auto close = [&] {
      return kOuter * (1.0 + std::pow(10.0, random.Uniform(-15, -3)));
    };
    const TVector3 x = random.Direction();
    const TVector3 y = x.Orthogonal().Unit();
    const double angle = std::pow(10.0, random.Uniform(-9, 0));
    TVector3 eventPos = close() * x;
    TVector3 pmtPos = close() * (std::cos(angle) * x + std::sin(angle) * y);
    while (eventPos.Mag() <= kOuter) eventPos *= 1.0 + 4e-16;
    while (pmtPos.Mag() <= kOuter) pmtPos *= 1.0 + 4e-16;
    Calculate(eventPos, pmtPos);
    if (!calculator_.HasPath()) continue;
    ASSERT_EQ(Flaw(eventPos, pmtPos), "")
        << "event " << Exact(eventPos) << ", PMT " << Exact(pmtPos);
  }
}

TEST_F(Reflection, IsValidOrAbsentForAnEndOnTheSurface) {
  // The limit of close ends: a segment of length zero may have no direction,
  // but never NaN.
  for (const TVector3& other :
       {TVector3(0, 0, 8400), TVector3(3000, 0, 8400),
        TVector3(7000, 0, kOuter), TVector3(0, -2000, 6000)}) {
    const TVector3 onSurface(0, 0, kOuter);
    for (const bool isEvent : {true, false}) {
      Calculate(isEvent ? onSurface : other, isEvent ? other : onSurface);
      if (!calculator_.HasPath()) continue;
      EXPECT_LE((calculator_.GetAVPoint1() - onSurface).Mag(), 1e-6);
      EXPECT_NEAR(calculator_.GetInitialDirection().Mag(), 1.0, 1e-14);
      EXPECT_NEAR(calculator_.GetFinalDirection().Mag(), 1.0, 1e-14);
    }
  }
}

TEST_F(Reflection, DoesNotExistBehindTheVessel) {
  ExpectNone({0, 0, -7000}, {0, 0, 8400});
  ExpectNone({10, 0, -7000}, {0, 0, 8400});
  ExpectNone({0, 6000, -3000}, {0, 0, 8400});
}

TEST_F(Reflection, DoesNotExistFromInsideTheVessel) {
  const TVector3 pmtPos(0, 0, 8400);
  for (const double z :
       {0.0, 3000.0, 5800.0, 5830.0, std::nextafter(kOuter, 0.0)}) {
    ExpectNone({0, 0, z}, pmtPos);
    ExpectNone({0, z, 0}, pmtPos);
  }
}

TEST_F(Reflection, DoesNotExistToAPmtOutsideTheWater) {
  for (const double z :
       {0.0, 3000.0, 5800.0, 5830.0, std::nextafter(kOuter, 0.0)}) {
    ExpectNone({0, 0, 8400}, {0, 0, z});
    ExpectNone({0, 0, 8400}, {0, z, 0});
  }
}

TEST_F(Reflection, DoesNotExistFromAnEventAtThePmt) {
  ExpectNone({0, 0, 8400}, {0, 0, 8400});
  ExpectNone({3000, 5000, -6000}, {3000, 5000, -6000});
}

TEST_F(Reflection, DoesNotExistForPositionsThatAreNotFinite) {
  const TVector3 good(3000, 5000, -6000);
  for (const double bad : {kNaN, kInfinity, -kInfinity}) {
    for (int axis = 0; axis < 3; ++axis) {
      TVector3 position = good;
      position[axis] = bad;
      ExpectNone(position, good);
      ExpectNone(good, position);
      ExpectNone(position, position);
    }
  }
}

TEST_F(Reflection, HasUnitDirectionsOrDoesNotExistForHugePositions) {
  for (const double size : {1e9, 1e16, 1e30, 1e154, 1e155, 1e200, 1e308}) {
    for (const TVector3& eventPos :
         {TVector3(0, size, 0), TVector3(size, size, size),
          TVector3(0, 0, size)}) {
      for (const TVector3& pmtPos :
           {TVector3(0, 0, 8400), TVector3(0, 0.9 * size, 0.9 * size)}) {
        Calculate(eventPos, pmtPos);
        if (!calculator_.HasPath()) continue;
        SCOPED_TRACE("event " + Exact(eventPos) + ", PMT " + Exact(pmtPos));
        EXPECT_NEAR(calculator_.GetInitialDirection().Mag(), 1.0, 1e-14);
        EXPECT_NEAR(calculator_.GetFinalDirection().Mag(), 1.0, 1e-14);
        EXPECT_NEAR(calculator_.GetAVPoint1().Mag(), kOuter, 1e-11);
      }
    }
  }
}

TEST_F(Reflection, ResetsARefractedPath) {
  calculator_.CalcByPosition({0, 0, -7000}, {0, 0, 8400});
  ASSERT_NE(calculator_.GetAVPoint4(), TVector3());
  Calculate({0, 6000, 6000}, {0, 0, 8400});
  EXPECT_EQ(Flaw({0, 6000, 6000}, {0, 0, 8400}), "");
  calculator_.CalcByPosition({0, 6000, 6000}, {0, 0, 8400});
  EXPECT_EQ(calculator_.GetLightPathType(), DU::kWater);
  EXPECT_EQ(calculator_.GetAVPoint1(), TVector3());
}

}  // namespace
}  // namespace ZARN::Testing
