#pragma once

#include <array>
#include <string>
#include <vector>

#include "TVector3.h"
#include "display/MapContent.hpp"
#include "du/ShadowingCalculator.hpp"

namespace ZARN::Display {

// The shapes of the hardware, as a page draws them. Lengths in mm. A name is
// that of DU::NameOf(HardwareItem), or empty if no verdict tells this part from
// others.

/// A rope or pipe along a line through points.
struct PageTube {
  std::string name;
  double radius;
  std::vector<TVector3> points;
};

/// A plate: the outline of a patch of the sphere, ending where it begins.
struct PagePatch {
  std::string name;
  std::vector<TVector3> points;
};

/// An anchor.
struct PageSpot {
  std::string name;
  double radius;
  TVector3 at;
};

/// A horizontal circle around the z axis.
struct PageRing {
  std::string name;
  double radius;
  double z;
};

/// The parts of one component; none if it tests nothing.
struct PageHardware {
  eComponentState state = eComponentState::kNotLoaded;
  std::vector<PageTube> tubes;
  std::vector<PagePatch> patches;
  std::vector<PageSpot> spots;
  std::vector<PageRing> rings;
};

/// By component, in the order of testing.
using PageHardwareList = std::array<PageHardware, DU::kNumberOfComponents>;

/// The hardware of a run, without parts whose position is not finite.
///
/// Lines are as coarse as they can be without leaving a sample of the model
/// farther than 1 mm away.
PageHardwareList PageHardwareOf(const DU::ShadowingCalculator& shadowing);

/// Up to which height a page draws the neck: that of the highest hardware in it
/// or beside it; without any, the top of the vessel.
double NeckTopOf(const DU::ShadowingCalculator& shadowing,
                 const PageHardwareList& hardware);

/// A line through some of the points such that no point is farther from it than
/// @p tolerance (D. Douglas, T. Peucker, Cartographica 10, 1973).
std::vector<TVector3> Thinned(const std::vector<TVector3>& points,
                              double tolerance);

}  // namespace ZARN::Display
