#include "lightpath/RayKernel.hpp"
#include "lightpath/RayPlane.hpp"
#include "lightpath/RayTurns.hpp"

// Compiled once for each kind of processor; ZARN_KERNEL names the result. The
// loops have no branches and no calls, so the compiler vectorises them. Each is
// short: the processor then works on several rounds of it at once. In a long
// one it would wait for the square roots and divisions.

namespace ZARN::DU {
namespace {

constexpr double kInfinity = __builtin_inf();

/// Error of the difference between the swept angle and the angle between event
/// and PMT, rad, of this kernel and of the exact search together. The search
/// ends within 4e-15 of the angle that it computes, which has an error of 4e-15
/// itself; the kernel's product of up to 11 turns has one of 11 * 4e-16. The
/// unit vectors, and the sums of products with them, are rounded too.
constexpr double kAngleError = 2e-14;

/// The angle between event and PMT is known by its cosine, with an error of 4
/// roundings. This times the inverse sine is the error of the angle; a point is
/// moved by it once more, since it is composed of both unit vectors.
constexpr double kCosineError = 2e-15;

/// What the table says about PMTs.
struct Estimates {
  template <class Number>
  using Lane = RayBlock::Lane<Number>;
  Lane<double> sine;   ///< of the angle between event and PMT
  Lane<int> cell;      ///< of the table
  Lane<double> share;  ///< of the cell that is passed
  Lane<double> h, inverseSlope, spread;
  Lane<double> cosT, sinT;
};

/// Two numbers of a cell. They are loaded as one, since loading from many cells
/// takes the longest.
using Word [[gnu::may_alias]] = std::uint64_t;
constexpr std::ptrdiff_t kWordsInCell = sizeof(RayCell) / sizeof(Word);

struct Pair {
  double first, second;
};

[[gnu::always_inline]] inline Pair PairOf(Word word) {
  constexpr unsigned kHalf = 32;
  return {__builtin_bit_cast(float, static_cast<std::uint32_t>(word)),
          __builtin_bit_cast(float, static_cast<std::uint32_t>(word >> kHalf))};
}

/// Find the angles between event and PMTs, and their cells.
template <bool kIsFolded>
void FindCells(const RayBranch& b, const RayOrigin& e, const RayPMTs& p,
               RayBlock& k, Estimates& found, std::size_t count) {
  const RayBranch branch = b;
  const RayOrigin event = e;
  const RayPMTs pmts = p;
  const double last = branch.count - 1;
#pragma GCC ivdep  // nothing that is given is among the results
  for (std::size_t i = 0; i < count; ++i) {
    const double x =
        event.x * pmts.x[i] + event.y * pmts.y[i] + event.z * pmts.z[i];
    const double y = branch.sense * x;
    const double sine2 = (1.0 - y) * (1.0 + y);
    const double beyond = y - branch.fold;
    const double along =
        kIsFolded ? __builtin_sqrt(beyond > 0.0 ? beyond : 0.0) : y;
    const double place = (along - branch.first) * branch.scale;
    const double positive = place > 0.0 ? place : 0.0;
    const int at = static_cast<int>(positive < last ? positive : last);
    k.cosine.at[i] = x;
    found.sine.at[i] = __builtin_sqrt(sine2 > 0.0 ? sine2 : 0.0);
    found.cell.at[i] = at;
    found.share.at[i] = place - at;
  }
}

void ReadCells(const RayBranch& branch, Estimates& found, std::size_t count) {
  const auto* const words = reinterpret_cast<const Word*>(branch.cells);
#pragma GCC ivdep  // the cells are not among the results
  for (std::size_t i = 0; i < count; ++i) {
    const std::ptrdiff_t word = kWordsInCell * found.cell.at[i];
    const double share = found.share.at[i];
    const Pair h01 = PairOf(words[word]);
    const Pair h23 = PairOf(words[word + 1]);
    const Pair slope = PairOf(words[word + 2]);
    found.h.at[i] =
        h01.first +
        share * (h01.second + share * (h23.first + share * h23.second));
    found.inverseSlope.at[i] = slope.first;
    found.spread.at[i] = slope.second;
  }
}

template <bool kIsFolded>
void Estimate(const RayBranch& branch, const RayOrigin& event,
              const RayPMTs& pmts, RayBlock& k, Estimates& found,
              std::size_t count) {
  FindCells<kIsFolded>(branch, event, pmts, k, found, count);
  ReadCells(branch, found, count);
  const double sense = branch.sense;
  for (std::size_t i = 0; i < count; ++i) {
    const double y = sense * k.cosine.at[i];
    const double h = found.h.at[i];
    const double h2 = h * h * (1.0 - y);
    const double more = 1.0 + y;
    const double inverse = 1.0 / (more + h2);
    found.cosT.at[i] = (more - h2) * inverse;
    found.sinT.at[i] = 2.0 * h * found.sine.at[i] * inverse;
  }
}

/// What is known about a PMT besides t.
struct Known {
  double cosine, sine;  ///< of the angle between event and PMT
  double ratio;         ///< at the PMT
  double inverseSlope, spread;
  double angleError;  ///< kAngleError, and that of the angle to the PMT
};

/// The rotation by the swept angle minus the angle between event and PMT.
///
/// The turns are multiplied from both ends, which takes half as long as one
/// after the other.
template <eRayFamily kFamily>
[[gnu::always_inline]] inline Rotation MissOf(const RayBranch& branch,
                                              const Known& known,
                                              const Ray& ray) {
  Rotation first = TurnAt<kFamily, kEventSite>(branch, ray);
  TurnOnAt<kFamily, kInsideSite>(branch, ray, first);
  TurnOnAt<kFamily, kInWallSite>(branch, ray, first);
  const Rotation atPMT = AtPMT(known.ratio, ray);
  Rotation last = {atPMT.cosine, -atPMT.sine};
  TurnOnAt<kFamily, kOuterSite>(branch, ray, last);
  TurnOnAt<kFamily, kOutWallSite>(branch, ray, last);
  const Rotation swept = first * last;
  return {
      branch.sign * (swept.cosine * known.cosine + swept.sine * known.sine),
      branch.sign * (swept.sine * known.cosine - swept.cosine * known.sine)};
}

/// The turn of t that corrects a small miss.
[[gnu::always_inline]] inline double StepFor(const RayBranch& branch,
                                             const Rotation& miss,
                                             double inverseSlope) {
  return -branch.sense * miss.sine * inverseSlope;
}

/// Turn t; the series are exact to 1e-16 below 0.005.
[[gnu::always_inline]] inline Ray Turned(const Ray& ray, double step) {
  const double step2 = step * step;
  const double c = 1.0 - step2 * (0.5 - step2 * (1.0 / 24.0));
  const double s = step * (1.0 - step2 * (1.0 / 6.0 - step2 * (1.0 / 120.0)));
  return {ray.cosT * c - ray.sinT * s, ray.sinT * c + ray.cosT * s};
}

/// Correct t a last time.
///
/// The inverse slope between the estimate and the exact ray differs from that
/// of the cell by at most the spread.
///
/// @return a bound on the error that is left
template <eRayFamily kFamily>
[[gnu::always_inline]] inline double CorrectLast(const RayBranch& branch,
                                                 const Known& known, Ray& ray) {
  const Rotation miss = MissOf<kFamily>(branch, known, ray);
  const double size = miss.sine < 0.0 ? -miss.sine : miss.sine;
  const bool isKnown = (miss.cosine > 0.0) & (size < kLargestMiss) &
                       (ray.cosT > branch.leastCosine) &
                       (known.sine > kLeastSine);
  const double bound =
      size * known.spread +
      known.angleError * (1.0 + known.inverseSlope + known.spread);
  ray = Turned(ray, StepFor(branch, miss, known.inverseSlope));
  return isKnown ? bound : kInfinity;
}

/// Correct t three times, from the second time on with the inverse slope of the
/// chord (the secant method).
template <eRayFamily kFamily>
[[gnu::always_inline]] inline void CorrectOften(const RayBranch& branch,
                                                const Known& known, Ray& ray) {
  const double low = known.inverseSlope - known.spread;
  const double high = known.inverseSlope + known.spread;
  const auto chord = [&](double step, const Rotation& before,
                         const Rotation& after) {
    const double rise = after.sine - before.sine;
    const double inverse = branch.sense * step / (rise != 0.0 ? rise : 1.0);
    return inverse > low ? (inverse < high ? inverse : high) : low;
  };
  const Rotation first = MissOf<kFamily>(branch, known, ray);
  const double step1 = StepFor(branch, first, known.inverseSlope);
  ray = Turned(ray, step1);
  const Rotation second = MissOf<kFamily>(branch, known, ray);
  const double step2 = StepFor(branch, second, chord(step1, first, second));
  ray = Turned(ray, step2);
  const Rotation third = MissOf<kFamily>(branch, known, ray);
  ray = Turned(ray, StepFor(branch, third, chord(step2, second, third)));
  // A first step beyond the series changes the length.
  const double scale =
      1.0 / __builtin_sqrt(ray.cosT * ray.cosT + ray.sinT * ray.sinT);
  ray = {scale * ray.cosT, scale * ray.sinT};
}

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

/// Find t and its bound from the estimates.
template <eRayFamily kFamily, eSteps kSteps>
void Correct(const RayBranch& b, const RayPMTs& p, const Estimates& found,
             RayBlock& k, std::size_t count) {
  const RayBranch branch = b;
  const RayPMTs pmts = p;
#pragma GCC ivdep  // nothing that is given is among the results
  for (std::size_t i = 0; i < count; ++i) {
    const double sine = found.sine.at[i];
    const double inverseSine = 1.0 / (sine > kLeastSine ? sine : kLeastSine);
    const Known known = {k.cosine.at[i],
                         sine,
                         branch.highest * pmts.inverseRadius[i],
                         found.inverseSlope.at[i],
                         found.spread.at[i],
                         kAngleError + kCosineError * inverseSine};
    Ray ray = {found.cosT.at[i], found.sinT.at[i]};
    if constexpr (kSteps == eSteps::kMany) {
      CorrectOften<kFamily>(branch, known, ray);
    }
    k.bound.at[i] = CorrectLast<kFamily>(branch, known, ray);
    k.inverseSine.at[i] = inverseSine;
    k.cosT.at[i] = ray.cosT;
    k.sinT.at[i] = ray.sinT;
  }
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
  Correct<kFamily, kSteps>(branch, pmts, found, k, count);
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

/// Sines and cosines of a ray's angles to the radius.
struct Angles {
  double eventCosine, eventSine;
  double insideCosine, insideSine;
  double outerCosine, outerSine;
  double cosine, sine;  // at the PMT
};

template <eRayFamily kFamily>
[[gnu::always_inline]] inline Angles AnglesOf(const RayBranch& branch,
                                              const Known& known,
                                              const Ray& ray) {
  const double atEvent = CosineAt(branch, kEventSite, ray);
  const Rotation atPMT = AtPMT(known.ratio, ray);
  constexpr bool kIsInward = kFamily == eRayFamily::kInwardFromInside;
  return {kIsEventT<kFamily> ? ray.cosT
          : kIsInward        ? -atEvent
                             : atEvent,
          branch.ratios[kEventSite] * ray.sinT,
          CosineAt(branch, kInsideSite, ray),
          branch.ratios[kInsideSite] * ray.sinT,
          CosineAt(branch, kOuterSite, ray),
          branch.ratios[kOuterSite] * ray.sinT,
          atPMT.cosine,
          atPMT.sine};
}

/// Set the points and directions of a path. Seen from the centre, a point is as
/// far from the end of its segment as the angle to the radius has changed.
[[gnu::always_inline]] inline void Place(const RayOrigin& event,
                                         const Plane& plane, double x,
                                         const Angles& at, RayBlock& k,
                                         std::size_t i) {
  const auto set = [&](auto& toX, auto& toY, auto& toZ, double along,
                       double across) {
    toX.at[i] = along * event.x + across * plane.acrossX;
    toY.at[i] = along * event.y + across * plane.acrossY;
    toZ.at[i] = along * event.z + across * plane.acrossZ;
  };
  set(k.backX, k.backY, k.backZ, -at.eventCosine, -at.eventSine);
  set(k.firstX, k.firstY, k.firstZ,
      at.eventCosine * at.insideCosine + at.eventSine * at.insideSine,
      at.eventSine * at.insideCosine - at.eventCosine * at.insideSine);
  const double turnCosine = at.outerCosine * at.cosine + at.outerSine * at.sine;
  const double turnSine = at.outerSine * at.cosine - at.outerCosine * at.sine;
  set(k.pointX, k.pointY, k.pointZ, x * turnCosine + plane.sine * turnSine,
      plane.sine * turnCosine - x * turnSine);
  set(k.directionX, k.directionY, k.directionZ,
      x * at.cosine - plane.sine * at.sine,
      plane.sine * at.cosine + x * at.sine);
}

/// Complete the paths of rays from inside the vessel.
///
/// The angle between event and PMT is known by its cosine and its sine, each
/// from its own sum, so its error is a rounding error however small it is.
template <eRayFamily kFamily, bool kIsFolded>
void CompletePaths(const RayBranch& b, const RayOrigin& e, const RayRadii& r,
                   const RayPMTs& p, RayBlock& k, std::size_t count) {
  const RayBranch branch = b;
  const RayOrigin event = e;
  const RayPMTs pmts = p;
  const RayRadii radii = r;
  Estimates found;
  Estimate<kIsFolded>(branch, event, pmts, k, found, count);
#pragma GCC ivdep  // the PMTs are not among the results
  for (std::size_t i = 0; i < count; ++i) {
    const double x = k.cosine.at[i];
    const Plane plane = PlaneOf(event, pmts.x[i], pmts.y[i], pmts.z[i]);
    const Known known = {x,
                         plane.sine,
                         branch.highest * pmts.inverseRadius[i],
                         found.inverseSlope.at[i],
                         found.spread.at[i],
                         kAngleError};
    Ray ray = {found.cosT.at[i], found.sinT.at[i]};
    CorrectOften<kFamily>(branch, known, ray);
    k.bound.at[i] = CorrectLast<kFamily>(branch, known, ray);
    const Angles at = AnglesOf<kFamily>(branch, known, ray);
    Place(event, plane, x, at, k, i);
    // From a sphere outwards, the length to the point of the line nearest to
    // the centre is radius times cosine.
    k.lengthInside.at[i] =
        radii.inner * at.insideCosine - radii.event * at.eventCosine;
    k.lengthInWall.at[i] = radii.outer * CosineAt(branch, kOutWallSite, ray) -
                           radii.inner * CosineAt(branch, kInWallSite, ray);
    k.lengthInWater.at[i] =
        at.cosine / pmts.inverseRadius[i] - radii.outer * at.outerCosine;
    k.incidence.at[i] = AngleOf(at.sine, at.cosine);
  }
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
