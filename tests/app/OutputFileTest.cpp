#include "app/OutputFile.hpp"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "app/Failure.hpp"

namespace ZARN::App {
namespace {

namespace fs = std::filesystem;

class OutputFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = ::testing::TempDir() + "zarn-output-XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    before_ = fs::current_path();
    fs::current_path(folder_);
  }
  void TearDown() override {
    fs::current_path(before_);
    fs::remove_all(folder_);
  }

  fs::path In(const std::string& name) const { return folder_ / name; }

  static void Put(const fs::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
  }

  static std::string Text(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  static void WriteWhole(const fs::path& path, const std::string& text) {
    OutputFile file(path.string());
    file.Write(text);
    file.Finish();
    file.Commit();
  }

  /// What is in the folder that does not bear one of the names.
  std::vector<std::string> Others(const std::vector<std::string>& names) const {
    std::vector<std::string> others;
    for (const auto& item : fs::recursive_directory_iterator(folder_)) {
      const std::string name = item.path().filename().string();
      if (std::find(names.begin(), names.end(), name) == names.end()) {
        others.push_back(name);
      }
    }
    return others;
  }

  /// Leave behind what a killed process leaves.
  static void KillWhileWriting(const std::string& path) {
    const pid_t child = fork();
    if (child == 0) {
      OutputFile file(path);
      file.Write("half");
      kill(getpid(), SIGKILL);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
  }

 private:
  fs::path folder_;
  fs::path before_;
};

TEST_F(OutputFileTest, AppearsWhenItIsCommitted) {
  OutputFile file(In("out").string());
  file.Write("one\n");
  file.Write("two\n");
  EXPECT_FALSE(fs::exists(In("out")));
  EXPECT_EQ(Others({}).size(), 1U) << "a temporary file beside the target";
  file.Finish();
  file.Commit();
  EXPECT_EQ(Text(In("out")), "one\ntwo\n");
  EXPECT_TRUE(Others({"out"}).empty());
}

TEST_F(OutputFileTest, ReplacesAnExistingFileWhenItIsCommitted) {
  Put(In("out"), std::string(1000, 'o'));
  {
    OutputFile file(In("out").string());
    file.Write("new");
    EXPECT_EQ(Text(In("out")), std::string(1000, 'o'));
    file.Finish();
    file.Commit();
    EXPECT_EQ(Text(In("out")), "new");
  }
  EXPECT_EQ(Text(In("out")), "new");
}

TEST_F(OutputFileTest, LeavesEverythingAsItWasWithoutACommit) {
  Put(In("old"), "old");
  {
    OutputFile old(In("old").string());
    OutputFile fresh(In("fresh").string());
    old.Write(std::string(200000, 'x'));
    fresh.Write("x");
  }
  EXPECT_EQ(Text(In("old")), "old");
  EXPECT_TRUE(Others({"old"}).empty());
}

TEST_F(OutputFileTest, MayBeEmpty) {
  WriteWhole(In("out"), "");
  EXPECT_TRUE(fs::exists(In("out")));
  EXPECT_EQ(fs::file_size(In("out")), 0U);
}

TEST_F(OutputFileTest, WritesTextOfAnyLengthInItsOrder) {
  std::string whole;
  OutputFile file(In("out").string());
  for (std::size_t length :
       {0UL, 1UL, 65535UL, 65536UL, 1UL, 65537UL, 3UL, 300000UL, 5UL}) {
    const std::string text(length, static_cast<char>('a' + length % 26));
    file.Write(text);
    whole += text;
  }
  file.Finish();
  file.Commit();
  EXPECT_EQ(Text(In("out")), whole);
}

TEST_F(OutputFileTest, KeepsTheTargetsPermissions) {
  for (const fs::perms wanted :
       {fs::perms(0600), fs::perms(0644), fs::perms(0660)}) {
    Put(In("out"), "old");
    fs::permissions(In("out"), wanted);
    WriteWhole(In("out"), "new");
    EXPECT_EQ(fs::status(In("out")).permissions(), wanted);
  }
}

TEST_F(OutputFileTest, GivesANewFileWhatTheUmaskLeaves) {
  const mode_t before = umask(027);
  WriteWhole(In("out"), "new");
  const mode_t during = umask(before);
  EXPECT_EQ(during, 027U) << "the umask is put back";
  EXPECT_EQ(fs::status(In("out")).permissions(), fs::perms(0640));
}

TEST_F(OutputFileTest, LeavesALinkAndReplacesItsFile) {
  fs::create_directory(In("folder"));
  Put(In("folder/real"), "old");
  fs::create_symlink("folder/real", In("link"));
  fs::create_symlink("link", In("second"));
  WriteWhole(In("second"), "new");
  EXPECT_TRUE(fs::is_symlink(In("link")));
  EXPECT_TRUE(fs::is_symlink(In("second")));
  EXPECT_EQ(Text(In("folder/real")), "new");
}

TEST_F(OutputFileTest, LeavesALinkWhoseFileIsNotThereYet) {
  fs::create_symlink("real", In("link"));
  WriteWhole(In("link"), "new");
  EXPECT_TRUE(fs::is_symlink(In("link")));
  EXPECT_EQ(Text(In("real")), "new");
}

TEST_F(OutputFileTest, WritesADeviceDirectly) {
  WriteWhole("/dev/null", "gone");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(OutputFileTest, WritesAPipeDirectly) {
  ASSERT_EQ(mkfifo(In("pipe").c_str(), 0600), 0);
  std::string got;
  std::thread reader([&] { got = Text(In("pipe")); });
  WriteWhole(In("pipe"), "through");
  reader.join();
  EXPECT_EQ(got, "through");
  EXPECT_TRUE(fs::is_fifo(In("pipe")));
}

TEST_F(OutputFileTest, CannotBeOpenedInAMissingFolder) {
  EXPECT_THROW(OutputFile(In("missing/out").string()), OutputFailure);
  Put(In("file"), "x");
  EXPECT_THROW(OutputFile(In("file/out").string()), OutputFailure);
  EXPECT_THROW(OutputFile(In("").string()), OutputFailure);
  EXPECT_THROW(OutputFile{std::string()}, BadInput);
}

TEST_F(OutputFileTest, NamesTheFileAndTheReasonWhenItFails) {
  try {
    const OutputFile file(In("missing/out").string());
    FAIL();
  } catch (const OutputFailure& error) {
    EXPECT_EQ(error.what(),
              In("missing/out").string() +
                  ": cannot be written: No such file or directory");
  }
}

TEST_F(OutputFileTest, FailsOnAFullDevice) {
  EXPECT_THROW(WriteWhole("/dev/full", "short"), OutputFailure);
  EXPECT_THROW(WriteWhole("/dev/full", std::string(200000, 'x')),
               OutputFailure);
}

/// A limit on the size of files stands for a full disk.
TEST_F(OutputFileTest, LeavesEverythingAsItWasOnAFullDisk) {
  Put(In("old"), "old");
  struct rlimit before = {};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  struct rlimit limited = before;
  limited.rlim_cur = 100000;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
  EXPECT_THROW(WriteWhole(In("old"), std::string(100001, 'x')), OutputFailure);
  EXPECT_THROW(WriteWhole(In("new"), std::string(300000, 'x')), OutputFailure);
  EXPECT_NO_THROW(WriteWhole(In("fits"), std::string(100000, 'x')));
  setrlimit(RLIMIT_FSIZE, &before);
  (void)std::signal(SIGXFSZ, handler);
  EXPECT_EQ(Text(In("old")), "old");
  EXPECT_TRUE(Others({"old", "fits"}).empty());
}

TEST_F(OutputFileTest, SweepsWhatAKilledProcessLeftBehind) {
  for (const std::string& path :
       {In("out").string(), std::string("out"), std::string("./out")}) {
    for (const bool exists : {false, true}) {
      SCOPED_TRACE(path + (exists ? " exists" : " is new"));
      fs::remove(In("out"));
      if (exists) Put(In("out"), "old");
      KillWhileWriting(path);
      EXPECT_EQ(Others({"out"}).size(), 1U);
      EXPECT_EQ(Text(In("out")), exists ? "old" : "");
      WriteWhole(path, "new");
      EXPECT_TRUE(Others({"out"}).empty());
      for (const std::string& left : Others({"out"})) fs::remove(In(left));
    }
  }
}

TEST_F(OutputFileTest, SparesTheFilesOfARunThatGoesOn) {
  OutputFile first(In("out").string());
  first.Write("first");
  WriteWhole(In("out"), "second");
  EXPECT_EQ(Text(In("out")), "second");
  EXPECT_EQ(Others({"out"}).size(), 1U);
  first.Finish();
  first.Commit();
  EXPECT_EQ(Text(In("out")), "first");
  EXPECT_TRUE(Others({"out"}).empty());
}

TEST_F(OutputFileTest, SparesWhatWasLeftOfOtherTargets) {
  KillWhileWriting(In("other").string());
  WriteWhole(In("out"), "x");
  WriteWhole(In("ther"), "x");
  EXPECT_EQ(Others({"out", "ther"}).size(), 1U);
}

TEST_F(OutputFileTest, SparesFilesThatOnlyLookLikeItsOwn) {
  Put(In(".out.zarn-tmp-notes-of-mine"), "x");
  Put(In("out.zarn-tmp-abcdef"), "x");
  WriteWhole(In("out"), "x");
  EXPECT_TRUE(fs::exists(In(".out.zarn-tmp-notes-of-mine")));
  EXPECT_TRUE(fs::exists(In("out.zarn-tmp-abcdef")));
}

}  // namespace
}  // namespace ZARN::App
