#include "io/DistinctFiles.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "io/Errors.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

class DistinctFilesTest : public Testing::InFolder {
 protected:
  static std::string Complaint(const std::vector<std::string>& inputs,
                               const std::vector<std::string>& outputs) {
    try {
      RequireDistinctFiles(inputs, outputs);
    } catch (const BadInput& error) {
      return error.what();
    }
    return "";
  }
};

TEST_F(DistinctFilesTest, LetsFilesApartPass) {
  Put("in.csv", "");
  EXPECT_EQ(Complaint({"in.csv", "-"}, {"a", "b", "-"}), "");
  EXPECT_EQ(Complaint({"in.csv", "in.csv"}, {"a"}), "") << "may be read twice";
  EXPECT_EQ(Complaint({"/dev/null"}, {"/dev/null", "/dev/null"}), "");
  EXPECT_EQ(Complaint({"-"}, {"-"}), "");
}

TEST_F(DistinctFilesTest, RefusesOnePlaceForTwoOutputs) {
  EXPECT_EQ(Complaint({}, {"a", "b", "a"}), "a: is named for two outputs");
  EXPECT_EQ(Complaint({}, {"-", "-"}),
            "standard output: is named for two outputs");
  std::filesystem::create_directory("sub");
  EXPECT_EQ(Complaint({}, {"new", "sub/../new"}),
            "new (sub/../new): is named for two outputs");
  Put("there", "");
  std::filesystem::create_symlink("there", "link");
  EXPECT_EQ(Complaint({}, {"there", "link"}),
            "there (link): is named for two outputs");
  std::filesystem::create_symlink("missing", "dangling");
  EXPECT_EQ(Complaint({}, {"dangling", "missing"}),
            "dangling (missing): is named for two outputs");
}

TEST_F(DistinctFilesTest, RefusesToReplaceAnInput) {
  Put("in.csv", "");
  std::filesystem::create_hard_link("in.csv", "same.csv");
  EXPECT_EQ(Complaint({"in.csv"}, {"a", "./in.csv"}),
            "./in.csv (in.csv): is both read and written");
  EXPECT_EQ(Complaint({"in.csv"}, {"same.csv"}),
            "same.csv (in.csv): is both read and written");
}

TEST_F(DistinctFilesTest, RefusesToReadStandardInputTwice) {
  EXPECT_EQ(Complaint({"-", "-"}, {}), "standard input is named twice");
}

}  // namespace
}  // namespace ZARN::IO
