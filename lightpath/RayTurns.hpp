#pragma once

#include <cstddef>

#include "lightpath/RayKernel.hpp"

namespace ZARN::DU {

// How rays turn: a part of RayKernel.cpp. It is compiled for several
// processors, so every function here is always inlined.

inline constexpr std::size_t kEventSite = 0;
inline constexpr std::size_t kInsideSite = 1;
inline constexpr std::size_t kInWallSite = 2;
inline constexpr std::size_t kOutWallSite = 3;
inline constexpr std::size_t kOuterSite = 4;

/// Whether the angle at the event is t itself. Its cosine then keeps its sign.
template <eRayFamily kFamily>
inline constexpr bool kIsEventT = kFamily == eRayFamily::kOutwardJoined;

struct Ray {
  double cosT, sinT;
};

struct Rotation {
  double cosine, sine;
};

[[gnu::always_inline]] inline Rotation operator*(const Rotation& a,
                                                 const Rotation& b) {
  return {a.cosine * b.cosine - a.sine * b.sine,
          a.sine * b.cosine + a.cosine * b.sine};
}

[[gnu::always_inline]] inline double CosineAt(const RayBranch& branch,
                                              std::size_t site,
                                              const Ray& ray) {
  const double ratio = branch.ratios[site];
  return __builtin_sqrt(branch.rests[site] +
                        ratio * ratio * (ray.cosT * ray.cosT));
}

/// The turn of a ray of a family at a site where it turns.
template <eRayFamily kFamily, std::size_t kSite>
[[gnu::always_inline]] inline Rotation TurnAt(const RayBranch& branch,
                                              const Ray& ray) {
  constexpr int kTurns = kNearTurns[static_cast<int>(kFamily)][kSite];
  static_assert(kTurns != 0 && kTurns <= 2 && kTurns >= -2);
  constexpr bool kIsT = kSite == kEventSite && kIsEventT<kFamily>;
  const double cosine = kIsT ? ray.cosT : CosineAt(branch, kSite, ray);
  const double sine = kIsT ? ray.sinT : branch.ratios[kSite] * ray.sinT;
  const Rotation turn = {cosine, kTurns < 0 ? -sine : sine};
  if constexpr (kTurns == 2 || kTurns == -2) return turn * turn;
  return turn;
}

/// The same for any site: nothing happens where the family does not turn.
template <eRayFamily kFamily, std::size_t kSite>
[[gnu::always_inline]] inline void TurnOnAt(const RayBranch& branch,
                                            const Ray& ray, Rotation& swept) {
  if constexpr (kNearTurns[static_cast<int>(kFamily)][kSite] != 0) {
    swept = swept * TurnAt<kFamily, kSite>(branch, ray);
  }
}

/// Cosine and sine of the angle to the radius at the PMT.
[[gnu::always_inline]] inline Rotation AtPMT(double ratio, const Ray& ray) {
  const double sine = ratio * ray.sinT;
  return {__builtin_sqrt(1.0 - sine * sine), sine};
}

}  // namespace ZARN::DU
