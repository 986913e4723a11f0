#include "io/PathDetails.hpp"

#include <algorithm>

namespace ZARN::IO {
namespace {

bool Need(const std::vector<const PairColumn*>& columns, eNeed need) {
  return std::any_of(columns.begin(), columns.end(),
                     [=](const auto* column) { return column->need == need; });
}

std::string BlockingItem(const DU::ShadowingCalculator& calculator,
                         const DU::LightPath& path,
                         DU::eShadowingComponent by) {
  if (by == DU::eShadowingComponent::kNone) return "";
  const auto test = calculator.FindBlockingTest(path, by);
  if (!test.has_value()) return "";
  const auto item =
      DU::ItemOf(calculator.GetHardware(), test->rule, test->position);
  return item.has_value() ? DU::NameOf(*item) : "";
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
  if (needsItem_) details.item = BlockingItem(calculator_, path, by);
}

}  // namespace ZARN::IO
