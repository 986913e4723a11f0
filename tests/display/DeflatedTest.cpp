#include "display/Deflated.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/display/PageBlocks.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::Display {
namespace {

TEST(Base64, IsThatOfTheStandard) {
  // RFC 4648, section 10.
  EXPECT_EQ(Base64(""), "");
  EXPECT_EQ(Base64("f"), "Zg==");
  EXPECT_EQ(Base64("fo"), "Zm8=");
  EXPECT_EQ(Base64("foo"), "Zm9v");
  EXPECT_EQ(Base64("foobar"), "Zm9vYmFy");
  EXPECT_EQ(Base64("\xFF\xFE\xFB"), "//77");
}

TEST(DeflatedBlock, GivesBackWhatWasAppended) {
  Testing::Random random(910);
  std::vector<double> wanted;
  DeflatedBlock block("numbers");
  for (int i = 0; i < 200; ++i) {
    // One is larger than any buffer.
    std::vector<double> part(i == 100 ? 200'000 : random.Below(2000));
    for (double& number : part) number = random.Uniform(0, 1);
    block.Append(part);
    wanted.insert(wanted.end(), part.begin(), part.end());
  }
  EXPECT_EQ(block.Name(), "numbers");
  const std::string bytes =
      Testing::Inflated(Testing::FromBase64(block.TakeBase64()));
  ASSERT_EQ(bytes.size(), wanted.size() * sizeof(double));
  EXPECT_EQ(std::memcmp(bytes.data(), wanted.data(), bytes.size()), 0);
}

TEST(DeflatedBlock, CanBeEmpty) {
  DeflatedBlock block("none");
  block.Append(std::vector<float>());
  EXPECT_EQ(Testing::Inflated(Testing::FromBase64(block.TakeBase64())), "");
}

}  // namespace
}  // namespace ZARN::Display
