#pragma once

#include <cstddef>

#include "lightpath/RayEstimates.hpp"
#include "lightpath/RayKernel.hpp"
#include "lightpath/RayPlane.hpp"
#include "lightpath/RayTurns.hpp"

namespace ZARN::DU {

// How estimates of rays are corrected: a part of RayKernel.cpp. It is compiled
// for several processors, so every function here is always inlined.

/// Error of the difference between the swept angle and the angle between event
/// and PMT, rad, of this kernel and of the exact search together. The search
/// ends within 4e-15 of the angle that it computes, which has an error of 4e-15
/// itself; the kernel's product of up to 11 turns has one of 11 * 4e-16. The
/// unit vectors, and the sums of products with them, are rounded too.
inline constexpr double kAngleError = 2e-14;

/// The angle between event and PMT is known by its cosine, with an error of 4
/// roundings. This times the inverse sine is the error of the angle; a point is
/// moved by it once more, since it is composed of both unit vectors.
inline constexpr double kCosineError = 2e-15;

/// The rotation by the swept angle minus the angle between event and PMT.
///
/// The turns are multiplied from both ends, which takes half as long as one
/// after the other.
///
/// @param ratio  at the PMT
/// @param cosine,sine  of the angle between event and PMT
template <eRayFamily kFamily>
[[gnu::always_inline]] inline Rotation MissOf(const RayBranch& branch,
                                              double ratio, double cosine,
                                              double sine, const Ray& ray) {
  Rotation first = TurnAt<kFamily, kEventSite>(branch, ray);
  TurnOnAt<kFamily, kInsideSite>(branch, ray, first);
  TurnOnAt<kFamily, kInWallSite>(branch, ray, first);
  const Rotation atPMT = AtPMT(ratio, ray);
  Rotation last = {atPMT.cosine, -atPMT.sine};
  TurnOnAt<kFamily, kOuterSite>(branch, ray, last);
  TurnOnAt<kFamily, kOutWallSite>(branch, ray, last);
  const Rotation swept = first * last;
  return {branch.sign * (swept.cosine * cosine + swept.sine * sine),
          branch.sign * (swept.sine * cosine - swept.cosine * sine)};
}

/// Turn t; the series are exact to 1e-16 below 0.005.
[[gnu::always_inline]] inline Ray Turned(const Ray& ray, double step) {
  const double step2 = step * step;
  const double c = 1.0 - step2 * (0.5 - step2 * (1.0 / 24.0));
  const double s = step * (1.0 - step2 * (1.0 / 6.0 - step2 * (1.0 / 120.0)));
  return {ray.cosT * c - ray.sinT * s, ray.sinT * c + ray.cosT * s};
}

/// What a correction starts from: the inverse slope of the cell, or that of the
/// chord between the last two rays (the secant method).
enum class eSlopes { kOfCells, kOfChords };

/// Correct t once.
template <eRayFamily kFamily, eSlopes kSlopes>
[[gnu::always_inline]] inline void Correct(const RayBranch& b, const RayPMTs& p,
                                           const RayBlock& k, Estimates& found,
                                           std::size_t count) {
  const RayBranch branch = b;
  const RayPMTs pmts = p;
#pragma GCC ivdep  // nothing that is given is among the results
  for (std::size_t i = 0; i < count; ++i) {
    const Ray ray = {found.cosT.at[i], found.sinT.at[i]};
    const double miss =
        MissOf<kFamily>(branch, branch.highest * pmts.inverseRadius[i],
                        k.cosine.at[i], found.sine.at[i], ray)
            .sine;
    double inverse = found.inverseSlope.at[i];
    if constexpr (kSlopes == eSlopes::kOfChords) {
      const double low = inverse - found.spread.at[i];
      const double high = inverse + found.spread.at[i];
      const double rise = miss - found.miss.at[i];
      const double chord =
          branch.sense * found.step.at[i] / (rise != 0.0 ? rise : 1.0);
      inverse = chord > low ? (chord < high ? chord : high) : low;
    }
    const double step = -branch.sense * miss * inverse;
    const Ray turned = Turned(ray, step);
    found.miss.at[i] = miss;
    found.step.at[i] = step;
    found.cosT.at[i] = turned.cosT;
    found.sinT.at[i] = turned.sinT;
  }
}

/// Correct t three times.
template <eRayFamily kFamily>
[[gnu::always_inline]] inline void CorrectOften(const RayBranch& branch,
                                                const RayPMTs& pmts,
                                                const RayBlock& k,
                                                Estimates& found,
                                                std::size_t count) {
  Correct<kFamily, eSlopes::kOfCells>(branch, pmts, k, found, count);
  Correct<kFamily, eSlopes::kOfChords>(branch, pmts, k, found, count);
  Correct<kFamily, eSlopes::kOfChords>(branch, pmts, k, found, count);
  // A first step beyond the series changes the length.
  for (std::size_t i = 0; i < count; ++i) {
    const Ray ray = {found.cosT.at[i], found.sinT.at[i]};
    const double scale =
        1.0 / __builtin_sqrt(ray.cosT * ray.cosT + ray.sinT * ray.sinT);
    found.cosT.at[i] = scale * ray.cosT;
    found.sinT.at[i] = scale * ray.sinT;
  }
}

/// Correct t a last time, and find its bound.
///
/// The inverse slope between the estimate and the exact ray differs from that
/// of the cell by at most the spread.
///
/// @param cosineError  times the inverse sine: the error of the angle to the
///                     PMT
template <eRayFamily kFamily>
[[gnu::always_inline]] inline void CorrectLast(const RayBranch& b,
                                               const RayPMTs& p,
                                               double cosineError,
                                               const Estimates& found,
                                               RayBlock& k, std::size_t count) {
  const RayBranch branch = b;
  const RayPMTs pmts = p;
#pragma GCC ivdep  // nothing that is given is among the results
  for (std::size_t i = 0; i < count; ++i) {
    const Ray ray = {found.cosT.at[i], found.sinT.at[i]};
    const double sine = found.sine.at[i];
    const double inverseSlope = found.inverseSlope.at[i];
    const double spread = found.spread.at[i];
    const Rotation miss =
        MissOf<kFamily>(branch, branch.highest * pmts.inverseRadius[i],
                        k.cosine.at[i], sine, ray);
    const double size = miss.sine < 0.0 ? -miss.sine : miss.sine;
    const bool isKnown = (miss.cosine > 0.0) & (size < kLargestMiss) &
                         (ray.cosT > branch.leastCosine) & (sine > kLeastSine);
    const double angleError = kAngleError + cosineError * k.inverseSine.at[i];
    const double bound =
        size * spread + angleError * (1.0 + inverseSlope + spread);
    const Ray turned = Turned(ray, -branch.sense * miss.sine * inverseSlope);
    k.bound.at[i] = isKnown ? bound : __builtin_inf();
    k.cosT.at[i] = turned.cosT;
    k.sinT.at[i] = turned.sinT;
  }
}

}  // namespace ZARN::DU
