#include <nlohmann/json.hpp>

#include "io/ExplanationText.hpp"
#include "io/LightPathColumns.hpp"

namespace ZARN::IO {
namespace {

using Json = nlohmann::ordered_json;
using DU::eWaterSegment;
using eState = DU::ComponentExplanation::eState;

Json VectorJson(const TVector3& v) { return {v.X(), v.Y(), v.Z()}; }

Json PathJson(const DU::LightPathCalculator& light) {
  const DU::LightPath& path = light.GetLightPath();
  const bool isKnown = DU::IsKnownType(path.LightPathType);
  Json json = {{"type", nullptr}};
  if (isKnown) json["type"] = DU::kLightPathTypeNames[path.LightPathType];
  const std::size_t used = VectorsOf(path.LightPathType);
  for (std::size_t i = 0; i < used; ++i) {
    const LightPathVector& vector = kLightPathVectors[i];
    json[vector.name] = VectorJson(path.*vector.member);
  }
  if (!light.IsRunBegun() || !light.HasPath() || !isKnown) return json;
  json["length_inner_av"] = light.GetLength(DU::eMedium::kInnerAV);
  json["length_acrylic"] = light.GetLength(DU::eMedium::kAcrylic);
  json["length_water"] = light.GetLength(DU::eMedium::kWater);
  json["time_of_flight"] = light.GetTimeOfFlight();
  json["incidence_angle"] = light.GetIncidenceAngle();
  return json;
}

Json ItemJson(const DU::HardwareItem& item) {
  return {{"name", DU::NameOf(item)},
          {"component", DU::NameOf(item.component)},
          {"table", item.table},
          {"index", item.index},
          {"position", item.position},
          {"part", DU::NameOf(item.part)},
          {"is_opposite", item.isOpposite}};
}

Json SegmentsJson(eWaterSegment segment) {
  switch (segment) {
    case eWaterSegment::kFirst:
      return {1};
    case eWaterSegment::kSecond:
      return {2};
    case eWaterSegment::kBoth:
      break;
  }
  return {1, 2};
}

Json FindingJson(const DU::ShadowingFinding& finding) {
  const DU::ShadowingTest& test = finding.test;
  Json json = {{"segments", SegmentsJson(test.segment)},
               {"rule", DU::NameOf(test.rule)},
               {"quantity", test.quantity},
               {"limit", test.limit}};
  if (test.rule == DU::eShadowingRule::kAVPipeBand) {
    json["lower_limit"] = test.lowerLimit;
  }
  json["unit"] = DU::UnitOf(test.rule);
  json["blocks"] = test.IsBlocking();
  json["item"] = finding.item.has_value() ? ItemJson(*finding.item) : Json();
  return json;
}

std::string TextOf(const Json& json) {
  constexpr int kIndent = 2;
  constexpr auto kReplace = Json::error_handler_t::replace;
  return json.dump(kIndent, ' ', false, kReplace) + "\n";
}

const char* NameOf(eState state) {
  switch (state) {
    case eState::kOff:
      return "off";
    case eState::kNothingToTest:
      return "nothing to test";
    case eState::kOn:
      break;
  }
  return "on";
}

}  // namespace

std::string ExplanationJson(const DU::LightPathCalculator& light,
                            const DU::ShadowingExplanation& explanation) {
  Json segments = Json::array();
  for (const DU::WaterSegment& segment : explanation.segments) {
    segments.push_back({{"point", VectorJson(segment.point)},
                        {"direction", VectorJson(segment.direction)}});
  }
  Json components = Json::array();
  for (const DU::ComponentExplanation& component : explanation.components) {
    Json findings = Json::array();
    for (const DU::ShadowingFinding& finding : component.findings) {
      findings.push_back(FindingJson(finding));
    }
    components.push_back({{"component", DU::NameOf(component.component)},
                          {"state", NameOf(component.state)},
                          {"blocks", component.IsBlocking()},
                          {"findings", findings}});
  }
  const bool isShadowed = explanation.by != DU::eShadowingComponent::kNone;
  return TextOf(
      {{"path", PathJson(light)},
       {"segments", segments},
       {"components", components},
       {"by", isShadowed ? Json(DU::NameOf(explanation.by)) : Json()}});
}

std::string NoPathJson(DU::eVerdict verdict) {
  return TextOf({{"path", nullptr}, {"no_path", DU::NameOf(verdict)}});
}

}  // namespace ZARN::IO
