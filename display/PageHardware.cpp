#include "display/PageHardware.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "display/FillMap.hpp"
#include "du/geometry/Constants.hpp"
#include "du/geometry/Primitives.hpp"
#include "du/hardware/HardwareItem.hpp"
#include "du/hardware/LegTests.hpp"

namespace ZARN::Display {
namespace {

using DU::eShadowingComponent;
using DU::eShadowingRule;
using DU::kPi;
using DU::Rotated;
using Points = std::vector<TVector3>;

constexpr double kMostThinned = 1.0;  // mm

bool IsFinite(const TVector3& point) {
  return std::isfinite(point.X()) && std::isfinite(point.Y()) &&
         std::isfinite(point.Z());
}

double DistanceToSegment(const TVector3& point, const TVector3& a,
                         const TVector3& b) {
  const TVector3 way = b - a;
  const double squared = way.Mag2();
  if (squared == 0.0) return (point - a).Mag();
  const double share = std::clamp((point - a).Dot(way) / squared, 0.0, 1.0);
  return (point - a - share * way).Mag();
}

void AddTube(std::string name, double radius, const Points& points,
             PageHardware& part) {
  part.tubes.push_back(
      {std::move(name), radius, Thinned(points, kMostThinned)});
}

std::string ItemName(const DU::Hardware& hardware, eShadowingRule rule,
                     std::size_t position) {
  return DU::NameOf(*DU::ItemOf(hardware, rule, position));
}

/// The samples of one hold-down rope over the top of the vessel.
class SurfaceRope {
 public:
  SurfaceRope(const DU::AVHDRopeModel& ropes, std::size_t begin,
              std::size_t end) {
    std::size_t overVessel = 0;
    for (std::size_t i = begin; i < end; ++i) {
      const TVector3& point = ropes.AVHDRopeSurfacePoints[i];
      if (ropes.AVHDRopeSurfaceParts[i] == DU::eAVHDRopePart::kRing) {
        AddToArc(point);
        if (firstOnRing_ == kNone) firstOnRing_ = i;
      } else {
        stretches_[overVessel++ % stretches_.size()].push_back(point);
        if (firstOverVessel_ == kNone) firstOverVessel_ = i;
      }
    }
    JoinArcs();
  }

  /// @param ends  P1 and P4, where the legs begin, below the samples
  void AddTo(const DU::Hardware& hardware, const std::array<TVector3, 2>& ends,
             PageHardware& part) const {
    const double radius = hardware.AVHDRopes.AVHDRopeRadius;
    if (firstOverVessel_ != kNone) {
      // The model samples from P1 and from P4 to the ring, and from there to
      // the neck.
      Points rope = {ends[0]};
      rope.insert(rope.end(), stretches_[0].begin(), stretches_[0].end());
      rope.insert(rope.end(), stretches_[2].begin(), stretches_[2].end());
      rope.insert(rope.end(), stretches_[3].rbegin(), stretches_[3].rend());
      rope.insert(rope.end(), stretches_[1].rbegin(), stretches_[1].rend());
      rope.push_back(ends[1]);
      AddTube(
          ItemName(hardware, eShadowingRule::kSurfacePoint, firstOverVessel_),
          radius, rope, part);
    }
    for (const Points& arc : arcs_) {
      AddTube(ItemName(hardware, eShadowingRule::kSurfacePoint, firstOnRing_),
              radius, arc, part);
    }
  }

 private:
  static constexpr std::size_t kNone = ~std::size_t(0);

  /// Samples of the ring are 1/500 of it apart; this is twice as far.
  static bool AreNeighbours(const TVector3& a, const TVector3& b) {
    constexpr double kFarthest = 2 * DU::kTwoPi / 500;
    return (a - b).Mag() <= kFarthest * a.Perp();
  }

  void AddToArc(const TVector3& point) {
    for (Points& arc : arcs_) {
      if (!AreNeighbours(arc.back(), point)) continue;
      arc.push_back(point);
      return;
    }
    arcs_.push_back({point});
  }

  /// The samples begin at azimuth 0, which may be in the middle of an arc.
  void JoinArcs() {
    for (std::size_t i = 0; i < arcs_.size(); ++i) {
      for (std::size_t j = 0; j < arcs_.size(); ++j) {
        if (i == j || !AreNeighbours(arcs_[i].back(), arcs_[j].front())) {
          continue;
        }
        arcs_[i].insert(arcs_[i].end(), arcs_[j].begin(), arcs_[j].end());
        arcs_.erase(arcs_.begin() + static_cast<std::ptrdiff_t>(j));
        return JoinArcs();
      }
    }
  }

