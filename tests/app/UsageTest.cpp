#include "app/Usage.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ZARN::App {
namespace {

const std::vector<std::string> kNames = {"--run", "--threads", "--tolerance",
                                         "-o"};

TEST(NearestName, IsTheOneWithTheFewestCharactersWrong) {
  EXPECT_EQ(NearestName("--thread", kNames), "--threads");
  EXPECT_EQ(NearestName("--threaads", kNames), "--threads");
  EXPECT_EQ(NearestName("--tolerence", kNames), "--tolerance");
  EXPECT_EQ(NearestName("--rnu", kNames), "--run") << "two are swapped";
  EXPECT_EQ(NearestName("--run", kNames), "--run");
}

TEST(NearestName, OfEquallyNearOnesIsTheFirst) {
  EXPECT_EQ(NearestName("--b", {"--a", "--c"}), "--a");
}

TEST(NearestName, IsEmptyWhereNoneIsNear) {
  EXPECT_EQ(NearestName("--frobnicate", kNames), "");
  EXPECT_EQ(NearestName("--nur", kNames), "") << "two of five are changed";
  EXPECT_EQ(NearestName("-p", kNames), "") << "any letter would be as near";
  EXPECT_EQ(NearestName("", kNames), "");
  EXPECT_EQ(NearestName("--run", {}), "");
}

}  // namespace
}  // namespace ZARN::App
