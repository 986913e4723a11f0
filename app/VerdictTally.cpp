#include "app/VerdictTally.hpp"

#include <iomanip>
#include <numeric>
#include <ostream>
#include <sstream>

#include "app/Numbers.hpp"

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

}  // namespace

void PrintCount(std::ostream& out, const std::string& label,
                std::uint64_t count) {
  out << Row(label, Grouped(count)) << "\n";
}

std::uint64_t VerdictTally::Paths() const {
  return std::accumulate(counts_.begin(), counts_.end(), std::uint64_t{0});
}

std::uint64_t VerdictTally::Shadowed() const {
  const auto none = static_cast<std::size_t>(DU::eShadowingComponent::kNone);
  return Paths() - counts_[none];
}

DU::eShadowingComponent VerdictTally::MostFrequent() const {
  auto most = DU::eShadowingComponent::kNone;
  std::uint64_t highest = 0;
  for (const auto component : DU::kShadowingComponents) {
    const std::uint64_t count = counts_[static_cast<std::size_t>(component)];
    if (count > highest) {
      most = component;
      highest = count;
    }
  }
  return most;
}

void VerdictTally::Print(std::ostream& out,
                         const DU::ShadowingCalculator& calculator,
                         double seconds) const {
  const std::uint64_t paths = Paths();
  const std::uint64_t shadowed = Shadowed();
  out << Row("paths", Grouped(paths)) << "\n"
      << Row("shadowed", Grouped(shadowed)) << Percent(shadowed, paths) << "\n";
  for (const auto component : DU::kShadowingComponents) {
    const std::string label = std::string("  ") + DU::NameOf(component);
    if (!calculator.IsInfoLoaded(component)) {
      out << Row(label, "not loaded") << "\n";
      continue;
    }
    const std::uint64_t count = counts_[static_cast<std::size_t>(component)];
    out << Row(label, Grouped(count)) << Percent(count, paths) << "\n";
  }
  std::ostringstream time;
  time << std::fixed << std::setprecision(3) << seconds;
  out << Row("seconds", time.str()) << "\n";
  const double rate = seconds > 0 ? static_cast<double>(paths) / seconds : 0.0;
  out << Row("paths/second", Grouped(static_cast<unsigned long long>(rate)))
      << "\n";
}

}  // namespace ZARN::App
