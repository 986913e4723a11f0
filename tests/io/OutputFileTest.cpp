#include "io/OutputFile.hpp"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "io/Errors.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

namespace fs = std::filesystem;

class OutputFileTest : public ::ZARN::Testing::InFolder {
 protected:
  static void WriteWhole(const std::string& path, const std::string& text) {
    OutputFile file(path);
    file.Write(text);
    file.Finish();
    file.Commit();
  }

  /// Names of the other files in the folder.
  static std::vector<std::string> Others(
      const std::vector<std::string>& names) {
    std::vector<std::string> others;
    for (const auto& item : fs::recursive_directory_iterator(".")) {
      const std::string name = item.path().filename().string();
      if (std::find(names.begin(), names.end(), name) == names.end()) {
        others.push_back(name);
      }
    }
    return others;
  }
};

TEST_F(OutputFileTest, AppearsAtCommit) {
  OutputFile file("out");
  file.Write("one\n");
  file.Write("two\n");
  EXPECT_FALSE(fs::exists("out"));
  EXPECT_EQ(Others({}).size(), 1U) << "a temporary file beside the target";
  file.Finish();
  file.Commit();
  EXPECT_EQ(Text("out"), "one\ntwo\n");
  EXPECT_TRUE(Others({"out"}).empty());
}

TEST_F(OutputFileTest, ReplacesAnExistingFileAtCommit) {
  Put("out", std::string(1000, 'o'));
  {
    OutputFile file("out");
    file.Write("new");
    EXPECT_EQ(Text("out"), std::string(1000, 'o'));
    file.Finish();
    file.Commit();
    EXPECT_EQ(Text("out"), "new");
  }
  EXPECT_EQ(Text("out"), "new");
}

TEST_F(OutputFileTest, ChangesNothingWithoutCommit) {
  Put("old", "old");
  {
    OutputFile old("old");
    OutputFile fresh("fresh");
    old.Write(std::string(200000, 'x'));
    fresh.Write("x");
  }
  EXPECT_EQ(Text("old"), "old");
  EXPECT_TRUE(Others({"old"}).empty());
}

TEST_F(OutputFileTest, MayBeEmpty) {
  WriteWhole("out", "");
  EXPECT_TRUE(fs::exists("out"));
  EXPECT_EQ(fs::file_size("out"), 0U);
}

TEST_F(OutputFileTest, WritesTextOfAnyLengthInOrder) {
  std::string whole;
  OutputFile file("out");
  for (std::size_t length :
       {0UL, 1UL, 65535UL, 65536UL, 1UL, 65537UL, 3UL, 300000UL, 5UL}) {
    const std::string text(length, static_cast<char>('a' + length % 26));
    file.Write(text);
    whole += text;
  }
  file.Finish();
  file.Commit();
  EXPECT_EQ(Text("out"), whole);
}

TEST_F(OutputFileTest, KeepsTheTargetsPermissions) {
  for (const fs::perms wanted :
       {fs::perms(0600), fs::perms(0644), fs::perms(0660)}) {
    Put("out", "old");
    fs::permissions("out", wanted);
    WriteWhole("out", "new");
    EXPECT_EQ(fs::status("out").permissions(), wanted);
  }
}

TEST_F(OutputFileTest, GivesANewFileThePermissionsOfTheUmask) {
  const mode_t before = umask(027);
  WriteWhole("out", "new");
  const mode_t during = umask(before);
  EXPECT_EQ(during, 027U) << "the umask is restored";
  EXPECT_EQ(fs::status("out").permissions(), fs::perms(0640));
}

TEST_F(OutputFileTest, KeepsALinkAndReplacesItsTarget) {
  fs::create_directory("folder");
  Put("folder/real", "old");
  fs::create_symlink("folder/real", "link");
  fs::create_symlink("link", "second");
  WriteWhole("second", "new");
  EXPECT_TRUE(fs::is_symlink("link"));
  EXPECT_TRUE(fs::is_symlink("second"));
  EXPECT_EQ(Text("folder/real"), "new");
}

TEST_F(OutputFileTest, KeepsALinkWhoseTargetDoesNotExistYet) {
  fs::create_symlink("real", "link");
  WriteWhole("link", "new");
  EXPECT_TRUE(fs::is_symlink("link"));
  EXPECT_EQ(Text("real"), "new");
}

TEST_F(OutputFileTest, WritesADeviceDirectly) {
  WriteWhole("/dev/null", "gone");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(OutputFileTest, WritesAPipeDirectly) {
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  std::string got;
  std::thread reader([&] { got = Text("pipe"); });
  WriteWhole("pipe", "through");
  reader.join();
  EXPECT_EQ(got, "through");
  EXPECT_TRUE(fs::is_fifo("pipe"));
}

TEST_F(OutputFileTest, CannotBeOpenedInAMissingFolder) {
  EXPECT_THROW(OutputFile("missing/out"), OutputFailure);
  Put("file", "x");
  EXPECT_THROW(OutputFile("file/out"), OutputFailure);
  EXPECT_THROW(OutputFile("."), OutputFailure);
  EXPECT_THROW(OutputFile{std::string()}, BadInput);
}

TEST_F(OutputFileTest, NamesTheFileAndTheReasonOfAFailure) {
  try {
    const OutputFile file("missing/out");
    FAIL();
  } catch (const OutputFailure& error) {
    EXPECT_STREQ(error.what(),
                 "missing/out: cannot be written: No such file or directory");
  }
}

TEST_F(OutputFileTest, FailsOnAFullDevice) {
  EXPECT_THROW(WriteWhole("/dev/full", "short"), OutputFailure);
  EXPECT_THROW(WriteWhole("/dev/full", std::string(200000, 'x')),
               OutputFailure);
}

/// A limit on file size simulates a full disk.
TEST_F(OutputFileTest, ChangesNothingOnAFullDisk) {
  Put("old", "old");
  struct rlimit before = {};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  struct rlimit limited = before;
  limited.rlim_cur = 100000;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
  EXPECT_THROW(WriteWhole("old", std::string(100001, 'x')), OutputFailure);
  EXPECT_THROW(WriteWhole("new", std::string(300000, 'x')), OutputFailure);
  EXPECT_NO_THROW(WriteWhole("fits", std::string(100000, 'x')));
  setrlimit(RLIMIT_FSIZE, &before);
  (void)std::signal(SIGXFSZ, handler);
  EXPECT_EQ(Text("old"), "old");
  EXPECT_TRUE(Others({"old", "fits"}).empty());
}

TEST_F(OutputFileTest, DoesNotTouchTheTemporaryFileOfAnotherRun) {
  OutputFile first("out");
  first.Write("first");
  WriteWhole("out", "second");
  EXPECT_EQ(Text("out"), "second");
  EXPECT_EQ(Others({"out"}).size(), 1U);
  first.Finish();
  first.Commit();
  EXPECT_EQ(Text("out"), "first");
  EXPECT_TRUE(Others({"out"}).empty());
}

}  // namespace
}  // namespace ZARN::IO
