#include "app/TolerancesOption.hpp"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "app/CommandLine.hpp"
#include "app/RunOptions.hpp"
#include "app/Usage.hpp"
#include "io/Quoted.hpp"

namespace ZARN::App {
namespace {

constexpr const char* kOption = "--tolerances";
// The counts of each PMT are kept for every tolerance.
constexpr double kMost = 1000;

[[noreturn]] void Refuse(const std::string& text, const std::string& reason) {
  throw BadUsage(std::string(kOption) + ": " + IO::Quoted(text) + " " + reason);
}

std::vector<double> NumbersOf(const std::string& text, char separator) {
  std::vector<double> numbers;
  std::istringstream parts(text + separator);
  for (std::string part; std::getline(parts, part, separator);) {
    numbers.push_back(NumberOf(kOption, WithoutBlanks(part)));
  }
  return numbers;
}

/// START to STOP, both included if STEP divides the distance.
std::vector<double> RangeOf(const std::string& text) {
  const std::vector<double> numbers = NumbersOf(text, ':');
  if (numbers.size() != 3) Refuse(text, "is not START:STOP:STEP");
  const double start = numbers[0];
  const double stop = numbers[1];
  const double step = numbers[2];
  if (!(step > 0)) Refuse(text, "has a STEP that is not greater than 0");
  if (stop < start) Refuse(text, "has a STOP that is less than START");
  // 0:0.3:0.1 has 0.3, although 0.3 / 0.1 is less than 3.
  constexpr double kRounding = 1e-9;
  const double steps = std::floor((stop - start) / step + kRounding);
  if (!(steps < kMost)) Refuse(text, "has more than 1000 tolerances");
  std::vector<double> range;
  for (double i = 0; i <= steps; ++i) range.push_back(start + i * step);
  return range;
}

std::vector<double> TolerancesOf(const std::string& text) {
  if (text.find(':') != std::string::npos) return RangeOf(text);
  std::vector<double> list = NumbersOf(text, ',');
  if (static_cast<double>(list.size()) > kMost) {
    Refuse(text, "has more than 1000 tolerances");
  }
  for (auto at = list.begin(); at != list.end(); ++at) {
    if (std::find(list.begin(), at, *at) == at) continue;
    Refuse(text, "has a tolerance twice");
  }
  return list;
}

}  // namespace

void AddTolerancesOption(CLI::App& command, std::vector<double>& tolerances,
                         const std::string& description) {
  AddOption(
      command, kOption,
      [&tolerances](const std::string& text) {
        tolerances = TolerancesOf(text);
      },
      "LIST", description + " in mm: START:STOP:STEP or A,B,C");
}

}  // namespace ZARN::App
