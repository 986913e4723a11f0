#include "lightpath/RayKernel.hpp"

#include "lightpath/RayCorrections.hpp"
#include "lightpath/RayEstimates.hpp"
#include "lightpath/RayPlane.hpp"
#include "lightpath/RayTurns.hpp"

// Compiled once for each kind of processor; ZARN_KERNEL names the result. The
// loops have no branches and no calls, so the compiler vectorises them. Each is
// short: the processor then works on several rounds of it at once. In a long
// one it would wait for the square roots and divisions.

namespace ZARN::DU {
namespace {

/// A point on the vessel's outer surface at the end of a ray, and the direction
/// from there to the end. Both are combinations of the unit vectors to this end
/// and to the other one.
struct AtEnd {
  double pointOfThis, pointOfOther;
  double directionOfThis, directionOfOther;
};

/// @param sine,cosine    of the angle to the radius at the end
/// @param outerSine,outerCosine  of the angle to the radius in the water at the
///                       vessel
/// @param x,inverseSine  of the angle between both ends
[[gnu::always_inline]] inline AtEnd EndOf(double sine, double cosine,
                                          double outerSine, double outerCosine,
                                          double x, double inverseSine) {
  // The point is that far from the end, seen from the centre.
  const double turnCosine = outerCosine * cosine + outerSine * sine;
  const double turnSine = outerSine * cosine - outerCosine * sine;
  const double point = turnSine * inverseSine;
  const double direction = sine * inverseSine;
  return {turnCosine - x * point, point, cosine + x * direction, -direction};
}

/// Find the last points and the directions from there.
void FindEnds(const RayBranch& b, const RayOrigin& e, const RayPMTs& p,
              RayBlock& k, std::size_t count) {
  const RayBranch branch = b;
  const RayOrigin event = e;
  const RayPMTs pmts = p;
#pragma GCC ivdep  // the PMTs are not among the results
  for (std::size_t i = 0; i < count; ++i) {
    const Ray ray = {k.cosT.at[i], k.sinT.at[i]};
    const Rotation atPMT = AtPMT(branch.highest * pmts.inverseRadius[i], ray);
    const AtEnd end = EndOf(
        atPMT.sine, atPMT.cosine, branch.ratios[kOuterSite] * ray.sinT,
        CosineAt(branch, kOuterSite, ray), k.cosine.at[i], k.inverseSine.at[i]);
    const double x = pmts.x[i];
    const double y = pmts.y[i];
    const double z = pmts.z[i];
    k.pointX.at[i] = end.pointOfThis * x + end.pointOfOther * event.x;
    k.pointY.at[i] = end.pointOfThis * y + end.pointOfOther * event.y;
    k.pointZ.at[i] = end.pointOfThis * z + end.pointOfOther * event.z;
    k.directionX.at[i] =
        end.directionOfThis * x + end.directionOfOther * event.x;
    k.directionY.at[i] =
        end.directionOfThis * y + end.directionOfOther * event.y;
    k.directionZ.at[i] =
        end.directionOfThis * z + end.directionOfOther * event.z;
  }
}

template <eRayFamily kFamily, bool kIsFolded, eSteps kSteps>
void TraceRays(const RayBranch& branch, const RayOrigin& event,
               const RayPMTs& pmts, RayBlock& k, std::size_t count) {
  Estimates found;
  Estimate<kIsFolded>(branch, event, pmts, k, found, count);
  if constexpr (kSteps == eSteps::kMany) {
    CorrectOften<kFamily>(branch, pmts, k, found, count);
  }
  CorrectLast<kFamily>(branch, pmts, kCosineError, found, k, count);
  FindEnds(branch, event, pmts, k, count);
}

void TraceBack(const RayBranch& b, const RayOrigin& e, const RayPMTs& p,
               RayBlock& k, std::size_t count) {
  const RayBranch branch = b;
  const RayOrigin event = e;
  const RayPMTs pmts = p;
#pragma GCC ivdep  // the PMTs are not among the results
  for (std::size_t i = 0; i < count; ++i) {
    const Ray ray = {k.cosT.at[i], k.sinT.at[i]};
    const AtEnd end = EndOf(
        branch.ratios[kEventSite] * ray.sinT, CosineAt(branch, kEventSite, ray),
        branch.ratios[kOuterSite] * ray.sinT, CosineAt(branch, kOuterSite, ray),
        k.cosine.at[i], k.inverseSine.at[i]);
    const double x = pmts.x[i];
    const double y = pmts.y[i];
    const double z = pmts.z[i];
    k.firstX.at[i] = end.pointOfThis * event.x + end.pointOfOther * x;
    k.firstY.at[i] = end.pointOfThis * event.y + end.pointOfOther * y;
    k.firstZ.at[i] = end.pointOfThis * event.z + end.pointOfOther * z;
    k.backX.at[i] = end.directionOfThis * event.x + end.directionOfOther * x;
    k.backY.at[i] = end.directionOfThis * event.y + end.directionOfOther * y;
    k.backZ.at[i] = end.directionOfThis * event.z + end.directionOfOther * z;
  }
}

/// The planes of an event and PMTs.
struct Planes {
  RayBlock::Lane<double> acrossX, acrossY, acrossZ;
};

/// Find the planes, and the angles between event and PMTs once more: now by
/// cosine and sine, each from its own sum, so that their error is a rounding
/// error however small they are.
void FindPlanes(const RayOrigin& e, const RayPMTs& p, Planes& planes,
                Estimates& found, std::size_t count) {
  const RayOrigin event = e;
  const RayPMTs pmts = p;
#pragma GCC ivdep  // the PMTs are not among the results
  for (std::size_t i = 0; i < count; ++i) {
    const Plane plane = PlaneOf(event, pmts.x[i], pmts.y[i], pmts.z[i]);
    found.sine.at[i] = plane.sine;
    planes.acrossX.at[i] = plane.acrossX;
    planes.acrossY.at[i] = plane.acrossY;
    planes.acrossZ.at[i] = plane.acrossZ;
  }
}

/// Cosine and sine of a ray's angle to the radius at the event.
template <eRayFamily kFamily>
[[gnu::always_inline]] inline Rotation AtEvent(const RayBranch& branch,
                                               const Ray& ray) {
  const double cosine = CosineAt(branch, kEventSite, ray);
  constexpr bool kIsInward = kFamily == eRayFamily::kInwardFromInside;
  return {kIsEventT<kFamily> ? ray.cosT
          : kIsInward        ? -cosine
                             : cosine,
          branch.ratios[kEventSite] * ray.sinT};
}

/// Find the points and directions of paths. Seen from the centre, a point is as
/// far from the end of its segment as the angle to the radius has changed.
template <eRayFamily kFamily>
void FindPoints(const RayBranch& b, const RayOrigin& e, const RayPMTs& p,
                const Planes& planes, const Estimates& found, RayBlock& k,
                std::size_t count) {
  const RayBranch branch = b;
  const RayOrigin event = e;
  const RayPMTs pmts = p;
#pragma GCC ivdep  // nothing that is given is among the results
  for (std::size_t i = 0; i < count; ++i) {
    const Ray ray = {k.cosT.at[i], k.sinT.at[i]};
    const double x = k.cosine.at[i];
    const double sine = found.sine.at[i];
    const double acrossX = planes.acrossX.at[i];
    const double acrossY = planes.acrossY.at[i];
    const double acrossZ = planes.acrossZ.at[i];
    const auto set = [&](auto& toX, auto& toY, auto& toZ, double along,
                         double across) {
      toX.at[i] = along * event.x + across * acrossX;
      toY.at[i] = along * event.y + across * acrossY;
      toZ.at[i] = along * event.z + across * acrossZ;
    };
    const Rotation atEvent = AtEvent<kFamily>(branch, ray);
    const Rotation inside = {CosineAt(branch, kInsideSite, ray),
                             branch.ratios[kInsideSite] * ray.sinT};
    const Rotation outer = {CosineAt(branch, kOuterSite, ray),
                            branch.ratios[kOuterSite] * ray.sinT};
    const Rotation atPMT = AtPMT(branch.highest * pmts.inverseRadius[i], ray);
    const Rotation first = atEvent * Rotation{inside.cosine, -inside.sine};
    const Rotation last = outer * Rotation{atPMT.cosine, -atPMT.sine};
    set(k.backX, k.backY, k.backZ, -atEvent.cosine, -atEvent.sine);
    set(k.firstX, k.firstY, k.firstZ, first.cosine, first.sine);
    set(k.pointX, k.pointY, k.pointZ, x * last.cosine + sine * last.sine,
        sine * last.cosine - x * last.sine);
    set(k.directionX, k.directionY, k.directionZ,
        x * atPMT.cosine - sine * atPMT.sine,
        sine * atPMT.cosine + x * atPMT.sine);
  }
}

/// Find the lengths of paths and the angles of incidence. From a sphere
/// outwards, the length to the point of the line nearest to the centre is
/// radius times cosine.
template <eRayFamily kFamily>
void FindLengths(const RayBranch& b, const RayRadii& r, const RayPMTs& p,
                 RayBlock& k, std::size_t count) {
  const RayBranch branch = b;
  const RayRadii radii = r;
  const RayPMTs pmts = p;
#pragma GCC ivdep  // nothing that is given is among the results
  for (std::size_t i = 0; i < count; ++i) {
    const Ray ray = {k.cosT.at[i], k.sinT.at[i]};
    const double inverseRadius = pmts.inverseRadius[i];
    const Rotation atPMT = AtPMT(branch.highest * inverseRadius, ray);
    k.lengthInside.at[i] = radii.inner * CosineAt(branch, kInsideSite, ray) -
                           radii.event * AtEvent<kFamily>(branch, ray).cosine;
    k.lengthInWall.at[i] = radii.outer * CosineAt(branch, kOutWallSite, ray) -
                           radii.inner * CosineAt(branch, kInWallSite, ray);
    k.lengthInWater.at[i] = atPMT.cosine / inverseRadius -
                            radii.outer * CosineAt(branch, kOuterSite, ray);
    k.incidence.at[i] = AngleOf(atPMT.sine, atPMT.cosine);
  }
}

/// Complete the paths of rays from inside the vessel.
template <eRayFamily kFamily, bool kIsFolded>
void CompletePaths(const RayBranch& branch, const RayOrigin& event,
                   const RayRadii& radii, const RayPMTs& pmts, RayBlock& k,
                   std::size_t count) {
  Estimates found;
  Planes planes;
  Estimate<kIsFolded>(branch, event, pmts, k, found, count);
  FindPlanes(event, pmts, planes, found, count);
  CorrectOften<kFamily>(branch, pmts, k, found, count);
  CorrectLast<kFamily>(branch, pmts, 0.0, found, k, count);
  FindPoints<kFamily>(branch, event, pmts, planes, found, k, count);
  FindLengths<kFamily>(branch, radii, pmts, k, count);
}

template <eRayFamily kFamily>
void CompleteFamily(const RayBranch& branch, const RayOrigin& event,
                    const RayRadii& radii, const RayPMTs& pmts, RayBlock& block,
                    std::size_t count) {
  if (branch.isFolded) {
    CompletePaths<kFamily, true>(branch, event, radii, pmts, block, count);
  } else {
    CompletePaths<kFamily, false>(branch, event, radii, pmts, block, count);
  }
}

template <eRayFamily kFamily, bool kIsFolded>
void TraceSteps(const RayBranch& branch, const RayOrigin& event, eSteps steps,
                const RayPMTs& pmts, RayBlock& block, std::size_t count) {
  if (steps == eSteps::kOne) {
    TraceRays<kFamily, kIsFolded, eSteps::kOne>(branch, event, pmts, block,
                                                count);
  } else {
    TraceRays<kFamily, kIsFolded, eSteps::kMany>(branch, event, pmts, block,
                                                 count);
  }
}

template <eRayFamily kFamily>
void TraceFamily(const RayBranch& branch, const RayOrigin& event, eSteps steps,
                 const RayPMTs& pmts, RayBlock& block, std::size_t count) {
  if (branch.isFolded) {
    TraceSteps<kFamily, true>(branch, event, steps, pmts, block, count);
  } else {
    TraceSteps<kFamily, false>(branch, event, steps, pmts, block, count);
  }
}

void Trace(const RayBranch& branch, const RayOrigin& event, eSteps steps,
           const RayPMTs& pmts, RayBlock& block, std::size_t count) {
  using Loop = decltype(&TraceFamily<eRayFamily::kOutwardJoined>);
  // NOLINTNEXTLINE(*-avoid-c-arrays)
  constexpr Loop kLoops[kRayFamilies] = {
      TraceFamily<eRayFamily::kOutwardJoined>,
      TraceFamily<eRayFamily::kOutwardFromInside>,
      TraceFamily<eRayFamily::kInwardFromInside>,
      TraceFamily<eRayFamily::kOutwardFromWall>,
      TraceFamily<eRayFamily::kInwardFromWall>,
      TraceFamily<eRayFamily::kInwardFromWater>,
      TraceFamily<eRayFamily::kReflected>};
  kLoops[static_cast<int>(branch.family)](branch, event, steps, pmts, block,
                                          count);
}

void Complete(const RayBranch& branch, const RayOrigin& event,
              const RayRadii& radii, const RayPMTs& pmts, RayBlock& block,
              std::size_t count) {
  if (branch.family == eRayFamily::kOutwardJoined) {
    CompleteFamily<eRayFamily::kOutwardJoined>(branch, event, radii, pmts,
                                               block, count);
  } else if (branch.family == eRayFamily::kOutwardFromInside) {
    CompleteFamily<eRayFamily::kOutwardFromInside>(branch, event, radii, pmts,
                                                   block, count);
  } else {
    CompleteFamily<eRayFamily::kInwardFromInside>(branch, event, radii, pmts,
                                                  block, count);
  }
}

}  // namespace

extern const RayKernel ZARN_KERNEL;
const RayKernel ZARN_KERNEL = {Trace, TraceBack, Complete};

}  // namespace ZARN::DU
