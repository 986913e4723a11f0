#pragma once

#include <array>
#include <cstddef>

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathType.hpp"

namespace ZARN::Display {

// A page stores one angle of each light path, in single precision, and traces
// the path again from it. What follows does the same, so that paths which this
// does not give exactly enough can be stored instead. Lengths in mm, angles in
// rad. The page's own copy is display/web/src/data/lightPath.ts.

/// A light path as straight segments between points, from the event over the
/// vessel's surfaces to the PMT.
struct PathPoints {
  static constexpr std::size_t kMost = 6;

  std::array<TVector3, kMost> points;
  std::size_t count = 0;
  /// Of each segment, so one fewer than points.
  std::array<DU::eMedium, kMost - 1> media = {};

  void Add(const TVector3& point, DU::eMedium before) {
    media[count - 1] = before;
    points[count++] = point;
  }
};

/// Those of a computed path. @pre its type is known and initialised
PathPoints PointsOf(const DU::LightPath& path);

/// ns
double TimeOfFlight(const PathPoints& path, const DU::PerMedium& groupIndices);

/// The angle at the event between the outward radius and the direction of
/// travel; negative if the path turns around the centre the longer way. If
/// event, PMT and centre are on one line: 0 if the event is at the centre or on
/// the PMT's side of it, else pi.
double LaunchAngle(const DU::LightPath& path);

/// Trace a path from its angle.
///
/// It is in the plane of event, PMT and centre. In a medium of index n, at the
/// distance r from the centre, n r sin(angle to the radius) is the same all
/// along it. The light goes on until it leaves the vessel for the last time, or
/// is reflected; then it goes to the PMT, whatever its direction. Straight if
/// the line to the PMT does not leave the water; if the event is at the centre;
/// and if event, PMT and centre are on one line: if the sine of the angle
/// between event and PMT, seen from the centre, is at most kInLine.
///
/// @param event  at another place than the PMT
/// @param pmt    in the water
PathPoints TracePath(const DU::ConcentricMedia& media, const TVector3& event,
                     const TVector3& pmt, double angle, DU::eLight kind);
inline constexpr double kInLine = 1e-12;

/// Whether two paths are the same for a page: the same number of points and the
/// same media, no point farther than 0.02 mm from the other's, and times that
/// differ by 2e-4 ns at most. (The page promises 0.1 mm and 1e-3 ns. A browser
/// rounds sines in its own way.)
bool AreSame(const PathPoints& a, const PathPoints& b,
             const DU::PerMedium& groupIndices);

}  // namespace ZARN::Display
