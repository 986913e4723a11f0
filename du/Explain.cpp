#include <cmath>
#include <optional>
#include <vector>

#include "du/ShadowingCalculator.hpp"
#include "du/ShadowingExplanation.hpp"
#include "du/fast/NearestHardware.hpp"

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

/// The tests that decide, in the order of the formula.
class Findings {
 public:
  void Add(const ShadowingTest& test) {
    if (tests_.empty() || tests_.back().segment != test.segment) {
      tests_.push_back(test);
    } else if (DecidesBefore(test, tests_.back())) {
      tests_.back() = test;
    }
  }
  const std::vector<ShadowingTest>& Tests() const { return tests_; }

 private:
  std::vector<ShadowingTest> tests_;
};

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

  Findings findings;
  Parts.VisitTests(component, SegmentsOf(path, ShapeOfType(path.LightPathType)),
                   [&](const ShadowingTest& test) { findings.Add(test); });
  for (const ShadowingTest& test : findings.Tests()) {
    explanation.findings.push_back(
        {test, ItemOf(Parts, test.rule, test.position)});
  }
  return explanation;
}

std::optional<ShadowingTest> ShadowingCalculator::FindBlockingTest(
    const LightPath& path, eShadowingComponent component) const {
  if (!Parts.IsReady(component)) return std::nullopt;
  Findings findings;
  Parts.VisitTests(
      component, SegmentsOf(path, ShapeOfType(path.LightPathType)),
      [&](const ShadowingTest& test) { findings.Add(test); },
      FindNearestHardware());
  for (const ShadowingTest& test : findings.Tests()) {
    if (test.IsBlocking()) return test;
  }
  return std::nullopt;
}

}  // namespace ZARN::DU