  std::array<Points, 4> stretches_;
  std::vector<Points> arcs_;
  std::size_t firstOverVessel_ = kNone;
  std::size_t firstOnRing_ = kNone;
};

void AddLegs(const DU::Hardware& hardware, PageHardware& part) {
  const DU::AVHDRopeModel& ropes = hardware.AVHDRopes;
  const Points& ends = ropes.AVHDRopePositions;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < 2 * ropes.AVHDRopeRolls.size(); ++i) {
    const double roll = ropes.AVHDRopeRolls[i / 2];
    names.push_back(ItemName(hardware, eShadowingRule::kLeg, i));
    AddTube(
        names.back(), ropes.AVHDRopeRadius,
        {DU::AVHDRopeEnd(ropes, i),
         i % 2 == 0 ? Rotated(ends[5], roll) : Rotated(ends[0], kPi + roll)},
        part);
  }
  // A leg at P1 half a turn from no rope is not tested, but is there.
  for (std::size_t rope = 0; rope < ropes.AVHDRopeRolls.size(); ++rope) {
    DU::HardwareItem leg;
    leg.component = eShadowingComponent::kAVHDRope;
    leg.position = rope;
    leg.part = DU::HardwareItem::ePart::kLegP1;
    if (std::find(names.begin(), names.end(), DU::NameOf(leg)) != names.end()) {
      continue;
    }
    const double roll = ropes.AVHDRopeRolls[rope];
    AddTube("", ropes.AVHDRopeRadius,
            {Rotated(ends[1], roll), Rotated(ends[0], roll)}, part);
  }
}

void AddHoldDownRopes(const DU::Hardware& hardware, PageHardware& part) {
  const DU::AVHDRopeModel& ropes = hardware.AVHDRopes;
  const auto& begins = ropes.AVHDRopeSurfaceBegins;
  for (std::size_t rope = 0; rope < begins.size(); ++rope) {
    const std::size_t end = rope + 1 < begins.size()
                                ? begins[rope + 1]
                                : ropes.AVHDRopeSurfacePoints.size();
    SurfaceRope(ropes, begins[rope], end)
        .AddTo(hardware,
               {ropes.AVHDRopeEndPoints[2 * rope],
                ropes.AVHDRopeEndPoints[2 * rope + 1]},
               part);
  }
  AddLegs(hardware, part);
}

void AddSupportRopes(const DU::Hardware& hardware, PageHardware& part) {
  const DU::SupportRopeModel& ropes = hardware.SupportRopes;
  for (std::size_t i = 0; i < ropes.SupportRopePositions.size(); ++i) {
    const TVector3& foot = ropes.SupportRopePositions[i];
    AddTube(ItemName(hardware, eShadowingRule::kSupportRope, i),
            ropes.SupportRopeRadius,
            {foot, foot + ropes.SupportRopeLength * DU::ZHat()}, part);
  }
}

/// The outline of a plate, by its four sides.
Points OutlineOf(const DU::BellyPlateFrame& frame, double halfHeight) {
  constexpr int kSteps = 16;  // of a side
  Points outline;
  const auto add = [&](double across, double up) {
    const TVector3 base =
        DU::WithPhi(frame.bottom, frame.phiStart + across * frame.width);
    outline.push_back(DU::WithMag(base + 2 * up * halfHeight * DU::ZHat(),
                                  frame.radius, DU::eDiagnostics::kSilent));
  };
  const auto stepOf = [](int step) {
    return static_cast<double>(step) / kSteps;
  };
  for (int i = 0; i < kSteps; ++i) add(stepOf(i), 0);
  for (int i = 0; i < kSteps; ++i) add(1, stepOf(i));
  for (int i = kSteps; i > 0; --i) add(stepOf(i), 1);
  for (int i = kSteps; i >= 0; --i) add(0, stepOf(i));
  return outline;
}

void AddBellyPlates(const DU::Hardware& hardware, PageHardware& part) {
  const DU::BellyPlateModel& plates = hardware.BellyPlates;
  for (std::size_t i = 0; i < plates.BellyPlatePositions.size(); ++i) {
    const DU::BellyPlateFrame frame(plates.BellyPlatePositions[i],
                                    plates.BellyPlateHalfHeight,
                                    DU::eDiagnostics::kSilent);
    part.patches.push_back(
        {ItemName(hardware, eShadowingRule::kBellyPlate, i),
         Thinned(OutlineOf(frame, plates.BellyPlateHalfHeight), kMostThinned)});
  }
}

void AddNCDAnchors(const DU::Hardware& hardware, PageHardware& part) {
  const DU::NCDAnchorModel& anchors = hardware.NCDAnchors;
  for (std::size_t i = 0; i < anchors.NCDAnchorPositions.size(); ++i) {
    part.spots.push_back({ItemName(hardware, eShadowingRule::kNCDAnchor, i),
                          anchors.NCDAnchorHalfZ,
                          anchors.NCDAnchorPositions[i]});
  }
}

void AddAVPipes(const DU::Hardware& hardware, PageHardware& part) {
  const DU::AVPipeModel& pipes = hardware.AVPipes;
  for (const Points* line : {&pipes.AVPipe1Positions, &pipes.AVPipe2Positions,
                             &pipes.AVPipe3Positions, &pipes.AVPipe4Positions,
                             &pipes.AVPipe6Positions}) {
    AddTube("", pipes.AVPipeRadius, *line, part);
  }
  for (const Points* line :
       {&pipes.AVPipeLABSPositions, &pipes.AVPipeLABRPositions}) {
    AddTube("", pipes.AVPipeLABSRadius, *line, part);
  }
}

/// The edge of its cap, on both surfaces of the vessel.
void AddNeckBoss(const DU::Hardware& hardware, PageHardware& part) {
  const double angle = hardware.NeckBoss.NeckBossAngle;
  for (const double radius : {hardware.OuterAVRadius, hardware.InnerAVRadius}) {
    part.rings.push_back(
        {"", radius * std::sin(angle), radius * std::cos(angle)});
  }
}

void AddParts(const DU::Hardware& hardware, eShadowingComponent component,
              PageHardware& part) {
  switch (component) {
    case eShadowingComponent::kAVHDRope:
      return AddHoldDownRopes(hardware, part);
    case eShadowingComponent::kSupportRope:
      return AddSupportRopes(hardware, part);
    case eShadowingComponent::kBellyPlate:
      return AddBellyPlates(hardware, part);
    case eShadowingComponent::kNCDAnchor:
      return AddNCDAnchors(hardware, part);
    case eShadowingComponent::kAVPipe:
      return AddAVPipes(hardware, part);
    case eShadowingComponent::kNeckBoss:
      return AddNeckBoss(hardware, part);
    case eShadowingComponent::kNone:
      return;
  }
}

template <class Part, class Test>
void KeepOnly(std::vector<Part>& parts, const Test& test) {
  parts.erase(std::remove_if(parts.begin(), parts.end(),
                             [&](const Part& part) { return !test(part); }),
              parts.end());
}

/// Tables can hold numbers so large that their products overflow.
void DropNotFinite(PageHardware& hardware) {
  const auto areFinite = [](const Points& points) {
    return std::all_of(points.begin(), points.end(), IsFinite);
  };
  KeepOnly(hardware.tubes, [&](const PageTube& tube) {
    return std::isfinite(tube.radius) && areFinite(tube.points);
  });
  KeepOnly(hardware.patches,
           [&](const PagePatch& patch) { return areFinite(patch.points); });
  KeepOnly(hardware.spots, [](const PageSpot& spot) {
    return std::isfinite(spot.radius) && IsFinite(spot.at);
  });
  KeepOnly(hardware.rings, [](const PageRing& ring) {
    return std::isfinite(ring.radius) && std::isfinite(ring.z);
  });
}

}  // namespace

