#include "du/fast/NearestHardware.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "du/geometry/Constants.hpp"
#include "du/geometry/OrdinaryLength.hpp"
#include "du/hardware/AVHDRopeShadowing.hpp"

namespace ZARN::DU {
namespace {

std::vector<TVector3> LegsOf(const AVHDRopeModel& model) {
  return HasAVHDRopes(model) ? AVHDRopeEnds(model) : std::vector<TVector3>();
}

template <class Work>
void ForEachOf(std::size_t count, const Work& work) {
  for (std::size_t i = 0; i < count; ++i) work(i);
}

}  // namespace

NearestDirections::NearestDirections(const std::vector<TVector3>& directions)
    : count_(directions.size()) {
  if (!std::all_of(directions.begin(), directions.end(), HasOrdinaryLength)) {
    return;
  }
  for (const TVector3& v : directions) {
    units_.push_back(Unit({v.X(), v.Y(), v.Z()}));
  }
}

template <class Work>
void NearestDirections::ForEach(const TVector3& point, const Work& work) const {
  if (units_.empty() || !HasOrdinaryLength(point)) {
    return ForEachOf(count_, work);
  }
  const Point p = {point.X(), point.Y(), point.Z()};
  double largest = -std::numeric_limits<double>::infinity();
  for (const Point& unit : units_) largest = std::max(largest, Dot(p, unit));
  const double least = largest - kBand * std::sqrt(Squared(p));
  for (std::size_t i = 0; i < count_; ++i) {
    if (Dot(p, units_[i]) >= least) work(i);
  }
}

NearestPlates::NearestPlates(const std::vector<TVector3>& plates,
                             const BellyPlateOutlines& outlines)
    : count_(plates.size()) {
  for (std::size_t i = 0; i < count_; ++i) {
    const double halfWidth = 0.5 * outlines.frames[i].width;
    // Higher or lower plates have no azimuth for each angle in space.
    if (!HasOrdinaryLength(plates[i]) || plates[i].Z() != 0.0 ||
        !std::isfinite(halfWidth)) {
      plates_.clear();
      return;
    }
    plates_.push_back({plates[i].Phi(), halfWidth});
  }
}

double NearestPlates::Plate::BeyondEdge(double azimuth) const {
  const double apart = std::abs(azimuth - phi);
  return std::min(apart, kTwoPi - apart) - halfWidth;
}

template <class Work>
void NearestPlates::ForEach(const TVector3& point, const Work& work) const {
  if (plates_.empty() || !HasOrdinaryLength({point.X(), point.Y(), 0.0})) {
    return ForEachOf(count_, work);
  }
  const double azimuth = point.Phi();
  double nearest = std::numeric_limits<double>::infinity();
  for (const Plate& plate : plates_) {
    nearest = std::min(nearest, plate.BeyondEdge(azimuth));
  }
  for (std::size_t i = 0; i < count_; ++i) {
    if (plates_[i].BeyondEdge(azimuth) <= nearest + kBand) work(i);
  }
}

NearestHardware::NearestHardware(const Hardware& hardware)
    : surfacePoints_(hardware.AVHDRopes.AVHDRopeSurfacePoints),
      legs_(LegsOf(hardware.AVHDRopes)),
      supportRopes_(hardware.SupportRopes.SupportRopePositions),
      anchors_(hardware.NCDAnchors.NCDAnchorPositions),
      outlines_(hardware),
      plates_(hardware.BellyPlates.BellyPlatePositions, outlines_) {}

void NearestHardware::ForEach(
    eShadowingRule rule, const TVector3& point,
    const std::function<void(std::size_t)>& work) const {
  const auto withNearest = [&](const NearestPoint& points) {
    if (const auto nearest = points.To(point)) work(*nearest);
  };
  switch (rule) {
    case eShadowingRule::kSurfacePoint:
      return withNearest(surfacePoints_);
    case eShadowingRule::kLeg:
      return legs_.ForEach(point, work);
    case eShadowingRule::kSupportRope:
      return supportRopes_.ForEach(point, work);
    case eShadowingRule::kNCDAnchor:
      return withNearest(anchors_);
    case eShadowingRule::kBellyPlate:
      return plates_.ForEach(point, work);
    default:
      return;  // has no items
  }
}

}  // namespace ZARN::DU
