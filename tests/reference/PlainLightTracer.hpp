#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPathType.hpp"

namespace ZARN::Reference {

/// A point (mm) or a direction in the plane of a light path; the centre of the
/// vessel is the origin.
struct PlaneVector {
  double X = 0.0;
  double Y = 0.0;
};

/// A ray followed from an event to the sphere of a PMT.
struct TracedRay {
  static constexpr std::size_t kMostStretches = 5;

  /// From the media in the order in which the ray crossed them; uninitialised
  /// if it was totally reflected or never reaches the sphere of the PMT.
  DU::eLightPathType Type = DU::kUninitialised;
  double LaunchAngle = 0.0;
  double SweptAngle = 0.0;     ///< around the centre, rad; may exceed pi
  double OpticalLength = 0.0;  ///< sum of index times length, mm

  std::size_t Stretches = 0;  ///< straight pieces, each in one medium
  std::array<DU::eMedium, kMostStretches> Media{};
  std::array<PlaneVector, kMostStretches> Directions{};
  /// The event, the points on the vessel's surfaces, and the end.
  std::array<PlaneVector, kMostStretches + 1> Points{};
};

/// Follow one ray through the media with plain vector arithmetic: the line
/// meets the next sphere, Snell's law changes its direction there, and so on.
/// It shares neither code nor method with the solver, so a mistake in one of
/// them shows as a difference.
///
/// The ray ends where it crosses the sphere of the PMT outwards in the water.
/// Total reflection ends it without a path. A line that only touches a sphere
/// stays outside of it.
///
/// @param eventRadius  the ray starts at (eventRadius, 0), mm, > 0
/// @param pmtRadius    mm, >= OuterRadius
/// @param launchAngle  angle to the outward radius, in [0, pi]: the ray leaves
///                     in the direction (cos, sin) of it
TracedRay TraceRay(const DU::ConcentricMedia& media, double eventRadius,
                   double pmtRadius, double launchAngle);

/// Rays of very many launch angles from one event radius to one PMT radius:
/// finds by trying them all which ones reach a PMT.
class LaunchScan {
 public:
  /// @param launches  evenly spaced launch angles; more are added where the
  ///                  type of path changes (at grazing incidence) and where the
  ///                  swept angle has an extremum
  LaunchScan(const DU::ConcentricMedia& media, double eventRadius,
             double pmtRadius, int launches);

  double EventRadius() const { return eventRadius_; }
  double PmtRadius() const { return pmtRadius_; }

  /// The paths through the vessel to a PMT at this angle from the event as seen
  /// from the centre, in (0, pi).
  std::vector<TracedRay> PathsTo(double angle) const;

  /// A swept angle at which paths begin or end: one at grazing incidence or at
  /// a critical angle, two at a caustic.
  struct End {
    double SweptAngle;
    double Blur;  ///< its uncertainty in double precision
  };
  const std::vector<End>& Ends() const { return ends_; }

  /// Whether a PMT lies so close to an end that a scan need not see the same
  /// number of paths as another method.
  bool IsNearAnEnd(double angle, double margin) const;

  /// By how much rounding may change the launch angle at which a traced ray
  /// meets or misses a sphere: near a right angle its sine hardly changes.
  static double BlurOf(double launchAngle);

  /// The swept angles that lead to the same place: the short way, the long way
  /// round, and a full turn plus the short way.
  static std::array<double, 3> WaysAround(double angle);

 private:
  struct Sample {
    double LaunchAngle;
    double SweptAngle;
    DU::eLightPathType Type;
  };

  Sample Launch(double launchAngle) const;
  End EndAt(const Sample& sample) const;
  void Spread(double low, double high, int launches);
  void SortSamples();
  void RefineBorders();
  void FindEnds();
  void RefineTurns();
  bool AreNeighbours(std::size_t i) const;

  DU::ConcentricMedia media_;
  double eventRadius_;
  double pmtRadius_;
  std::vector<Sample> samples_;  // by launch angle
  std::vector<End> ends_;
};

}  // namespace ZARN::Reference