PageHardwareList PageHardwareOf(const DU::ShadowingCalculator& shadowing) {
  PageHardwareList list;
  const auto states = ComponentStatesOf(shadowing);
  for (std::size_t i = 0; i < list.size(); ++i) {
    list[i].state = states[i];
    if (states[i] != eComponentState::kTested) continue;
    AddParts(shadowing.GetHardware(), DU::kShadowingComponents[i], list[i]);
    DropNotFinite(list[i]);
  }
  return list;
}

double NeckTopOf(const DU::ShadowingCalculator& shadowing,
                 const PageHardwareList& hardware) {
  // Pipes go up beside the neck's wall.
  const double widest = 1.5 * shadowing.GetAVNeckRadius();
  double top = shadowing.GetOuterAVRadius();
  for (const PageHardware& component : hardware) {
    for (const PageTube& tube : component.tubes) {
      for (const TVector3& point : tube.points) {
        if (point.Perp() <= widest) top = std::max(top, point.Z());
      }
    }
  }
  return top;
}

Points Thinned(const Points& points, double tolerance) {
  if (points.size() < 3) return points;
  std::vector<bool> isKept(points.size());
  isKept.front() = isKept.back() = true;
  std::vector<std::pair<std::size_t, std::size_t>> stretches = {
      {0, points.size() - 1}};
  while (!stretches.empty()) {
    const auto [begin, end] = stretches.back();
    stretches.pop_back();
    std::size_t farthest = begin;
    double most = tolerance;
    for (std::size_t i = begin + 1; i < end; ++i) {
      const double distance =
          DistanceToSegment(points[i], points[begin], points[end]);
      if (!(distance > most)) continue;
      most = distance;
      farthest = i;
    }
    if (farthest == begin) continue;
    isKept[farthest] = true;
    stretches.emplace_back(begin, farthest);
    stretches.emplace_back(farthest, end);
  }
  Points thinned;
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (isKept[i]) thinned.push_back(points[i]);
  }
  return thinned;
}

}  // namespace ZARN::Display
