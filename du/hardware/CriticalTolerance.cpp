#include "du/hardware/CriticalTolerance.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "du/geometry/Constants.hpp"
#include "du/geometry/IeeeQuotient.hpp"
#include "du/geometry/LeastDouble.hpp"
#include "du/hardware/AVHDRopeShadowing.hpp"

namespace ZARN::DU {
namespace {

using eComponent = eShadowingComponent;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr ToleranceRange kAllTolerances = {
    std::numeric_limits<double>::lowest(), std::numeric_limits<double>::max()};

/// The limit of a rule at a tolerance.
double LimitAt(const Hardware& hardware, eComponent component,
               eShadowingRule rule, double tolerance) {
  switch (rule) {
    case eShadowingRule::kSurfacePoint:
      return AVHDRopeReach(hardware.AVHDRopes, tolerance);
    case eShadowingRule::kNCDAnchor:
      return NCDAnchorReach(hardware.NCDAnchors, tolerance);
    default:
      return component == eComponent::kAVHDRope
                 ? AVHDRopeAngleTolerance(hardware.AVHDRopes, tolerance)
                 : SupportRopeAngleTolerance(hardware.SupportRopes, tolerance);
  }
}

/// The tolerance at which the limit of a rule is @p quantity, but for rounding.
double ToleranceAbout(const Hardware& hardware, eComponent component,
                      eShadowingRule rule, double quantity) {
  const AVHDRopeModel& ropes = hardware.AVHDRopes;
  const SupportRopeModel& supports = hardware.SupportRopes;
  switch (rule) {
    case eShadowingRule::kSurfacePoint:
      return quantity - ropes.AVHDRopeRadius;
    case eShadowingRule::kNCDAnchor:
      return quantity - hardware.NCDAnchors.NCDAnchorHalfZ;
    default:
      return component == eComponent::kAVHDRope
                 ? quantity * ropes.AVHDRopeEndPoints.front().Mag() -
                       ropes.AVHDRopeRadius
                 : quantity * supports.SupportRopePositions.front().Mag() -
                       supports.SupportRopeRadius;
  }
}

/// Ropes and anchors: only the limits depend on the tolerance, and each rule
/// has one limit for all its items, so its smallest quantity decides.
double CriticalByQuantities(const Hardware& hardware, eComponent component,
                            const WaterSegments& path) {
  constexpr std::size_t kRules =
      static_cast<std::size_t>(eShadowingRule::kOffPlateBand) + 1;
  std::array<double, kRules> least;
  least.fill(kInfinity);
  hardware.VisitTests(component, path, [&](const ShadowingTest& test) {
    double& ofRule = least[static_cast<std::size_t>(test.rule)];
    if (!IsGate(test.rule) && test.quantity < ofRule) ofRule = test.quantity;
  });
  double critical = kInfinity;
  for (const eShadowingRule rule :
       {eShadowingRule::kSurfacePoint, eShadowingRule::kLeg,
        eShadowingRule::kSupportRope, eShadowingRule::kNCDAnchor}) {
    const double quantity = least[static_cast<std::size_t>(rule)];
    if (quantity == kInfinity) continue;
    critical = std::min(
        critical, ToleranceOfQuantity(hardware, component, rule, quantity));
  }
  return critical;
}

/// The tolerance at which a plate begins to block a crossing, but for rounding.
double ToleranceAbout(const Hardware& hardware, const TVector3& plate,
                      const TVector3& point) {
  const BellyPlateModel& plates = hardware.BellyPlates;
  // Half a chord in azimuth, from the angle in space at the plate's height.
  const double chord =
      IeeeQuotient(std::sin(0.5 * BellyPlateAngle(point, plate)) * plate.Mag(),
                   plate.Perp());
  const double azimuth = 2.0 * std::asin(std::min(1.0, chord));
  return std::max(std::abs(point.Z()) - plates.BellyPlateHalfHeight,
                  (azimuth - 0.5 * BellyPlateWidth(plates, plate)) *
                      hardware.OuterAVRadius);
}

double CriticalOfBellyPlates(const Hardware& hardware,
                             const WaterSegments& path) {
  const BellyPlateModel& plates = hardware.BellyPlates;
  double guess = kInfinity;
  for (const TVector3& plate : plates.BellyPlatePositions) {
    guess = std::min(guess, ToleranceAbout(hardware, plate, path.first.point));
    if (path.kind == ePathKind::kTwoCrossings) {
      guess =
          std::min(guess, ToleranceAbout(hardware, plate, path.second.point));
    }
  }
  const ToleranceRange range =
      MonotonicTolerances(hardware, eComponent::kBellyPlate);
  return LeastDouble(range.lowest, range.highest, guess, [&](double tolerance) {
    return CheckForBellyPlateShadowing(
        plates, tolerance, hardware.OuterAVRadius, path, eDiagnostics::kSilent);
  });
}

}  // namespace

eComponent CriticalTolerances::By() const {
  const auto* const least = std::min_element(of.begin(), of.end());
  return *least < kInfinity ? kShadowingComponents[static_cast<std::size_t>(
                                  least - of.begin())]
                            : eComponent::kNone;
}

double CriticalTolerances::Smallest() const {
  return *std::min_element(of.begin(), of.end());
}

eComponent CriticalTolerances::VerdictAt(double tolerance) const {
  for (const eComponent component : kShadowingComponents) {
    if (Of(component) <= tolerance) return component;
  }
  return eComponent::kNone;
}

double ToleranceOfQuantity(const Hardware& hardware, eComponent component,
                           eShadowingRule rule, double quantity) {
  return LeastDouble(kAllTolerances.lowest, kAllTolerances.highest,
                     ToleranceAbout(hardware, component, rule, quantity),
                     [&](double tolerance) {
                       return LimitAt(hardware, component, rule, tolerance) >
                              quantity;
                     });
}

ToleranceRange MonotonicTolerances(const Hardware& hardware,
                                   eComponent component) {
  if (component != eComponent::kBellyPlate) return kAllTolerances;
  ToleranceRange range = kAllTolerances;
  for (const TVector3& plate : hardware.BellyPlates.BellyPlatePositions) {
    const double half = 0.5 * BellyPlateWidth(hardware.BellyPlates, plate);
    // A plate that is not a number never blocks.
    const double lowest = -half * hardware.OuterAVRadius;
    const double highest = (kPi - half) * hardware.OuterAVRadius;
    if (lowest > range.lowest) range.lowest = lowest;
    if (highest < range.highest) range.highest = highest;
  }
  return range;
}

double CriticalTolerance(const Hardware& hardware, eComponent component,
                         const WaterSegments& path) {
  if (!hardware.IsReady(component)) return kInfinity;
  switch (component) {
    case eComponent::kAVHDRope:
    case eComponent::kSupportRope:
    case eComponent::kNCDAnchor:
      return CriticalByQuantities(hardware, component, path);
    case eComponent::kBellyPlate:
      return CriticalOfBellyPlates(hardware, path);
    case eComponent::kAVPipe:
    case eComponent::kNeckBoss:
      return hardware.IsBlockedBy(component, path, eDiagnostics::kSilent)
                 ? -kInfinity
                 : kInfinity;
    case eComponent::kNone:
      break;
  }
  return kInfinity;
}

}  // namespace ZARN::DU
