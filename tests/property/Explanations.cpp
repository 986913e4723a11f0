#include "tests/property/Explanations.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <ios>
#include <sstream>

#include "du/hardware/CriticalTolerance.hpp"
#include "tests/property/SameBits.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::Testing {
namespace {

using DU::eShadowingComponent;
using Reference::PlainShadowingCalculator;

/// A component of the plain calculator.
struct PlainComponent {
  bool PlainShadowingCalculator::*isLoaded;
  double PlainShadowingCalculator::*tolerance;
  bool (PlainShadowingCalculator::*isBlocking)(DU::LightPathCalculator&);
};

/// In the order of testing.
constexpr std::array<PlainComponent, DU::kNumberOfComponents> kPlain = {{
    {&PlainShadowingCalculator::AVHDRopeInfoLoaded,
     &PlainShadowingCalculator::AVHDRopeTolerance,
     &PlainShadowingCalculator::CheckForAVHDRopeShadowing},
    {&PlainShadowingCalculator::SupportRopeInfoLoaded,
     &PlainShadowingCalculator::SupportRopeTolerance,
     &PlainShadowingCalculator::CheckForSupportRopeShadowing},
    {&PlainShadowingCalculator::BellyPlateInfoLoaded,
     &PlainShadowingCalculator::BellyPlateTolerance,
     &PlainShadowingCalculator::CheckForBellyPlateShadowing},
    {&PlainShadowingCalculator::NCDAnchorInfoLoaded,
     &PlainShadowingCalculator::NCDAnchorTolerance,
     &PlainShadowingCalculator::CheckForNCDAnchorShadowing},
    {&PlainShadowingCalculator::AVPipeInfoLoaded,
     &PlainShadowingCalculator::AVPipeTolerance,
     &PlainShadowingCalculator::CheckForAVPipeShadowing},
    {&PlainShadowingCalculator::NeckBossInfoLoaded,
     &PlainShadowingCalculator::NeckBossTolerance,
     &PlainShadowingCalculator::CheckForNeckBossShadowing},
}};

class Comparison {
 public:
  Comparison(const ExplainedPath& explained,
             const DU::ShadowingCalculator& real,
             PlainShadowingCalculator& plain, DU::LightPathCalculator& path,
             ToleranceTally& tally)
      : explained_(explained),
        real_(real),
        plain_(plain),
        path_(path),
        segments_(DU::SegmentsOf(
            explained.explanation.path,
            DU::ShapeOfType(explained.explanation.path.LightPathType))),
        tally_(tally) {}

  std::string Difference() {
    for (std::size_t i = 0; i < kPlain.size(); ++i) {
      Compare(kPlain[i], explained_.explanation.components[i],
              explained_.critical.of[i]);
      if (!difference_.empty()) break;
    }
    return difference_;
  }

 private:
  void Compare(const PlainComponent& plain,
               const DU::ComponentExplanation& explanation, double critical) {
    component_ = explanation.component;
    const double byAll =
        DU::CriticalTolerance(real_.GetHardware(), component_, segments_);
    if (!AreSame(critical, byAll)) {
      Differ("critical tolerance by all items", byAll);
    }
    const double usual = plain_.*plain.tolerance;
    const bool isBlocking = IsBlocking(plain, usual);
    if (explanation.IsBlocking() != isBlocking) Differ("explanation", usual);
    if (!IsBlockingTest(explanation)) Differ("test that blocks", usual);
    const auto range = real_.GetMonotonicTolerances(component_);
    if (range.Holds(usual) && isBlocking != (critical <= usual)) {
      // Only the edges of plates are ragged.
      if (component_ != eShadowingComponent::kBellyPlate) {
        Differ("critical tolerance and verdict", critical);
      }
      ++tally_.ragged;
      tally_.widest = std::max(tally_.widest, std::abs(critical - usual));
    }
    if (critical == -kInfinity) {
      if (!IsBlocking(plain, range.lowest)) Differ("never clear", critical);
    } else if (critical == kInfinity) {
      if (range.lowest <= range.highest && IsBlocking(plain, range.highest)) {
        Differ("never blocked", critical);
      }
    } else {
      ++tally_.finite[static_cast<std::size_t>(component_) - 1];
      if (!range.Holds(critical)) Differ("out of range", critical);
      if (!IsBlocking(plain, critical)) Differ("clear there", critical);
      if (IsBlocking(plain, std::nextafter(critical, -kInfinity))) {
        Differ("blocked below", critical);
      }
    }
    plain_.*plain.tolerance = usual;
  }

  /// Whether FindBlockingTest finds what the explanation tells.
  bool IsBlockingTest(const DU::ComponentExplanation& explanation) {
    const auto found =
        real_.FindBlockingTest(explained_.explanation.path, component_);
    for (const DU::ShadowingFinding& finding : explanation.findings) {
      const DU::ShadowingTest& test = finding.test;
      if (!test.IsBlocking()) continue;
      return found.has_value() && found->rule == test.rule &&
             found->segment == test.segment &&
             found->position == test.position &&
             AreSame(found->quantity, test.quantity) &&
             AreSame(found->limit, test.limit);
    }
    return !found.has_value();
  }

  bool IsBlocking(const PlainComponent& plain, double tolerance) {
    plain_.*plain.tolerance = tolerance;
    return plain_.*plain.isLoaded && (plain_.*plain.isBlocking)(path_);
  }

  void Differ(const char* what, double tolerance) {
    std::ostringstream text;
    text << DU::NameOf(component_) << ": " << what << ", tolerance "
         << std::hexfloat << tolerance;
    difference_ = text.str();
  }

  const ExplainedPath& explained_;
  const DU::ShadowingCalculator& real_;
  PlainShadowingCalculator& plain_;
  DU::LightPathCalculator& path_;
  DU::WaterSegments segments_;
  ToleranceTally& tally_;
  eShadowingComponent component_ = eShadowingComponent::kNone;
  std::string difference_;
};

}  // namespace

std::string ExplanationDifference(const ExplainedPath& explained,
                                  const DU::ShadowingCalculator& real,
                                  PlainShadowingCalculator& plain,
                                  DU::LightPathCalculator& path,
                                  ToleranceTally& tally) {
  return Comparison(explained, real, plain, path, tally).Difference();
}

}  // namespace ZARN::Testing
