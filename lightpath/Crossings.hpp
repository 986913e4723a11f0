#pragma once

#include <array>
#include <cstddef>

#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPathType.hpp"

namespace ZARN::DU {

/// What a light path does at a point on a vessel surface.
enum class eCrossing {
  kIntoWall,     ///< outer surface, from the water
  kIntoInside,   ///< inner surface, from the wall
  kOutOfInside,  ///< inner surface, into the wall
  kOutOfWall,    ///< outer surface, into the water
  kReflection    ///< outer surface, from the water back into it
};

/// Whether light travels away from the centre or towards it.
enum class eSense { kOutward, kInward };

/// The direction in which the light arrives at a crossing.
constexpr eSense SenseBefore(eCrossing crossing) {
  return crossing == eCrossing::kOutOfInside ||
                 crossing == eCrossing::kOutOfWall
             ? eSense::kOutward
             : eSense::kInward;
}

/// The direction in which it leaves.
constexpr eSense SenseAfter(eCrossing crossing) {
  return crossing == eCrossing::kReflection ? eSense::kOutward
                                            : SenseBefore(crossing);
}

constexpr bool IsAtInnerSurface(eCrossing crossing) {
  return crossing == eCrossing::kIntoInside ||
         crossing == eCrossing::kOutOfInside;
}

/// The medium that the light leaves at a crossing.
constexpr eMedium MediumBefore(eCrossing crossing) {
  if (crossing == eCrossing::kOutOfInside) return eMedium::kInnerAV;
  return crossing == eCrossing::kIntoInside || crossing == eCrossing::kOutOfWall
             ? eMedium::kAcrylic
             : eMedium::kWater;
}

/// The medium that it enters.
constexpr eMedium MediumAfter(eCrossing crossing) {
  if (crossing == eCrossing::kIntoInside) return eMedium::kInnerAV;
  return crossing == eCrossing::kIntoWall || crossing == eCrossing::kOutOfInside
             ? eMedium::kAcrylic
             : eMedium::kWater;
}

/// The crossings of one path type, in order from the event to the PMT: the i-th
/// is at AVPoint<i>.
class CrossingList {
 public:
  template <class... Crossings>
  constexpr explicit CrossingList(Crossings... crossings)
      : crossings_{crossings...}, size_(sizeof...(crossings)) {}

  constexpr const eCrossing* begin() const { return crossings_.data(); }
  constexpr const eCrossing* end() const { return begin() + size_; }
  constexpr std::size_t size() const { return size_; }

 private:
  std::array<eCrossing, 4> crossings_;
  std::size_t size_;
};

/// The crossings of each path type; empty for the straight path through water
/// and for an uninitialised path.
inline constexpr std::array<CrossingList, kNumberOfLightPathTypes> kCrossings =
    {CrossingList(),
     CrossingList(eCrossing::kOutOfInside, eCrossing::kOutOfWall),
     CrossingList(eCrossing::kIntoInside, eCrossing::kOutOfInside,
                  eCrossing::kOutOfWall),
     CrossingList(eCrossing::kOutOfWall),
     CrossingList(eCrossing::kIntoWall, eCrossing::kIntoInside,
                  eCrossing::kOutOfInside, eCrossing::kOutOfWall),
     CrossingList(eCrossing::kIntoWall, eCrossing::kOutOfWall),
     CrossingList(),
     CrossingList(eCrossing::kReflection)};

}  // namespace ZARN::DU
