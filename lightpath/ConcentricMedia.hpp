#pragma once

#include <array>
#include <cstddef>

namespace ZARN::DU {

/// The three media in which light travels, from the centre outwards.
enum class eMedium {
  kInnerAV,  ///< the liquid inside the vessel
  kAcrylic,  ///< the wall of the vessel
  kWater     ///< the water outside
};

/// One value for each medium, by eMedium.
using PerMedium = std::array<double, 3>;

constexpr std::size_t IndexOf(eMedium medium) {
  return static_cast<std::size_t>(medium);
}

/// The vessel at one wavelength: two concentric spheres around the origin, and
/// the media that they separate. The neck is ignored.
struct ConcentricMedia {
  double InnerRadius = 0.0;                     ///< mm, > 0
  double OuterRadius = 0.0;                     ///< mm, > InnerRadius
  PerMedium RefractiveIndex = {1.0, 1.0, 1.0};  ///< each >= 1

  double IndexIn(eMedium medium) const {
    return RefractiveIndex[IndexOf(medium)];
  }

  /// The medium at a distance from the centre, mm: inside if below the inner
  /// radius, wall if below the outer radius, else water.
  eMedium At(double radius) const {
    if (radius < InnerRadius) return eMedium::kInnerAV;
    return radius < OuterRadius ? eMedium::kAcrylic : eMedium::kWater;
  }
};

}  // namespace ZARN::DU
