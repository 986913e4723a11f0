#include "display/PageText.hpp"

#include <cmath>
#include <nlohmann/json.hpp>

#include "display/PageHardware.hpp"

namespace ZARN::Display {
namespace {

using OrderedJson = nlohmann::ordered_json;

/// A length in mm to 1e-4: more digits would only be longer.
double Rounded(double length) {
  constexpr double kSteps = 1e4;
  constexpr double kLongest = 1e9;  // beyond that there are no such digits
  return std::abs(length) < kLongest ? std::round(length * kSteps) / kSteps
                                     : length;
}

OrderedJson VectorJson(const TVector3& v) {
  return {Rounded(v.X()), Rounded(v.Y()), Rounded(v.Z())};
}

template <class Points>
OrderedJson PointsJson(const Points& points, std::size_t count) {
  OrderedJson json = OrderedJson::array();
  for (std::size_t i = 0; i < count; ++i) {
    for (int axis = 0; axis < 3; ++axis) {
      json.push_back(Rounded(points[i][axis]));
    }
  }
  return json;
}

const char* NameOf(eComponentState state) {
  switch (state) {
    case eComponentState::kTested:
      return "on";
    case eComponentState::kNotLoaded:
      return "off";
    case eComponentState::kNothingToTest:
      break;
  }
  return "nothing to test";
}

OrderedJson HardwareJson(const PageHardware& hardware) {
  OrderedJson json = {{"state", NameOf(hardware.state)},
                      {"tubes", OrderedJson::array()},
                      {"patches", OrderedJson::array()},
                      {"spots", OrderedJson::array()},
                      {"rings", OrderedJson::array()}};
  for (const PageTube& tube : hardware.tubes) {
    json["tubes"].push_back(
        {{"name", tube.name},
         {"radius", tube.radius},
         {"points", PointsJson(tube.points, tube.points.size())}});
  }
  for (const PagePatch& patch : hardware.patches) {
    json["patches"].push_back(
        {{"name", patch.name},
         {"points", PointsJson(patch.points, patch.points.size())}});
  }
  for (const PageSpot& spot : hardware.spots) {
    json["spots"].push_back({{"name", spot.name},
                             {"radius", spot.radius},
                             {"at", VectorJson(spot.at)}});
  }
  for (const PageRing& ring : hardware.rings) {
    json["rings"].push_back({{"name", ring.name},
                             {"radius", Rounded(ring.radius)},
                             {"z", Rounded(ring.z)}});
  }
  return json;
}

OrderedJson StoredPathJson(const StoredPath& stored) {
  OrderedJson media = OrderedJson::array();
  for (std::size_t i = 0; i + 1 < stored.path.count; ++i) {
    media.push_back(DU::IndexOf(stored.path.media[i]));
  }
  return {{"event", stored.event},
          {"pmt", stored.pmt},
          {"reflected", stored.kind == DU::eLight::kReflected},
          {"media", media},
          {"points", PointsJson(stored.path.points, stored.path.count)}};
}

/// Without any "<", which could end the script element.
std::string SafeText(const OrderedJson& json) {
  const std::string text =
      json.dump(-1, ' ', false, OrderedJson::error_handler_t::replace);
  std::string safe;
  safe.reserve(text.size());
  for (const char c : text) {
    if (c == '<') {
      safe += "\\u003c";  // it stands only in strings
    } else {
      safe += c;
    }
  }
  return safe;
}

}  // namespace

std::string PageTextOf(const PageContent& content,
                       const DU::ShadowingCalculator& shadowing,
                       const DU::LightPathCalculator& lightPath,
                       const PageItems& items, bool hasPaths,
                       const std::vector<StoredPath>& stored) {
  const PageHardwareList parts = PageHardwareOf(shadowing);
  OrderedJson hardware = OrderedJson::array();
  for (const PageHardware& part : parts) hardware.push_back(HardwareJson(part));
  OrderedJson storedPaths = OrderedJson::array();
  for (const StoredPath& path : stored) {
    storedPaths.push_back(StoredPathJson(path));
  }
  return SafeText({{"format", 1},
                   {"version", content.version},
                   {"title", content.title},
                   {"detector", content.detector},
                   {"fingerprint", content.fingerprint},
                   {"run", content.run},
                   {"tolerance", shadowing.GetAVHDRopeTolerance()},
                   {"wavelength", lightPath.GetWavelength()},
                   {"vessel",
                    {{"innerRadius", shadowing.GetInnerAVRadius()},
                     {"outerRadius", shadowing.GetOuterAVRadius()},
                     {"neckRadius", shadowing.GetAVNeckRadius()},
                     {"neckTop", NeckTopOf(shadowing, parts)}}},
                   {"refractiveIndices", lightPath.GetMedia().RefractiveIndex},
                   {"groupIndices", lightPath.GetGroupIndices()},
                   {"hardware", hardware},
                   {"pmtNames", content.pmtNames},
                   {"eventNames", content.eventNames},
                   {"itemNames", items.Names()},
                   {"content", hasPaths ? "paths" : "verdicts"},
                   {"hasReflections", content.withReflections},
                   {"storedPaths", storedPaths}});
}

}  // namespace ZARN::Display
