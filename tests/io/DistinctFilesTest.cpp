#include "io/DistinctFiles.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "io/Errors.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

class DistinctFilesTest : public ::ZARN::Testing::InFolder {
 protected:
  static std::string ErrorText(const std::vector<std::string>& inputs,
                               const std::vector<std::string>& outputs) {
    try {
      RequireDistinctFiles(inputs, outputs);
    } catch (const BadInput& error) {
      return error.what();
    }
    return "";
  }
};

TEST_F(DistinctFilesTest, AcceptsDistinctFiles) {
  Put("in.csv", "");
  EXPECT_EQ(ErrorText({"in.csv", "-"}, {"a", "b", "-"}), "");
  EXPECT_EQ(ErrorText({"/dev/null"}, {"/dev/null", "/dev/null"}), "");
  EXPECT_EQ(ErrorText({"-"}, {"-"}), "");
}

TEST_F(DistinctFilesTest, RefusesTheSameFileForTwoOutputs) {
  EXPECT_EQ(ErrorText({}, {"a", "b", "a"}), "a: is used for two outputs");
  EXPECT_EQ(ErrorText({}, {"-", "-"}),
            "standard output: is used for two outputs");
  std::filesystem::create_directory("sub");
  EXPECT_EQ(ErrorText({}, {"new", "sub/../new"}),
            "new (sub/../new): is used for two outputs");
  Put("there", "");
  std::filesystem::create_symlink("there", "link");
  EXPECT_EQ(ErrorText({}, {"there", "link"}),
            "there (link): is used for two outputs");
  std::filesystem::create_symlink("missing", "dangling");
  EXPECT_EQ(ErrorText({}, {"dangling", "missing"}),
            "dangling (missing): is used for two outputs");
}

TEST_F(DistinctFilesTest, AcceptsDifferentNamesThatLeadNowhere) {
  std::filesystem::create_symlink("loop", "loop");
  EXPECT_EQ(ErrorText({}, {"loop/a", "loop/b"}), "");
}

TEST_F(DistinctFilesTest, RefusesToReplaceAnInput) {
  Put("in.csv", "");
  std::filesystem::create_hard_link("in.csv", "same.csv");
  EXPECT_EQ(ErrorText({"in.csv"}, {"a", "./in.csv"}),
            "./in.csv (in.csv): is both read and written");
  EXPECT_EQ(ErrorText({"in.csv"}, {"same.csv"}),
            "same.csv (in.csv): is both read and written");
}

TEST_F(DistinctFilesTest, RefusesTheSameFileForTwoInputs) {
  Put("in.csv", "");
  EXPECT_EQ(ErrorText({"in.csv", "in.csv"}, {"a"}),
            "in.csv: is used for two inputs");
  std::filesystem::create_symlink("in.csv", "link.csv");
  EXPECT_EQ(ErrorText({"in.csv", "link.csv"}, {}),
            "in.csv (link.csv): is used for two inputs");
  EXPECT_EQ(ErrorText({"/dev/null", "/dev/null"}, {}), "");
}

TEST_F(DistinctFilesTest, KnowsTheFileOfATree) {
  Put("in.root", "root");
  EXPECT_EQ(ErrorText({"in.root:a", "in.root:b"}, {}), "");
  EXPECT_EQ(ErrorText({"in.root:a", "in.root:a"}, {}),
            "in.root:a: is used for two inputs");
  EXPECT_EQ(ErrorText({"in.root", "in.root:a"}, {}),
            "in.root (in.root:a): is used for two inputs")
      << "a may be the only tree";
  EXPECT_EQ(ErrorText({"in.root:a"}, {"./in.root"}),
            "./in.root (in.root): is both read and written");
}

TEST_F(DistinctFilesTest, RefusesToReadStandardInputTwice) {
  EXPECT_EQ(ErrorText({"-", "-"}, {}), "standard input is used twice");
}

}  // namespace
}  // namespace ZARN::IO
