#pragma once

#include <array>
#include <cmath>
#include <cstddef>

#include "TMath.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/Crossings.hpp"
#include "lightpath/LightPathType.hpp"
#include "lightpath/Rotor.hpp"

namespace ZARN::DU {

// The angle by which a ray turns around the centre, the swept angle.
//
// Along a ray through concentric media the invariant n r sin(angle to the
// radius) is constant (Bouguer's law; M. Born, E. Wolf, Principles of Optics,
// section 3.2), so one number describes a ray.

/// Places on a ray: its two ends, and the vessel's surfaces as seen from either
/// side.
enum class eSite {
  kEvent,
  kInnerFromInside,
  kInnerFromWall,
  kOuterFromWall,
  kOuterFromWater,
  kPMT
};

/// One value for each site, by eSite.
template <class Value>
using PerSite = std::array<Value, 6>;

constexpr std::size_t IndexOf(eSite site) {
  return static_cast<std::size_t>(site);
}

/// The site at which light in @p medium meets the surface of a crossing.
constexpr eSite SiteAt(eCrossing crossing, eMedium medium) {
  if (IsAtInnerSurface(crossing)) {
    return medium == eMedium::kInnerAV ? eSite::kInnerFromInside
                                       : eSite::kInnerFromWall;
  }
  return medium == eMedium::kWater ? eSite::kOuterFromWater
                                   : eSite::kOuterFromWall;
}

/// Refractive index times distance from the centre, mm, by site: the largest
/// invariant of a ray that gets there.
PerSite<double> ReachesOf(const ConcentricMedia& media, double eventRadius,
                          double pmtRadius);

/// Rays that start in the same sense (outwards or inwards) and cross the same
/// surfaces.
///
/// Light that leaves a site outwards, at an angle to the radius whose sine is
/// invariant / reach, would turn by that angle around the centre on an
/// infinitely long straight line; inwards, by pi minus it. A segment turns by
/// the difference of its ends, so the swept angle of a ray is Base plus the sum
/// over the sites of Turns * arcsin(invariant / reach).
struct RayFamily {
  eLightPathType Type = kUninitialised;
  eSense Launch = eSense::kOutward;
  double Base = 0.0;        ///< rad
  PerSite<int> Turns = {};  ///< -2 to 2

  constexpr RayFamily(eLightPathType type, eSense launch);

 private:
  constexpr void Leave(eSite site, eSense sense);
  constexpr void ComeTo(eSite site, eSense sense);
};

/// The swept angle of one family's rays as a function of t, the angle to the
/// radius at the site with the smallest reach, where the light grazes first.
///
/// The invariant is Highest() sin(t), with t from 0 to pi/2. All angles along
/// the ray are smooth in t, also at grazing incidence, where their derivative
/// by the invariant is infinite.
class SweptAngle {
 public:
  SweptAngle(const RayFamily& family, const PerSite<double>& reaches);

  /// One ray of the family.
  struct Ray {
    double T = 0.0;      ///< rad
    double Angle = 0.0;  ///< the swept angle, rad
    // Its derivatives by t.
    double Slope = 0.0;
    double Curve = 0.0;
    double Third = 0.0;

    // The slope is a sum over the sites of Turns times a function that grows
    // with cos(t); its derivative by cos(t) is a sum of Turns times a function
    // that falls with cos(t). Summed separately for positive and negative
    // Turns, they give bounds of both between two rays.
    double Growing = 0.0;
    double Shrinking = 0.0;
    double GrowingCurve = 0.0;
    double ShrinkingCurve = 0.0;

    // Of the angle to the radius, 0 to pi/2, at each site.
    PerSite<double> Cosines;
    PerSite<double> Sines;

    /// The derivative of Slope by cos(t), Curve without its factor -sin(t).
    double CurveByCosine() const { return GrowingCurve - ShrinkingCurve; }

    Rotor AngleToRadius(eSite site) const {
      return {Cosines[IndexOf(site)], Sines[IndexOf(site)]};
    }
  };

  Ray At(double t) const;

  /// The ray at t = 0, through the centre; needs no trigonometric functions.
  Ray Central() const;

  /// Sum of refractive index times length along a ray, mm.
  double OpticalLength(const Ray& ray) const;

  double Highest() const { return highest_; }
  /// Highest() / reach by site, 0 if the site is not on the path: the sine of
  /// the angle to the radius there is this times sin(t).
  const PerSite<double>& Ratios() const { return ratios_; }
  /// Whether rays of the family start or end on the far side of the centre: the
  /// product of their turns is that of a swept angle that differs by pi.
  bool IsBaseOdd() const { return isBaseOdd_; }
  /// 1 - ratio^2: the cosine is sqrt(rest + (ratio cos(t))^2).
  const PerSite<double>& Rests() const { return rests_; }

  /// The t of an invariant up to Highest(). (The arc sine would lose half of
  /// the digits near grazing incidence.)
  double TOf(double invariant) const {
    return std::atan2(
        invariant, std::sqrt((highest_ - invariant) * (highest_ + invariant)));
  }

  /// Upper bounds on the number of zeros, counted with their multiplicity, that
  /// Slope and CurveByCosine() have over the whole range of t.
  ///
  /// Up to positive factors these are the sums over the sites of
  ///     Turns / sqrt(reach^2 - invariant^2)   and
  ///     Turns (reach^2 - Highest()^2) / sqrt(reach^2 - invariant^2)^3,
  /// Laplace transforms of sums of exponentials. With the sites ordered by
  /// reach, such a sum has at most as many zeros as the partial sums of its
  /// numerators have sign changes (Laguerre's sharper form of Descartes' rule;
  /// S. Karlin, Total Positivity, 1968, chapter 5).
  int MostExtrema() const { return mostExtrema_; }
  int MostInflections() const { return mostInflections_; }

 private:
  void CountSigns();
  void AddUpSlopes(Ray& ray, const PerSite<double>& slopes,
                   const PerSite<double>& curves) const;

  double base_;
  bool isBaseOdd_;
  bool startsInWater_;
  PerSite<double> turns_;
  PerSite<double> growing_;    // positive turns, else 0
  PerSite<double> shrinking_;  // absolute values of negative turns, else 0
  PerSite<double> reaches_;
  double highest_;
  PerSite<double> ratios_;  // Highest() / reach; 0 if not on the path
  PerSite<double> rests_;   // 1 - ratio^2
  int mostExtrema_ = 0;
  int mostInflections_ = 0;
};

constexpr RayFamily::RayFamily(eLightPathType type, eSense launch)
    : Type(type), Launch(launch) {
  Leave(eSite::kEvent, launch);
  for (const eCrossing crossing : kCrossings[type]) {
    ComeTo(SiteAt(crossing, MediumBefore(crossing)), SenseBefore(crossing));
    Leave(SiteAt(crossing, MediumAfter(crossing)), SenseAfter(crossing));
  }
  ComeTo(eSite::kPMT, eSense::kOutward);
}

constexpr void RayFamily::Leave(eSite site, eSense sense) {
  if (sense == eSense::kInward) Base += TMath::Pi();
  Turns[IndexOf(site)] += sense == eSense::kInward ? -1 : 1;
}

constexpr void RayFamily::ComeTo(eSite site, eSense sense) {
  if (sense == eSense::kInward) Base -= TMath::Pi();
  Turns[IndexOf(site)] += sense == eSense::kInward ? 1 : -1;
}

}  // namespace ZARN::DU
