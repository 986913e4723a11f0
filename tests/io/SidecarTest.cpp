#include "io/Sidecar.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>

#include "io/Errors.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

class SidecarTest : public ::ZARN::Testing::InFolder {
 protected:
  const Origin origin_ = {"zarn-shadow", "1.2.3", 7, 150.5, 420.0, "ab12"};
};

TEST_F(SidecarTest, IsNamedAfterARegularFile) {
  EXPECT_EQ(SidecarName("verdicts.csv"), "verdicts.csv.json");
  EXPECT_EQ(SidecarName("sub/x"), "sub/x.json");
  Put("there.csv", "");
  EXPECT_EQ(SidecarName("there.csv"), "there.csv.json");
  EXPECT_EQ(SidecarName(std::string(250, 'x')),
            std::string(250, 'x') + ".json");
}

TEST_F(SidecarTest, StandsBesideRegularFilesOnly) {
  for (const std::string name :
       {"-", "/dev/stdout", "/dev/fd/1", "/dev/null", "verdicts.root", ""}) {
    EXPECT_EQ(SidecarName(name), std::nullopt) << name;
  }
  EXPECT_EQ(SidecarName(std::nullopt), std::nullopt);
  EXPECT_EQ(SidecarName(std::string(251, 'x')), std::nullopt);
  const Sidecar none("/dev/null", origin_);
  EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST_F(SidecarTest, HoldsTheOriginOnceItIsCommitted) {
  Put("verdicts.csv.json", "former");
  {
    Sidecar unfinished("verdicts.csv", origin_);
    unfinished.Finish();
  }
  EXPECT_EQ(Text("verdicts.csv.json"), "former");
  Sidecar sidecar("verdicts.csv", origin_);
  sidecar.Finish();
  sidecar.Commit();
  EXPECT_EQ(Text("verdicts.csv.json"),
            "{\"program\":\"zarn-shadow\",\"version\":\"1.2.3\",\"run\":7,"
            "\"tolerance\":150.5,\"wavelength\":420.0,"
            "\"fingerprint\":\"ab12\"}\n");
}

TEST_F(SidecarTest, HasNoWavelengthWhereNoLightIsTraced) {
  EXPECT_EQ(Describe({"zarn-shadow", "1.2.3", -1, 0.1, std::nullopt, "ab"}),
            "{\"program\":\"zarn-shadow\",\"version\":\"1.2.3\",\"run\":-1,"
            "\"tolerance\":0.1,\"fingerprint\":\"ab\"}");
}

TEST_F(SidecarTest, SaysHowPositionsWereSmeared) {
  Origin origin = origin_;
  origin.smearing = DU::Smearing{0.1, 65535, -3};
  EXPECT_EQ(Describe(origin),
            "{\"program\":\"zarn-shadow\",\"version\":\"1.2.3\",\"run\":7,"
            "\"tolerance\":150.5,\"wavelength\":420.0,\"smearing\":{"
            "\"sigma\":0.1,\"samples\":65535,\"seed\":-3},"
            "\"fingerprint\":\"ab12\"}");
}

TEST_F(SidecarTest, ThrowsIfItCannotBeWritten) {
  std::filesystem::create_directory("x.json");
  EXPECT_THROW(Sidecar("x", origin_), OutputFailure);
}

}  // namespace
}  // namespace ZARN::IO
