#include "log/NearestName.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ZARN {
namespace {

const std::vector<std::string> kNames = {"--run", "--threads", "--tolerance",
                                         "-o"};

TEST(NearestName, HasTheFewestWrongCharacters) {
  EXPECT_EQ(NearestName("--thread", kNames), "--threads");
  EXPECT_EQ(NearestName("--threaads", kNames), "--threads");
  EXPECT_EQ(NearestName("--tolerence", kNames), "--tolerance");
  EXPECT_EQ(NearestName("--rnu", kNames), "--run")
      << "two characters are swapped";
  EXPECT_EQ(NearestName("--run", kNames), "--run");
}

TEST(NearestName, IsTheFirstOnATie) {
  EXPECT_EQ(NearestName("--b", {"--a", "--c"}), "--a");
}

TEST(NearestName, IsEmptyIfNoneIsNear) {
  EXPECT_EQ(NearestName("--frobnicate", kNames), "");
  EXPECT_EQ(NearestName("--nur", kNames), "")
      << "two of five characters differ";
  EXPECT_EQ(NearestName("-p", kNames), "")
      << "every one-letter option is as near";
  EXPECT_EQ(NearestName("", kNames), "");
  EXPECT_EQ(NearestName("--run", {}), "");
}

}  // namespace
}  // namespace ZARN
