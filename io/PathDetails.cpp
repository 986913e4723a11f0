#include "io/PathDetails.hpp"

#include <algorithm>

namespace ZARN::IO {
namespace {

bool Need(const std::vector<const PairColumn*>& columns, eNeed need) {
  return std::any_of(columns.begin(), columns.end(),
                     [=](const auto* column) { return column->need == need; });
}

std::string BlockingItem(const DU::ComponentExplanation& component) {
  for (const DU::ShadowingFinding& finding : component.findings) {
    if (!finding.test.IsBlocking()) continue;
    return finding.item.has_value() ? DU::NameOf(*finding.item) : "";
  }
  return "";
}

}  // namespace

DetailFinder::DetailFinder(const DU::ShadowingCalculator& calculator,
                           const std::vector<const PairColumn*>& columns)
    : calculator_(calculator),
      needsCritical_(Need(columns, eNeed::kCriticalTolerances)),
      needsItem_(Need(columns, eNeed::kItem)) {}

void DetailFinder::Find(const DU::LightPath& path, DU::eShadowingComponent by,
                        PathDetails& details) const {
  if (needsCritical_) {
    details.critical = calculator_.FindCriticalTolerances(path);
  }
  if (!needsItem_) return;
  details.item = by == DU::eShadowingComponent::kNone
                     ? ""
                     : BlockingItem(calculator_.Explain(path, by));
}

}  // namespace ZARN::IO
