#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/LightPathType.hpp"
#include "tests/lightpath/Vessels.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::Testing {

inline constexpr double kInner = 5800.0;
inline constexpr double kOuter = 5860.0;

/// The neighbouring doubles of a positive number.
inline double Below(double value) { return std::nextafter(value, 0.0); }
inline double Above(double value) { return std::nextafter(value, kInfinity); }

inline std::vector<TVector3> PointsOf(const DU::LightPathCalculator& path) {
  return {path.GetAVPoint1(), path.GetAVPoint2(), path.GetAVPoint3(),
          path.GetAVPoint4()};
}

/// Expects no path, and no data of the previous path.
inline void ExpectNoPath(const DU::LightPathCalculator& path) {
  EXPECT_FALSE(path.HasPath());
  EXPECT_EQ(path.GetLightPathType(), DU::kUninitialised);
  for (const TVector3& point : PointsOf(path)) {
    EXPECT_EQ(point, TVector3()) << Exact(point);
  }
  EXPECT_EQ(path.GetInitialDirection(), TVector3());
  EXPECT_EQ(path.GetFinalDirection(), TVector3());
  for (const DU::eMedium medium :
       {DU::eMedium::kInnerAV, DU::eMedium::kAcrylic, DU::eMedium::kWater}) {
    EXPECT_EQ(path.GetLength(medium), 0.0);
  }
  EXPECT_EQ(path.GetOpticalLength(), 0.0);
  EXPECT_EQ(path.GetTimeOfFlight(), 0.0);
  EXPECT_EQ(path.GetIncidenceAngle(), 0.0);
}

/// Tests in the liquid, acrylic and water of a real vessel.
class InRealVessel : public testing::Test {
 protected:
  void Calculate(const TVector3& eventPos, const TVector3& pmtPos) {
    calculator_.CalcByPosition(eventPos, pmtPos);
  }

  /// Expects the straight path, exact to the last bit.
  void ExpectExactly(const TVector3& eventPos, const TVector3& pmtPos,
                     DU::eLightPathType type, const TVector3& direction,
                     std::vector<TVector3> points) {
    SCOPED_TRACE("event " + Exact(eventPos) + ", PMT " + Exact(pmtPos));
    Calculate(eventPos, pmtPos);
    EXPECT_EQ(calculator_.GetLightPathType(), type);
    EXPECT_EQ(calculator_.GetStartPos(), eventPos);
    EXPECT_EQ(calculator_.GetEndPos(), pmtPos);
    EXPECT_EQ(calculator_.GetInitialDirection(), direction)
        << Exact(calculator_.GetInitialDirection());
    EXPECT_EQ(calculator_.GetFinalDirection(), direction)
        << Exact(calculator_.GetFinalDirection());
    points.resize(4);
    const std::vector<TVector3> found = PointsOf(calculator_);
    for (std::size_t i = 0; i < points.size(); ++i) {
      EXPECT_EQ(found[i], points[i]) << "point " << i + 1 << Exact(found[i]);
    }
  }

  const DU::ConcentricMedia media_{kInner, kOuter, {1.5, 1.49, 1.33}};
  DU::LightPathCalculator calculator_ = CalculatorFor(media_);
};

}  // namespace ZARN::Testing
