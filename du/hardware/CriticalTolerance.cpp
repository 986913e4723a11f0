#include "du/hardware/CriticalTolerance.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "du/geometry/Constants.hpp"
#include "du/geometry/IeeeQuotient.hpp"
#include "du/geometry/LeastDouble.hpp"
#include "du/geometry/OrdinaryLength.hpp"
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
                            const WaterSegments& path,
                            const NearestItems* nearest) {
  constexpr std::size_t kRules =
      static_cast<std::size_t>(eShadowingRule::kOffPlateBand) + 1;
  std::array<double, kRules> least;
  least.fill(kInfinity);
  const auto lessen = [&least](const ShadowingTest& test) {
    double& ofRule = least[static_cast<std::size_t>(test.rule)];
    if (!IsGate(test.rule) && test.quantity < ofRule) ofRule = test.quantity;
  };
  hardware.VisitTests(component, path, lessen, nearest);
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

/// A plate beside a crossing.
class PlateAtCrossing {
 public:
  PlateAtCrossing(const TVector3& plate, const BellyPlateFrame& frame,
                  const TVector3& point)
      : plate_(plate),
        frame_(frame),
        z_(point.Z()),
        alpha_(BellyPlateAngle(point, plate)) {
    // Half a chord in azimuth, from the angle in space at the plate's height.
    const double steepness = IeeeQuotient(plate.Mag(), plate.Perp());
    const double chord = std::sin(0.5 * alpha_) * steepness;
    azimuth_ = 2.0 * std::asin(std::min(1.0, chord));
    margin_ = HasOrdinaryLength(plate) ? kMargin * steepness : kInfinity;
  }

  /// The tolerance at which the plate begins to block, but for rounding.
  double ToleranceAbout(double halfHeight, double outerAVRadius) const {
    return std::max(std::abs(z_) - halfHeight,
                    (azimuth_ - 0.5 * frame_.width) * outerAVRadius);
  }

  bool IsBlocking(const BellyPlateBand& band) const {
    if (!band.Holds(z_)) return false;
    const double halfWidth = 0.5 * frame_.width + band.dphi;
    if (halfWidth > azimuth_ + margin_) return true;
    if (halfWidth < azimuth_ - margin_) return false;
    return BellyPlateEdges(plate_, frame_, band).LimitOf(alpha_) > alpha_;
  }

 private:
  /// Farther than this from an edge, in azimuth, the formula is not needed,
  /// rad, for a plate at z = 0. Two angles that it compares have errors of at
  /// most 2^-49 in their cosines, together. The cosines of azimuths that differ
  /// by d differ by d^2 / 2 or more, so they are the other way round only for d
  /// below 9e-8. For other plates the cosines differ by less: by the square of
  /// the steepness, the plate's distance from the centre over that from the
  /// axis. The error of the azimuth, at most 6e-8 near half a turn, is covered,
  /// too.
  static constexpr double kMargin = 1e-6;

  const TVector3& plate_;
  const BellyPlateFrame& frame_;
  double z_;
  double alpha_;
  double azimuth_;  ///< from the plate's centre, 0 to pi
  double margin_;
};

/// The plates, beside all crossings, of which one begins to block first.
std::vector<PlateAtCrossing> PlatesAtCrossings(
    const Hardware& hardware, const BellyPlateOutlines& outlines,
    const WaterSegments& path, const NearestItems* nearest) {
  const auto& plates = hardware.BellyPlates.BellyPlatePositions;
  std::vector<PlateAtCrossing> found;
  found.reserve(nearest == nullptr ? 2 * plates.size() : 2);
  WalkPlateCrossings(path, [&](const TVector3& point, eWaterSegment) {
    const auto add = [&](std::size_t i) {
      found.emplace_back(plates[i], outlines.frames[i], point);
    };
    if (nearest != nullptr) {
      nearest->ForEach(eShadowingRule::kBellyPlate, point, add);
    } else {
      for (std::size_t i = 0; i < plates.size(); ++i) add(i);
    }
    return false;
  });
  return found;
}

double CriticalOfBellyPlates(const Hardware& hardware,
                             const BellyPlateOutlines& outlines,
                             const WaterSegments& path,
                             const NearestItems* nearest) {
  const BellyPlateModel& model = hardware.BellyPlates;
  const double radius = hardware.OuterAVRadius;
  const auto plates = PlatesAtCrossings(hardware, outlines, path, nearest);
  double guess = kInfinity;
  for (const PlateAtCrossing& plate : plates) {
    guess = std::min(guess,
                     plate.ToleranceAbout(model.BellyPlateHalfHeight, radius));
  }
  return LeastDouble(outlines.range.lowest, outlines.range.highest, guess,
                     [&](double tolerance) {
                       const BellyPlateBand band(model, tolerance, radius);
                       return std::any_of(
                           plates.begin(), plates.end(),
                           [&band](const PlateAtCrossing& plate) {
                             return plate.IsBlocking(band);
                           });
                     });
}

double CriticalOf(const Hardware& hardware, eComponent component,
                  const WaterSegments& path, const NearestItems* nearest,
                  const BellyPlateOutlines* outlines) {
  if (!hardware.IsReady(component)) return kInfinity;
  switch (component) {
    case eComponent::kAVHDRope:
    case eComponent::kSupportRope:
    case eComponent::kNCDAnchor:
      return CriticalByQuantities(hardware, component, path, nearest);
    case eComponent::kBellyPlate:
      return outlines != nullptr
                 ? CriticalOfBellyPlates(hardware, *outlines, path, nearest)
                 : CriticalOfBellyPlates(hardware, BellyPlateOutlines(hardware),
                                         path, nearest);
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

BellyPlateOutlines::BellyPlateOutlines(const Hardware& hardware)
    : range(kAllTolerances) {
  const double radius = hardware.OuterAVRadius;
  for (const TVector3& plate : hardware.BellyPlates.BellyPlatePositions) {
    frames.emplace_back(plate, hardware.BellyPlates.BellyPlateHalfHeight,
                        eDiagnostics::kSilent);
    const double half = 0.5 * frames.back().width;
    // A plate that is not a number never blocks.
    const double lowest = -half * radius;
    const double highest = (kPi - half) * radius;
    if (lowest > range.lowest) range.lowest = lowest;
    if (highest < range.highest) range.highest = highest;
  }
}

ToleranceRange MonotonicTolerances(const Hardware& hardware,
                                   eComponent component) {
  return component == eComponent::kBellyPlate
             ? BellyPlateOutlines(hardware).range
             : kAllTolerances;
}

double CriticalTolerance(const Hardware& hardware, eComponent component,
                         const WaterSegments& path) {
  return CriticalOf(hardware, component, path, nullptr, nullptr);
}

double CriticalTolerance(const Hardware& hardware, eComponent component,
                         const WaterSegments& path, const NearestItems& nearest,
                         const BellyPlateOutlines& outlines) {
  return CriticalOf(hardware, component, path, &nearest, &outlines);
}

}  // namespace ZARN::DU
