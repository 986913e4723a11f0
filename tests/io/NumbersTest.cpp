#include "io/Numbers.hpp"

#include <gtest/gtest.h>

#include <array>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::IO {
namespace {

using Testing::kInfinity;

std::uint64_t Bits(double value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

/// Compares all bits, so -0 is not 0.
void ExpectNumber(const std::string& cell, double wanted) {
  const NumberOrReason number = ParseNumber(cell);
  ASSERT_EQ(number.reason, nullptr) << cell << " " << number.reason;
  EXPECT_EQ(Bits(number.value), Bits(wanted)) << cell << ": " << number.value;
}

void ExpectReason(const std::string& cell, const std::string& wanted) {
  const NumberOrReason number = ParseNumber(cell);
  ASSERT_NE(number.reason, nullptr) << cell << " was read as " << number.value;
  EXPECT_EQ(number.reason, wanted) << cell;
}

constexpr double kLowest = 4.9406564584124654e-324;  // the smallest above 0

TEST(ParseNumber, ReadsDecimalsAndExponents) {
  ExpectNumber("0", 0.0);
  ExpectNumber("1", 1.0);
  ExpectNumber("-5800.125", -5800.125);
  ExpectNumber("1.", 1.0);
  ExpectNumber(".5", 0.5);
  ExpectNumber("007", 7.0);
  ExpectNumber("1e3", 1000.0);
  ExpectNumber("1E+3", 1000.0);
  ExpectNumber("25e-2", 0.25);
  ExpectNumber("1e0000000003", 1000.0);
}

TEST(ParseNumber, KeepsTheSignOfZero) {
  ExpectNumber("-0", -0.0);
  ExpectNumber("-0.0e5", -0.0);
  ExpectNumber("+0", 0.0);
}

TEST(ParseNumber, AcceptsOneLeadingPlus) {
  ExpectNumber("+1", 1.0);
  ExpectNumber("+.5", 0.5);
  ExpectNumber("+1e-3", 1e-3);
  for (const char* cell : {"+", "++1", "+-1", "-+1", "--1", "+ 1"}) {
    ExpectReason(cell, "is not a number");
  }
}

TEST(ParseNumber, AcceptsInfinityAndNaN) {
  for (const char* cell :
       {"inf", "INF", "Inf", "infinity", "Infinity", "+inf"}) {
    ExpectNumber(cell, kInfinity);
  }
  ExpectNumber("-inf", -kInfinity);
  for (const char* cell : {"nan", "NaN", "NAN", "-nan", "+nan", "nan(x)"}) {
    const NumberOrReason number = ParseNumber(cell);
    EXPECT_EQ(number.reason, nullptr) << cell;
    EXPECT_TRUE(std::isnan(number.value)) << cell;
  }
}

TEST(ParseNumber, RefusesCellsThatAreNotEntirelyANumber) {
  for (const char* cell : {"",
                           ".",
                           "-",
                           "-.",
                           "e5",
                           "1e",
                           "1e+",
                           "abc",
                           "1abc",
                           "0x10",
                           "0X1p3",
                           "0b1",
                           "1_000",
                           "1,5",
                           "1'000",
                           "1 ",
                           " 1",
                           "\t1",
                           "1\t",
                           "1\n",
                           "1\r",
                           " ",
                           "1 2",
                           "1.2.3",
                           "1e5.5",
                           "1e5e5",
                           "1f",
                           "1d5",
                           "in",
                           "infinit",
                           "na",
                           "nanx",
                           "nan(",
                           "nan(x",
                           "nan(x y)",
                           "#N/A",
                           "\xEF\xBB\xBF+1",
                           "\xC2\xA0+1",
                           "\xE2\x88\x92+1"}) {
    ExpectReason(cell, "is not a number");
  }
}

TEST(ParseNumber, DoesNotStopAtANulByte) {
  ExpectReason(std::string("1\0", 2), "is not a number");
  ExpectReason(std::string("1\0"
                           "2",
                           3),
               "is not a number");
  ExpectReason(std::string("\0"
                           "1",
                           2),
               "is not a number");
  ExpectReason(std::string("1e400\0", 6), "is not a number");
  ExpectReason(std::string("1e-400\0x", 8), "is not a number");
}

TEST(ParseNumber, ReadsOnlyTheCell) {
  const std::string row = "1.5e3,7";
  const std::string_view cells = row;
  EXPECT_EQ(ParseNumber(cells.substr(0, 3)).value, 1.5);
  EXPECT_EQ(ParseNumber(cells.substr(0, 5)).value, 1500.0);
  EXPECT_NE(ParseNumber(cells.substr(0, 4)).reason, nullptr);
  EXPECT_NE(ParseNumber(cells.substr(0, 0)).reason, nullptr);
}

TEST(ParseNumber, RoundsTooSmallNumbersToTheNearestDouble) {
  ExpectNumber("4.9e-324", kLowest);
  ExpectNumber("3e-324", kLowest);
  ExpectNumber("2.5e-324", kLowest);
  ExpectNumber("7.5e-324", 2 * kLowest);
  ExpectNumber("2e-324", 0.0);
  ExpectNumber("1e-400", 0.0);
  ExpectNumber("+1e-400", 0.0);
  ExpectNumber("-1e-400", -0.0);
  ExpectNumber("-3e-324", -kLowest);
  ExpectNumber("1e-99999999999999999999", 0.0);
  ExpectNumber("0." + std::string(100000, '0') + "1", 0.0);
  ExpectNumber("2.2250738585072011e-308", 2.2250738585072011e-308);
}

TEST(ParseNumber, RoundsHalfTheLowestDoubleToEven) {
  // All digits of 2^-1075, halfway between 0 and the smallest double.
  const std::string half =
      "0." + std::string(323, '0') +
      "247032822920623272088284396434110686182529901307162382212792841250"
      "337753635104375932649918180817996189898282347722858865463328355177"
      "969898199387398005390939063150356595155702263922908583924491051844"
      "359318028499365361525003193704576782492193656236698636584807570015"
      "857692699037063119282795585513329278343384093519780155312465972635"
      "795746227664652728272200563740064854999770965994704540208281662262"
      "378573934507363390079677619305775067401763246736009689513405355374"
      "585166611342237666786041621596804619144672918403005300575308490487"
      "653917113865916462395249126236538818796362393732804238910186723484"
      "976682350898633885879256283027559956575244555072551893136908362547"
      "791869486679949683240497058210285131854513962138377228261454376934"
      "12532098591327667236328125";
  ExpectNumber(half, 0.0);
  ExpectNumber("-" + half, -0.0);
  ExpectNumber(half + "0000000001", kLowest);
}

TEST(ParseNumber, RefusesTooLargeNumbers) {
  ExpectNumber("1.7976931348623157e308", std::numeric_limits<double>::max());
  ExpectNumber("1.7976931348623158e308", std::numeric_limits<double>::max());
  for (const char* cell : {"1.7976931348623159e308", "1e309", "+1e400",
                           "-1e400", "1e99999999999999999999"}) {
    ExpectReason(cell, "is too large for a double");
  }
  ExpectReason(std::string(400, '9'), "is too large for a double");
}

TEST(ParseNumber, ReadsManyDigits) {
  ExpectNumber(std::string(100000, '0') + "1", 1.0);
  ExpectNumber("1." + std::string(100000, '0') + "1", 1.0);
  ExpectNumber("1" + std::string(400, '0') + "e-400", 1.0);
}

TEST(ParseNumber, ReadsBackExactlyWhatWasWritten) {
  std::mt19937_64 random(20240917);
  for (int i = 0; i < 200000; ++i) {
    std::uint64_t bits = random();
    if (i % 4 == 0) bits &= 0x800FFFFFFFFFFFFFULL;  // subnormal
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    if (!std::isfinite(value)) continue;
    std::array<char, 32> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    const std::string cell(text.data(), end);
    SCOPED_TRACE("draw " + std::to_string(i));
    ASSERT_NO_FATAL_FAILURE(ExpectNumber(cell, value));
  }
}

TEST(ParseNumber, ReadsTheSameInEveryLocale) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  for (const char* name : {"de_DE", "de_DE.UTF-8", "fr_FR.UTF-8", "C.UTF-8"}) {
    (void)std::setlocale(LC_ALL, name);  // unchanged if not installed
    ExpectNumber("1.5", 1.5);
    ExpectNumber("3e-324", kLowest);
    ExpectReason("1,5", "is not a number");
    ExpectReason("1.5e400", "is too large for a double");
  }
  (void)std::setlocale(LC_ALL, before.c_str());
}

}  // namespace
}  // namespace ZARN::IO
