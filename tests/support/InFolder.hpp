#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace ZARN::Testing {

/// A test that runs in its own empty folder.
class InFolder : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = ::testing::TempDir() + "zarn-test-XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    before_ = std::filesystem::current_path();
    std::filesystem::current_path(folder_);
  }
  void TearDown() override {
    std::filesystem::current_path(before_);
    std::filesystem::remove_all(folder_);
  }

  static void Put(const std::string& name, const std::string& text) {
    std::ofstream(name, std::ios::binary) << text;
  }

  static std::string Text(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::filesystem::path folder_;
  std::filesystem::path before_;
};

}  // namespace ZARN::Testing
