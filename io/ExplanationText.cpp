#include "io/ExplanationText.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>

#include "io/LightPathColumns.hpp"

namespace ZARN::IO {
namespace {

using DU::eShadowingRule;
using DU::eWaterSegment;
using eState = DU::ComponentExplanation::eState;

std::string Number(double value) {
  constexpr int kDigits = 9;
  std::array<char, 32> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                 std::chars_format::general, kDigits)
                       .ptr;
  return {text.data(), end};
}

std::string Vector(const TVector3& v) {
  return "(" + Number(v.X()) + ", " + Number(v.Y()) + ", " + Number(v.Z()) +
         ")";
}

std::string WithUnit(double value, eShadowingRule rule) {
  return Number(value) + " " + DU::UnitOf(rule);
}

/// A test in words: what was compared, and with what.
std::string Comparison(const DU::ShadowingTest& test, const std::string& item) {
  const std::string quantity = WithUnit(test.quantity, test.rule);
  const std::string limit = WithUnit(test.limit, test.rule);
  switch (test.rule) {
    case eShadowingRule::kSurfacePoint:
      return "nearest surface point " + quantity +
             " from the crossing, limit " + limit + " (" + item + ")";
    case eShadowingRule::kLeg:
      return "nearest leg " + quantity + " from the light at its cylinder, " +
             "limit " + limit + " (" + item + ")";
    case eShadowingRule::kSupportRope:
      return "nearest support rope " + quantity +
             " from the light at its cylinder, limit " + limit + " (" + item +
             ")";
    case eShadowingRule::kBellyPlate:
      return "nearest plate centre " + quantity +
             " from the crossing in azimuth, limit " + limit + " (" + item +
             ")";
    case eShadowingRule::kNCDAnchor:
      return "nearest anchor " + quantity + " from the crossing, limit " +
             limit + " (" + item + ")";
    case eShadowingRule::kAVPipeBand:
      return "azimuth " + quantity + ", band from " +
             WithUnit(test.lowerLimit, test.rule) + " to " + limit;
    case eShadowingRule::kNeckBossCap:
      return "polar angle " + quantity + ", limit " + limit;
    case eShadowingRule::kBelowRopes:
      return "the crossing at z = " + quantity +
             " is not above the feet of the ropes at z = " + limit;
    case eShadowingRule::kBeyondRopes:
      return "the light meets the rope cylinder " + quantity +
             " above or below z = 0, beyond the ropes, limit " + limit;
    case eShadowingRule::kInsideRopeCylinder:
      return "the farther end is " + quantity +
             " from the axis, not outside the rope cylinder of " + limit;
    case eShadowingRule::kInsideLegCylinder:
      return "the nearer end is " + quantity +
             " from the axis, not outside the legs' cylinder of " + limit;
    case eShadowingRule::kEndsApart:
      return "the azimuths of the ends are " + quantity +
             " apart, too far for this test, limit " + limit;
    case eShadowingRule::kNoLegs:
      return "there are no hold-down ropes to test";
    case eShadowingRule::kOffPlateBand:
      return "the crossing is " + quantity +
             " above or below z = 0, outside the plates' band of " + limit;
  }
  return "";
}

std::string PathLines(const DU::LightPathCalculator& light) {
  const DU::LightPath& path = light.GetLightPath();
  const bool isKnown = DU::IsKnownType(path.LightPathType);
  std::string text =
      std::string("path: ") +
      (isKnown ? DU::kLightPathTypeNames[path.LightPathType] : "unknown type") +
      "\n";
  const std::size_t used = VectorsOf(path.LightPathType);
  for (std::size_t i = 0; i < used; ++i) {
    const LightPathVector& vector = kLightPathVectors[i];
    text += std::string("  ") + vector.name + ": " +
            Vector(path.*vector.member) + "\n";
  }
  if (!light.IsRunBegun() || !light.HasPath() || !isKnown) return text;
  text += "  length: " + Number(light.GetLength(DU::eMedium::kInnerAV)) +
          " mm inside the vessel, " +
          Number(light.GetLength(DU::eMedium::kAcrylic)) + " mm in the wall, " +
          Number(light.GetLength(DU::eMedium::kWater)) + " mm in water\n";
  text += "  time of flight: " + Number(light.GetTimeOfFlight()) +
          " ns, angle of incidence: " + Number(light.GetIncidenceAngle()) +
          " rad\n";
  return text;
}

std::string SegmentName(eWaterSegment segment) {
  switch (segment) {
    case eWaterSegment::kFirst:
      return "segment 1";
    case eWaterSegment::kSecond:
      return "segment 2";
    case eWaterSegment::kBoth:
      break;
  }
  return "both ends";
}

std::string ComponentLines(const DU::ComponentExplanation& component) {
  std::string text = std::string(DU::NameOf(component.component)) + ": ";
  switch (component.state) {
    case eState::kOff:
      return text + "off, its tables are missing\n";
    case eState::kNothingToTest:
      return text + "nothing to test\n";
    case eState::kOn:
      break;
  }
  if (component.findings.empty()) {
    return text + "does not test paths of this type\n";
  }
  text += component.IsBlocking() ? "blocks\n" : "clear\n";
  for (const DU::ShadowingFinding& finding : component.findings) {
    const std::string item =
        finding.item.has_value() ? DU::NameOf(*finding.item) : "";
    text += "  " + SegmentName(finding.test.segment) + ": " +
            Comparison(finding.test, item) +
            (finding.test.IsBlocking() ? ": blocks" : ": clear") + "\n";
  }
  return text;
}

}  // namespace

std::string ExplanationText(const DU::LightPathCalculator& light,
                            const DU::ShadowingExplanation& explanation) {
  std::string text = PathLines(light);
  for (std::size_t i = 0; i < explanation.segments.size(); ++i) {
    const DU::WaterSegment& segment = explanation.segments[i];
    text += "segment " + std::to_string(i + 1) + ", in water: from " +
            Vector(segment.point) + " in direction " +
            Vector(segment.direction) + "\n";
  }
  for (const DU::ComponentExplanation& component : explanation.components) {
    text += ComponentLines(component);
  }
  const bool isShadowed = explanation.by != DU::eShadowingComponent::kNone;
  return text + "verdict: " +
         (isShadowed
              ? std::string("shadowed by ") + DU::NameOf(explanation.by) +
                    ", the first in the order of tests that blocks"
              : "not shadowed") +
         "\n";
}

std::string NoPathText(DU::eVerdict verdict) {
  return std::string("no light path: ") + DU::NameOf(verdict) + "\n";
}

}  // namespace ZARN::IO
