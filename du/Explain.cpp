#include <cmath>

#include "du/ShadowingCalculator.hpp"
#include "du/ShadowingExplanation.hpp"

namespace ZARN::DU {
namespace {

using eState = ComponentExplanation::eState;

eState StateOf(const Hardware& hardware, eShadowingComponent component) {
  if (!hardware.IsInfoLoaded(component)) return eState::kOff;
  return hardware.IsReady(component) && !hardware.HasNothingToTest(component)
             ? eState::kOn
             : eState::kNothingToTest;
}

/// Whether a test decides before another one of the same rule.
bool DecidesBefore(const ShadowingTest& a, const ShadowingTest& b) {
  if (a.IsBlocking() != b.IsBlocking()) return a.IsBlocking();
  return a.quantity < b.quantity ||
         (std::isnan(b.quantity) && !std::isnan(a.quantity));
}

std::vector<WaterSegment> ListSegments(const LightPath& path) {
  const WaterSegments segments =
      SegmentsOf(path, ShapeOfType(path.LightPathType));
  switch (segments.kind) {
    case ePathKind::kOneCrossing:
    case ePathKind::kUnknown:
      return {segments.first};
    case ePathKind::kTwoCrossings:
    case ePathKind::kWater:
      return {segments.first, segments.second};
    case ePathKind::kUninitialised:
    case ePathKind::kMisspeltUninitialised:
      break;
  }
  return {};
}

}  // namespace

ShadowingExplanation ShadowingCalculator::Explain(const LightPath& path) const {
  ShadowingExplanation all;
  all.path = path;
  all.segments = ListSegments(path);
  for (std::size_t i = 0; i < kNumberOfComponents; ++i) {
    all.components[i] = Explain(path, kShadowingComponents[i]);
    if (all.by == eShadowingComponent::kNone &&
        all.components[i].IsBlocking()) {
      all.by = kShadowingComponents[i];
    }
  }
  return all;
}

ComponentExplanation ShadowingCalculator::Explain(
    const LightPath& path, eShadowingComponent component) const {
  ComponentExplanation explanation;
  explanation.component = component;
  explanation.state = StateOf(Parts, component);
  if (explanation.state != eState::kOn) return explanation;

  auto& findings = explanation.findings;
  Parts.VisitTests(
      component, SegmentsOf(path, ShapeOfType(path.LightPathType)),
      [&](const ShadowingTest& test) {
        if (findings.empty() || findings.back().test.segment != test.segment) {
          findings.push_back({test, std::nullopt});
        } else if (DecidesBefore(test, findings.back().test)) {
          findings.back().test = test;
        }
      });
  for (ShadowingFinding& finding : findings) {
    finding.item = ItemOf(Parts, finding.test.rule, finding.test.position);
  }
  return explanation;
}

}  // namespace ZARN::DU
