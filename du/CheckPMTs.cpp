#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "du/CheckTables.hpp"
#include "du/tables/Duplicates.hpp"
#include "du/tables/FindingText.hpp"
#include "du/tables/TableCheck.hpp"
#include "du/tables/Vessel.hpp"

namespace ZARN::DU {
namespace {

/// PMTs are in the water around the vessel, not farther from its centre than
/// this many outer radii. In the reference detector it is 1.4.
constexpr double kFarthestPMT = 10.0;

/// Tells of PMTs; those with the same problem in one finding.
class PMTCheck {
 public:
  PMTCheck(const std::vector<std::string>& names,
           const std::vector<TVector3>& positions)
      : names_(names), positions_(positions) {}

  void TellWhere(const std::string& problem,
                 const std::function<bool(const TVector3&)>& isWrong,
                 const std::string& remedy) {
    std::size_t first = positions_.size();
    std::size_t count = 0;
    for (std::size_t i = 0; i < positions_.size(); ++i) {
      if (!isWrong(positions_[i])) continue;
      first = std::min(first, i);
      ++count;
    }
    if (count > 0) Tell(first, problem + AndMore(count - 1), remedy);
  }

  void TellDuplicates() {
    const auto found = FindDuplicates(positions_);
    if (!found.has_value()) return;
    Tell(found->second,
         "the PMT has the position of " + names_[found->first] +
             AndMore(found->others),
         "write each PMT once");
  }

  std::vector<TableFinding> TakeFindings() { return std::move(findings_); }

 private:
  void Tell(std::size_t pmt, const std::string& problem,
            const std::string& remedy) {
    findings_.push_back({eSeverity::kWarning, eShadowingComponent::kNone, "PMT",
                         names_[pmt], "", "", problem, TextOf(positions_[pmt]),
                         remedy});
  }

  const std::vector<std::string>& names_;
  const std::vector<TVector3>& positions_;
  std::vector<TableFinding> findings_;
};

bool IsFinitePlace(const TVector3& position) {
  return std::isfinite(position.Mag2());
}

}  // namespace

std::vector<TableFinding> CheckPMTs(const TableSet& tables,
                                    const std::vector<std::string>& names,
                                    const std::vector<TVector3>& positions) {
  PMTCheck check(names, positions);
  check.TellWhere(
      "the position is not finite",
      [](const TVector3& pmt) { return !IsFinitePlace(pmt); },
      "write finite numbers in mm");
  const auto vessel = SoundVessel(TableCheck(tables));
  if (!vessel.has_value()) {
    check.TellDuplicates();
    return check.TakeFindings();
  }
  const std::string radius = TextOf(vessel->outer) + " mm";
  const bool areInMetres =
      !positions.empty() &&
      std::all_of(positions.begin(), positions.end(), [&](const auto& pmt) {
        return pmt.Mag() < kLooksLikeMetres * vessel->outer;
      });
  if (areInMetres) {
    check.TellWhere("the position looks like m beside a vessel of " + radius,
                    IsFinitePlace, "lengths are in mm");
    return check.TakeFindings();
  }
  check.TellDuplicates();
  check.TellWhere(
      "the PMT is inside the vessel of " + radius,
      [&](const TVector3& pmt) { return pmt.Mag() < vessel->outer; },
      "PMTs are in the water around the vessel: are its radii right?");
  check.TellWhere(
      "the PMT is far from the vessel of " + radius,
      [&](const TVector3& pmt) {
        return IsFinitePlace(pmt) && pmt.Mag() > kFarthestPMT * vessel->outer;
      },
      "lengths are in mm");
  return check.TakeFindings();
}

}  // namespace ZARN::DU
