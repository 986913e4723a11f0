#include "du/hardware/NCDAnchors.hpp"

#include "db/ReadField.hpp"
#include "du/hardware/GeometryTables.hpp"

namespace ZARN::DU {
namespace {

template <class Visitor>
bool WalkAnchors(const TVector3& point, double reach,
                 const std::vector<TVector3>& anchors, eWaterSegment segment,
                 const Visitor& visit) {
  return visit.WalkItems(
      eShadowingRule::kNCDAnchor, point, anchors.size(),
      [&](std::size_t position) {
        return visit({eShadowingRule::kNCDAnchor, segment,
                      (point - anchors[position]).Mag(), reach, position});
      });
}

template <class Visitor>
bool Walk(const NCDAnchorModel& model, double tolerance,
          const WaterSegments& path, const Visitor& visit) {
  if (path.kind == ePathKind::kWater ||
      path.kind == ePathKind::kUninitialised) {
    return false;
  }
  const double reach = NCDAnchorReach(model, tolerance);
  const auto& anchors = model.NCDAnchorPositions;
  return WalkAnchors(path.first.point, reach, anchors, eWaterSegment::kFirst,
                     visit) ||
         (path.kind == ePathKind::kTwoCrossings &&
          WalkAnchors(path.second.point, reach, anchors, eWaterSegment::kSecond,
                      visit));
}

}  // namespace

void NCDAnchorModel::Clear() { NCDAnchorPositions.clear(); }

void LoadNCDAnchorInfo(const TableSet& tables, NCDAnchorModel& model) {
  std::string name =
      ReadString(tables, "GEO", "inner_av", "ncd_anchor_definition");
  model.NCDAnchorHalfZ = ReadNumber(tables, "SOLID", name, "half_z");
  name = ReadString(tables, "GEO", "inner_av", "ncd_anchor_definition");
  model.NCDAnchorRadius = ReadNumber(tables, "SOLID", name, "r_max");
  model.NCDAnchorLocations =
      ReadString(tables, "GEO", "inner_av", "ncd_anchor_locations");
  FillXYZPositions(tables, model.NCDAnchorPositions, "GEO_LOCATIONS",
                   model.NCDAnchorLocations, "x", "y", "z");
}

double NCDAnchorReach(const NCDAnchorModel& model, double tolerance) {
  return model.NCDAnchorHalfZ + tolerance;
}

bool CheckForNCDAnchorShadowing(const NCDAnchorModel& model, double tolerance,
                                const WaterSegments& path) {
  return Walk(model, tolerance, path, StopAtBlocking());
}

void VisitNCDAnchorTests(const NCDAnchorModel& model, double tolerance,
                         const WaterSegments& path,
                         const ShadowingTestVisitor& visitor,
                         const NearestItems* nearest) {
  Walk(model, tolerance, path, VisitAll{visitor, nearest});
}

}  // namespace ZARN::DU
