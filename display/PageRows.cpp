#include "display/PageRows.hpp"

#include <limits>

namespace ZARN::Display {
namespace {

constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();

void AppendNoPath(PathColumns& columns) {
  columns.angles.push_back(kNoNumber);
  columns.items.push_back(0);
  columns.limits.push_back(kNoNumber);
  columns.limitBy.push_back(0);
}

}  // namespace

void PathColumns::Clear() {
  angles.clear();
  items.clear();
  limits.clear();
  limitBy.clear();
}

void PathDetailsForPage::AppendRow(DU::LightPathCalculator& lightPath,
                                   std::size_t event, const TVector3& position,
                                   const std::vector<TVector3>& pmts,
                                   const DU::eVerdict* verdicts,
                                   DU::eLight kind,
                                   const std::function<void()>& checkForStop,
                                   PathColumns& columns,
                                   std::vector<StoredPath>& stored) const {
  constexpr std::size_t kPathsBetweenChecks = 1024;
  for (std::size_t pmt = 0; pmt < pmts.size(); ++pmt) {
    if (checkForStop && pmt % kPathsBetweenChecks == 0) checkForStop();
    if (!DU::HasPath(verdicts[pmt])) {
      AppendNoPath(columns);
      continue;
    }
    if (kind == DU::eLight::kDirect) {
      lightPath.CalcByPosition(position, pmts[pmt]);
    } else {
      lightPath.CalcReflectionByPosition(position, pmts[pmt]);
    }
    AppendPath(lightPath.GetLightPath(), verdicts[pmt], columns);
    const PathPoints exact = PointsOf(lightPath.GetLightPath());
    const double angle = columns.angles.back();
    const PathPoints traced =
        TracePath(lightPath.GetMedia(), position, pmts[pmt], angle, kind);
    if (!AreSame(exact, traced, lightPath.GetGroupIndices())) {
      stored.push_back({event, pmt, kind, exact});
    }
  }
}

void PathDetailsForPage::AppendPath(const DU::LightPath& path,
                                    DU::eVerdict verdict,
                                    PathColumns& columns) const {
  columns.angles.push_back(static_cast<float>(LaunchAngle(path)));
  DU::eShadowingComponent by = DU::ComponentOf(verdict);
  if (by == DU::eShadowingComponent::kNone) {
    const DU::CriticalTolerances critical =
        shadowing_.FindCriticalTolerances(path);
    by = critical.By();
    columns.items.push_back(0);
    columns.limits.push_back(static_cast<float>(critical.Smallest()));
  } else {
    const auto test = shadowing_.FindBlockingTest(path, by);
    columns.items.push_back(test.has_value() ? items_.NumberOf(*test)
                                             : std::uint16_t(0));
    columns.limits.push_back(
        static_cast<float>(shadowing_.FindCriticalTolerance(path, by)));
  }
  columns.limitBy.push_back(static_cast<std::uint8_t>(by));
}

}  // namespace ZARN::Display
