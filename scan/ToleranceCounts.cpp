#include "scan/ToleranceCounts.hpp"

#include <algorithm>
#include <utility>

namespace ZARN::Scan {
namespace {

bool IsMonotonic(const DU::ShadowingCalculator& shadowing, double tolerance) {
  return std::all_of(
      DU::kShadowingComponents.begin(), DU::kShadowingComponents.end(),
      [&](DU::eShadowingComponent component) {
        return shadowing.GetMonotonicTolerances(component).Holds(tolerance);
      });
}

}  // namespace

ToleranceCounts::ToleranceCounts(const DU::ShadowingCalculator& shadowing,
                                 const DU::LightPathCalculator& lightPath,
                                 std::vector<TVector3> pmts, Settings settings)
    : shadowing_(shadowing),
      pmts_(std::move(pmts)),
      settings_(std::move(settings)),
      plain_(Tolerances().size()),
      slots_(settings_.slots),
      all_(Tolerances().size()) {
  for (std::size_t i = 0; i < plain_.size(); ++i) {
    if (IsMonotonic(shadowing, Tolerances()[i])) continue;
    plain_[i].emplace(shadowing).SetAllGeometryTolerances(Tolerances()[i]);
  }
  for (Slot& slot : slots_) slot.lightPath = lightPath;
  if (settings_.withPMTCounts) perPMT_.resize(pmts_.size() * all_.size());
}

void ToleranceCounts::Judge(const RowBlock& block) {
  // Enough that threads hardly ever wait for each other.
  constexpr std::size_t kPathsToMove = 256;
  Slot& slot = slots_[block.slot];
  slot.counts.assign(block.events.size() * all_.size(), {});
  for (std::size_t event = 0; event < block.events.size(); ++event) {
    const DU::eVerdict* const direct = block.Direct(event);
    const DU::eVerdict* const reflected = block.Reflected(event);
    VerdictCounts* const counts = slot.counts.data() + event * all_.size();
    for (std::size_t i = 0; i < block.pmts; ++i) {
      const std::size_t pmt = block.firstPMT + i;
      if (settings_.checkForStop != nullptr) settings_.checkForStop();
      if (DU::HasPath(direct[i])) {
        slot.lightPath.CalcByPosition(block.events[event], pmts_[pmt]);
        AddPath(slot, pmt, counts);
      }
      if (reflected != nullptr && DU::HasPath(reflected[i])) {
        slot.lightPath.CalcReflectionByPosition(block.events[event],
                                                pmts_[pmt]);
        AddPath(slot, pmt, counts);
      }
      if (slot.pmts.size() >= kPathsToMove) MoveToPMTs(slot);
    }
  }
  MoveToPMTs(slot);
  const std::lock_guard<std::mutex> lock(guard_);
  for (std::size_t i = 0; i < slot.counts.size(); ++i) {
    all_[i % all_.size()] += slot.counts[i];
  }
}

void ToleranceCounts::AddPath(Slot& slot, std::size_t pmt,
                              VerdictCounts* counts) const {
  const DU::LightPath& path = slot.lightPath.GetLightPath();
  const DU::CriticalTolerances critical =
      shadowing_.FindCriticalTolerances(path);
  for (std::size_t i = 0; i < all_.size(); ++i) {
    const DU::eShadowingComponent verdict =
        plain_[i].has_value() ? plain_[i]->FindShadowing(path)
                              : critical.VerdictAt(Tolerances()[i]);
    counts[i].Add(verdict);
    if (settings_.withPMTCounts) slot.verdicts.push_back(verdict);
  }
  if (settings_.withPMTCounts) slot.pmts.push_back(pmt);
}

/// Add the verdicts of the last paths to the counts of their PMTs.
void ToleranceCounts::MoveToPMTs(Slot& slot) {
  const std::lock_guard<std::mutex> lock(guard_);
  auto verdict = slot.verdicts.begin();
  for (const std::size_t pmt : slot.pmts) {
    VerdictCounts* const counts = perPMT_.data() + pmt * all_.size();
    for (std::size_t i = 0; i < all_.size(); ++i) counts[i].Add(*verdict++);
  }
  slot.verdicts.clear();
  slot.pmts.clear();
}

}  // namespace ZARN::Scan
