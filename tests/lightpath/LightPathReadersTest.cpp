#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

#include "TVector3.h"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/LightPathType.hpp"
#include "tests/lightpath/InRealVessel.hpp"
#include "tests/lightpath/LightPathFlaws.hpp"
#include "tests/lightpath/Vessels.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::Testing {
namespace {

using DU::LightPathCalculator;

class LightPathReaders : public InRealVessel {};

TEST_F(LightPathReaders, UseValuesThatWereSet) {
  calculator_.SetLightPathType(DU::kAVToWater);
  calculator_.SetStartPos({0, 0, 5830});
  calculator_.SetAVPoint1({0, 0, 5860});
  calculator_.SetAVPoint2({1, 2, 3});  // not of this type
  calculator_.SetEndPos({0, 0, 8360});
  calculator_.SetFinalDirection({0, 0, 1});
  EXPECT_EQ(calculator_.GetLength(DU::eMedium::kInnerAV), 0.0);
  EXPECT_EQ(calculator_.GetLength(DU::eMedium::kAcrylic), 30.0);
  EXPECT_EQ(calculator_.GetLength(DU::eMedium::kWater), 2500.0);
  EXPECT_DOUBLE_EQ(calculator_.GetOpticalLength(), 1.49 * 30 + 1.33 * 2500);
  EXPECT_DOUBLE_EQ(calculator_.GetTimeOfFlight(),
                   (1.49 * 30 + 1.33 * 2500) / 299.792458);
  EXPECT_EQ(calculator_.GetIncidenceAngle(), 0.0);
  calculator_.SetFinalDirection({0, 3, 3});
  EXPECT_DOUBLE_EQ(calculator_.GetIncidenceAngle(), kPi / 4.0);

  const auto ownType =
      static_cast<DU::eLightPathType>(DU::kNumberOfLightPathTypes + 1);
  calculator_.SetLightPathType(ownType);
  EXPECT_EQ(calculator_.GetLength(DU::eMedium::kWater), 0.0);
  EXPECT_EQ(calculator_.GetOpticalLength(), 0.0);
  EXPECT_EQ(calculator_.GetTimeOfFlight(), 0.0);
  EXPECT_EQ(calculator_.GetIncidenceAngle(), 0.0);
}

TEST(LightPathOfDispersiveMedia, UsesPhaseIndexForLengthAndGroupIndexForTime) {
  // Straight outwards from the centre: 5800 mm of liquid, 60 of acrylic, 2540
  // of water. The indices fall linearly by 3e-4, 2e-4 and 1e-4 per nm, so the
  // group index n - wavelength dn/dwavelength is their value at 0 nm.
  Tables tables = TablesOf({kInner, kOuter, {1.5, 1.49, 1.33}});
  const std::vector<double> wavelengths = {300.0, 400.0, 500.0};
  const auto set = [&](const char* index, std::vector<double> n) {
    tables.Remove("OPTICS", index);
    tables.Set("OPTICS", index, "wavelength", wavelengths);
    tables.Set("OPTICS", index, "refractive_index", std::move(n));
  };
  set("inner_av", {1.56, 1.53, 1.50});
  set("acrylic", {1.54, 1.52, 1.50});
  set("water", {1.36, 1.35, 1.34});
  tables.Load();
  LightPathCalculator calculator;
  calculator.SetWavelength(450.0);
  calculator.BeginOfRun();
  calculator.CalcByPosition({0, 0, 0}, {0, 0, 8400});
  EXPECT_NEAR(calculator.GetOpticalLength(),
              1.515 * 5800 + 1.51 * 60 + 1.345 * 2540, 1e-8);
  EXPECT_NEAR(calculator.GetTimeOfFlight(),
              (1.65 * 5800 + 1.60 * 60 + 1.39 * 2540) / 299.792458, 1e-10);
}

TEST_F(LightPathReaders, ReturnTheAngleOfHeadOnLight) {
  Calculate({0, 0, 100}, {0, 0, 8400});
  EXPECT_EQ(calculator_.GetIncidenceAngle(), 0.0);
  Calculate({0, 0, 9000}, {0, 0, 8400});
  EXPECT_EQ(calculator_.GetIncidenceAngle(), kPi);
  // At a right angle to the radius of the PMT.
  Calculate({100, 0, 8400}, {0, 0, 8400});
  EXPECT_EQ(calculator_.GetIncidenceAngle(), kPi / 2.0);
}

TEST_F(LightPathReaders, ReturnAllDigitsOfASmallAngle) {
  // An arc cosine would lose half of the digits here.
  Random random(13);
  for (int i = 0; i < 2000; ++i) {
    const double angle = std::pow(10.0, random.Uniform(-12.0, 0.0));
    const TVector3 eventPos(random.Uniform(1000.0, 9000.0), 0, 0);
    const TVector3 pmtPos(8400 * std::cos(angle), 8400 * std::sin(angle), 0);
    Calculate(eventPos, pmtPos);
    if (!calculator_.HasPath()) continue;
    const double expected =
        AngleBetween(calculator_.GetFinalDirection(), pmtPos);
    ASSERT_NEAR(calculator_.GetIncidenceAngle(), expected, 2e-15)
        << "event " << Exact(eventPos) << ", PMT " << Exact(pmtPos);
    const TVector3 inWater(random.Uniform(5861.0, 9000.0), 0, 0);
    calculator_.CalcReflectionByPosition(inWater, pmtPos);
    if (!calculator_.HasPath()) continue;
    ASSERT_NEAR(calculator_.GetIncidenceAngle(),
                AngleBetween(calculator_.GetFinalDirection(), pmtPos), 2e-15)
        << "event " << Exact(inWater) << ", PMT " << Exact(pmtPos);
  }
}

}  // namespace
}  // namespace ZARN::Testing
