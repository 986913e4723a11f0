#include "db/CanonicalJson.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "db/JsonTables.hpp"

namespace ZARN {
namespace {

using Fields = std::map<std::string, TableField>;

std::uint64_t BitsOf(double number) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &number, sizeof(bits));
  return bits;
}

/// Finite doubles with random bits: all exponents, subnormal numbers too.
std::vector<double> RandomNumbers(std::size_t count) {
  std::mt19937_64 random(20260131);  // NOLINT(cert-msc51-cpp): repeatable
  std::vector<double> numbers;
  while (numbers.size() < count) {
    const std::uint64_t bits = random();
    double number = 0;
    std::memcpy(&number, &bits, sizeof(number));
    if (std::isfinite(number)) numbers.push_back(number);
  }
  return numbers;
}

TEST(CanonicalJson, WritesFieldsOnOneLineSortedByName) {
  EXPECT_EQ(JsonOfFields({{"x", std::vector<double>{0.1, -2000, 1e300}},
                          {"name", "\"a\" \n"},
                          {"none", std::vector<double>{}},
                          {"Z", 12.5}}),
            R"({"Z":12.5,"name":"\"a\" \n","none":[],"x":[0.1,-2000,1e+300]})");
  EXPECT_EQ(JsonOfFields({}), "{}");
}

TEST(CanonicalJson, ReadsBackEveryDoubleToTheLastBit) {
  using Limits = std::numeric_limits<double>;
  std::vector<double> numbers = {0.0,
                                 -0.0,
                                 0.1,
                                 1e22,
                                 123456789012345680.0,
                                 Limits::min(),
                                 Limits::max(),
                                 1e23,
                                 -0x1p63,
                                 0x1p64,
                                 Limits::denorm_min(),
                                 Limits::lowest()};
  for (const double number : RandomNumbers(20000)) numbers.push_back(number);
  const Fields read =
      ParseJsonFields(JsonOfFields({{"x", numbers}, {"zero", -0.0}}), "test");
  const auto& found = std::get<std::vector<double>>(read.at("x"));
  ASSERT_EQ(found.size(), numbers.size());
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    ASSERT_EQ(BitsOf(found[i]), BitsOf(numbers[i])) << numbers[i];
  }
  EXPECT_EQ(BitsOf(std::get<double>(read.at("zero"))), BitsOf(-0.0));
}

TEST(CanonicalJson, ReadsBackEveryString) {
  std::string controls;
  for (char c = 0; c < 0x20; ++c) controls += c;
  for (const std::string& text :
       {std::string(), controls + "\x7F", std::string(R"('";--\/)"),
        std::string("\u00e9\u20ac\U0001F600")}) {
    const Fields fields = {{text, text}};
    EXPECT_EQ(ParseJsonFields(JsonOfFields(fields), "test"), fields);
  }
}

TEST(CanonicalJson, WritesMinusZeroInTwoWays) {
  std::string text;
  AppendJson(text, -0.0, eMinusZero::kFingerprint);
  AppendJson(text, Fields{{"x", std::vector<double>{-0.0}}},
             eMinusZero::kFingerprint);
  EXPECT_EQ(text, "-0{\"x\":[-0]}");
  EXPECT_EQ(JsonOfFields({{"x", -0.0}}), "{\"x\":-0.0}");
}

TEST(CanonicalJson, ParsesOneObjectOfFieldsOnly) {
  EXPECT_THROW(ParseJsonFields("[]", "test"), TableFileError);
  EXPECT_THROW(ParseJsonFields(R"({"x":1} {})", "test"), TableFileError);
  EXPECT_THROW(ParseJsonFields(R"({"x":1,"x":2})", "test"), TableFileError);
}

}  // namespace
}  // namespace ZARN
