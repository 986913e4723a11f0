#include "io/FileNames.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

namespace fs = std::filesystem;

class FileNamesTest : public ::ZARN::Testing::InFolder {};

TEST_F(FileNamesTest, FindsTheDescriptorThatANameRefersTo) {
  fs::create_symlink("/dev/stdout", "link");
  fs::create_symlink("link", "link to a link");
  fs::create_symlink("/dev/fd", "folder");
  for (const char* name :
       {"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1", "/dev/../dev/stdout",
        "link", "./link to a link", "folder/1"}) {
    EXPECT_EQ(DescriptorNamed(name), 1) << name;
    EXPECT_FALSE(CanReplace(name)) << name;
  }
  EXPECT_EQ(DescriptorNamed("/proc/" + std::to_string(getpid()) + "/fd/1"), 1);
  EXPECT_EQ(DescriptorNamed("/dev/stdin"), 0);
  EXPECT_EQ(DescriptorNamed("/dev/fd/12345"), 12345) << "need not be open";
}

TEST_F(FileNamesTest, FindsNoDescriptorForOtherNames) {
  Put("1", "");
  fs::create_symlink("1", "to a file");
  fs::create_symlink("circle", "circle");
  for (const char* name : {"1", "to a file", "circle", "missing/1", "", "-",
                           "/dev/null", "/dev/fd/x", "/dev/fd", "/proc/1/fd/1",
                           "/dev/fd/-1", "/dev/fd/99999999999"}) {
    EXPECT_EQ(DescriptorNamed(name), std::nullopt) << name;
  }
}

TEST_F(FileNamesTest, CanReplaceRegularFilesOnly) {
  Put("file", "");
  fs::create_symlink("file", "link");
  fs::create_directory("folder");
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  for (const char* name : {"file", "link", "missing"}) {
    EXPECT_TRUE(CanReplace(name)) << name;
  }
  for (const char* name : {"folder", "pipe", "/dev/null"}) {
    EXPECT_FALSE(CanReplace(name)) << name;
  }
}

TEST_F(FileNamesTest, FollowsLinksToTheTarget) {
  fs::create_directory("folder");
  fs::create_symlink("folder/there", "link");
  EXPECT_EQ(TargetOf("link"), fs::absolute("folder/there").string());
  EXPECT_EQ(TargetOf("plain"), fs::absolute("plain").string());
}

TEST_F(FileNamesTest, RecognisesRootFileNames) {
  for (const char* name : {"x.root", ".root", "a/b.csv.root"}) {
    EXPECT_TRUE(IsRootFileName(name)) << name;
  }
  for (const char* name : {"", "root", "x.root.csv", "xroot", "x.ROOT"}) {
    EXPECT_FALSE(IsRootFileName(name)) << name;
  }
}

}  // namespace
}  // namespace ZARN::IO
