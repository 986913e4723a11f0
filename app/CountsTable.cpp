#include "app/CountsTable.hpp"

#include <iomanip>
#include <ostream>
#include <sstream>

#include "log/Grouped.hpp"

namespace ZARN::App {
namespace {

constexpr int kLabelWidth = 14;
constexpr int kCountWidth = 12;

std::string Row(const std::string& label, const std::string& count) {
  std::ostringstream row;
  row << std::left << std::setw(kLabelWidth) << label << std::right
      << std::setw(kCountWidth) << count;
  return row.str();
}

std::string Percent(std::uint64_t count, std::uint64_t paths) {
  if (paths == 0) return "";
  std::ostringstream text;
  text << std::setw(9) << std::fixed << std::setprecision(3)
       << 100.0 * static_cast<double>(count) / static_cast<double>(paths)
       << " %";
  return text.str();
}

void PrintTime(std::ostream& out, std::uint64_t paths, double seconds) {
  std::ostringstream time;
  time << std::fixed << std::setprecision(3) << seconds;
  out << Row("seconds", time.str()) << "\n";
  const double rate = seconds > 0 ? static_cast<double>(paths) / seconds : 0.0;
  PrintCount(out, "paths/second", static_cast<std::uint64_t>(rate));
}

}  // namespace

void PrintCount(std::ostream& out, const std::string& label,
                std::uint64_t count) {
  out << Row(label, Grouped(count)) << "\n";
}

void PrintCounts(std::ostream& out, const Scan::VerdictCounts& counts,
                 const DU::ShadowingCalculator& calculator, double seconds) {
  const std::uint64_t paths = counts.Paths();
  const std::uint64_t shadowed = counts.Shadowed();
  PrintCount(out, "paths", paths);
  out << Row("shadowed", Grouped(shadowed)) << Percent(shadowed, paths) << "\n";
  for (const auto component : DU::kShadowingComponents) {
    const std::string label = std::string("  ") + DU::NameOf(component);
    if (!calculator.IsInfoLoaded(component)) {
      out << Row(label, "not loaded") << "\n";
      continue;
    }
    if (calculator.GetHardware().HasNothingToTest(component)) {
      out << Row(label, "nothing to test") << "\n";
      continue;
    }
    const std::uint64_t count = counts.Of(component);
    out << Row(label, Grouped(count)) << Percent(count, paths) << "\n";
  }
  PrintTime(out, paths, seconds);
}

void PrintPaths(std::ostream& out, std::uint64_t paths, double seconds) {
  PrintCount(out, "paths", paths);
  PrintTime(out, paths, seconds);
}

}  // namespace ZARN::App
