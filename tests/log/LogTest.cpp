#include "log/Log.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/Captured.hpp"

namespace ZARN {
namespace {

using Testing::Captured;

TEST(Log, WritesOnlyTheTextWithoutPrefixOrColour) {
  const Captured captured(warn);
  warn << "a message\n";
  EXPECT_EQ(captured.Text(), "a message\n");
}

TEST(Log, ChainsTextsNumbersAndEndl) {
  const Captured captured(warn);
  warn << "x = " << 1.5 << std::string(", name") << endl;
  EXPECT_EQ(captured.Text(), "x = 1.5, name\n");
}

TEST(Log, PrintsNumbersLikeAStreamByDefault) {
  for (const double value :
       {0.0, -0.0, 1.0, 150.0, 1.0 / 3.0, 1e6, 1e5, 123456789.0, 1e-5, 1e300,
        5e-324, -33800000.0, std::numeric_limits<double>::infinity(),
        -std::numeric_limits<double>::infinity(), std::nan(""),
        -std::nan("")}) {
    const Captured captured(warn);
    warn << value << "\n";
    std::ostringstream expected;
    expected << value << "\n";
    EXPECT_EQ(captured.Text(), expected.str());
  }
}

TEST(Log, WritesWarningsToStandardErrorByDefault) {
  testing::internal::CaptureStderr();
  warn << "to standard error\n";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "to standard error\n");
}

TEST(Log, DropsDiagnosticsUntilSwitchedOn) {
  std::ostringstream output;
  debug.SetOutput(&output);
  debug << "unheard\n";
  debug.Switch(otext::eState::kOn);
  debug << "heard\n";
  debug.Switch(otext::eState::kSilent);
  debug << "unheard again\n";
  debug.SetOutput(nullptr);
  EXPECT_EQ(output.str(), "heard\n");
}

TEST(Log, SendsAnUnfinishedMessageToTheOldOutput) {
  std::ostringstream first;
  std::ostringstream second;
  warn.SetOutput(&first);
  warn << "begun";
  EXPECT_EQ(first.str(), "");
  warn.SetOutput(&second);
  warn << "ended\n";
  warn.SetOutput(nullptr);
  EXPECT_EQ(first.str(), "begun");
  EXPECT_EQ(second.str(), "ended\n");
}

TEST(Log, SendsAnUnfinishedMessageOnFlushAndWhenItsThreadEnds) {
  const Captured captured(warn);
  warn << "flushed" << flush;
  EXPECT_EQ(captured.Text(), "flushed");
  std::thread([] { warn << ", left by a thread"; }).join();
  EXPECT_EQ(captured.Text(), "flushed, left by a thread");
}

std::vector<std::string> SortedLines(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  std::sort(lines.begin(), lines.end());
  return lines;
}

TEST(Log, DoesNotMixMessagesOfSeveralThreads) {
  constexpr int kThreads = 4;
  constexpr int kMessages = 500;
  std::ostringstream output;  // both streams share it
  warn.SetOutput(&output);
  debug.SetOutput(&output);
  debug.Switch(otext::eState::kOn);
  std::vector<std::thread> threads;
  std::vector<std::string> expected;
  for (int thread = 0; thread < kThreads; ++thread) {
    const std::string name = "thread " + std::to_string(thread);
    const std::string message = name + ", the end";
    expected.insert(expected.end(), kMessages, message);
    threads.emplace_back([name, thread] {
      otext& stream = thread % 2 == 0 ? warn : debug;
      for (int i = 0; i < kMessages; ++i) {
        stream << name << ", "
               << "the end" << endl;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  debug.Switch(otext::eState::kSilent);
  debug.SetOutput(nullptr);
  warn.SetOutput(nullptr);
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(SortedLines(output.str()), expected);
}

}  // namespace
}  // namespace ZARN
