#include "lightpath/OpticalMedium.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "db/DBErrors.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::DU {
namespace {

using Testing::Tables;
using Numbers = std::vector<double>;

TEST(OpticalMedium, HasNoDispersionForOneNumber) {
  const OpticalMedium medium(1.5);
  for (const double wavelength : {1e-3, 400.0, 1e9}) {
    EXPECT_EQ(medium.RefractiveIndexAt(wavelength), 1.5);
    EXPECT_EQ(medium.GroupIndexAt(wavelength), 1.5);
    EXPECT_TRUE(medium.Reaches(wavelength));
  }
}

TEST(OpticalMedium, InterpolatesLinearlyAndReturnsTableValuesExactly) {
  const OpticalMedium medium({300, 400, 600}, {1.6, 1.5, 1.4});
  EXPECT_EQ(medium.RefractiveIndexAt(300), 1.6);
  EXPECT_EQ(medium.RefractiveIndexAt(400), 1.5);
  EXPECT_EQ(medium.RefractiveIndexAt(600), 1.4);
  EXPECT_DOUBLE_EQ(medium.RefractiveIndexAt(325), 1.575);
  EXPECT_DOUBLE_EQ(medium.RefractiveIndexAt(550), 1.425);
}

TEST(OpticalMedium, UsesTheEndValuesOutsideTheTable) {
  const OpticalMedium medium({300, 400, 600}, {1.6, 1.5, 1.4});
  for (const double wavelength : {1.0, 299.9}) {
    EXPECT_EQ(medium.RefractiveIndexAt(wavelength), 1.6);
    EXPECT_EQ(medium.GroupIndexAt(wavelength), medium.GroupIndexAt(300));
    EXPECT_FALSE(medium.Reaches(wavelength));
  }
  for (const double wavelength : {600.1, 1e9}) {
    EXPECT_EQ(medium.RefractiveIndexAt(wavelength), 1.4);
    EXPECT_EQ(medium.GroupIndexAt(wavelength), medium.GroupIndexAt(600));
    EXPECT_FALSE(medium.Reaches(wavelength));
  }
  EXPECT_TRUE(medium.Reaches(300));
  EXPECT_TRUE(medium.Reaches(600));
}

TEST(OpticalMedium, HasTheExactGroupIndexOfAParabola) {
  const auto n = [](double x) { return 2.0 - 2e-3 * x + 1e-6 * x * x; };
  const auto group = [&](double x) { return n(x) - x * (-2e-3 + 2e-6 * x); };
  const Numbers wavelengths = {300, 320, 400, 410, 600};
  Numbers indices;
  for (const double x : wavelengths) indices.push_back(n(x));
  const OpticalMedium medium(wavelengths, indices);
  for (const double x : wavelengths) {
    EXPECT_NEAR(medium.GroupIndexAt(x), group(x), 1e-13) << x;
  }
  EXPECT_NEAR(medium.GroupIndexAt(360), 0.5 * (group(320) + group(400)), 1e-13);
}

TEST(OpticalMedium, AcceptsTablesOfOneAndTwoWavelengths) {
  const OpticalMedium one({400}, {1.5});
  EXPECT_EQ(one.RefractiveIndexAt(400), 1.5);
  EXPECT_EQ(one.GroupIndexAt(300), 1.5);
  const OpticalMedium two({400, 500}, {1.5, 1.4});
  EXPECT_DOUBLE_EQ(two.GroupIndexAt(400), 1.5 + 400 * 1e-3);
  EXPECT_DOUBLE_EQ(two.GroupIndexAt(500), 1.4 + 500 * 1e-3);
}

TEST(OpticalMedium, ReadsOneNumberOrArrays) {
  const TableSet tables =
      Tables()
          .Set("OPTICS", "water", "refractive_index", 1.33)
          .Set("OPTICS", "acrylic", "wavelength", Numbers{400, 500})
          .Set("OPTICS", "acrylic", "refractive_index", Numbers{1.5, 1.4})
          .AsSet();
  const OpticalMedium water = OpticalMedium::Read(tables, "water");
  EXPECT_EQ(water.RefractiveIndexAt(450), 1.33);
  const OpticalMedium acrylic = OpticalMedium::Read(tables, "acrylic");
  EXPECT_DOUBLE_EQ(acrylic.RefractiveIndexAt(450), 1.45);
}

template <class Error>
std::string ErrorOf(const Tables& tables) {
  try {
    OpticalMedium::Read(tables.AsSet(), "water");
  } catch (const Error& error) {
    return error.what();
  }
  return "";
}

Tables WaterOf(const Numbers& wavelengths, const Numbers& indices) {
  return Tables()
      .Set("OPTICS", "water", "wavelength", wavelengths)
      .Set("OPTICS", "water", "refractive_index", indices);
}

TEST(OpticalMedium, RefusesImpossibleValues) {
  const auto error = [](const Numbers& wavelengths, const Numbers& indices) {
    return ErrorOf<DBValueError>(WaterOf(wavelengths, indices));
  };
  const std::string place = "table OPTICS, index water: the field ";
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  const std::string noIndex =
      "refractive_index is not a finite number >= 1 at position 2";
  for (const double bad : {0.999, -1.5, nan, infinity}) {
    EXPECT_EQ(error({400, 500}, {1.5, bad}), place + noIndex);
    EXPECT_EQ(ErrorOf<DBValueError>(
                  Tables().Set("OPTICS", "water", "refractive_index", bad)),
              place + "refractive_index is not a finite number >= 1");
  }
  const std::string noWavelength =
      "wavelength is not positive and increasing at position ";
  for (const double bad : {400.0, 399.0, nan, infinity}) {
    EXPECT_EQ(error({400, bad}, {1.5, 1.4}), place + noWavelength + "2");
  }
  for (const double bad : {0.0, -400.0}) {
    EXPECT_EQ(error({bad, 400}, {1.5, 1.4}), place + noWavelength + "1");
  }
  EXPECT_EQ(error({400, 500}, {1.5}),
            place + "refractive_index has 1 values for 2 wavelengths");
  EXPECT_EQ(error({}, {}), place + "wavelength is empty");
  EXPECT_EQ(error({400, 500}, {1.0, 1.4}), "") << "1 is an index";
}

TEST(OpticalMedium, RefusesMissingFields) {
  EXPECT_EQ(ErrorOf<DBNotFoundError>(Tables()),
            "table OPTICS, index water: there is no entry for run 0, so no "
            "field refractive_index");
  EXPECT_EQ(ErrorOf<DBNotFoundError>(
                Tables().Set("OPTICS", "water", "wavelength", Numbers{400})),
            "table OPTICS, index water: there is no field refractive_index");
  EXPECT_EQ(ErrorOf<DBNotFoundError>(Tables().Set(
                "OPTICS", "water", "refractive_index", Numbers{1.33})),
            "table OPTICS, index water: there is no field wavelength");
  EXPECT_EQ(ErrorOf<DBNotFoundError>(
                Tables().Set("OPTICS", "water", "refractive_index", "wet")),
            "table OPTICS, index water: the field refractive_index is not an "
            "array of numbers");
}

}  // namespace
}  // namespace ZARN::DU
