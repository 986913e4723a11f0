#pragma once

#include <cstddef>
#include <cstdint>

namespace ZARN::DU {

// This header is included by code that is compiled for several processors, so
// it has no functions and includes no header that has.

/// The number of PMTs in a block: few enough that their data stays in the level
/// 2 cache.
inline constexpr std::size_t kRayBlock = 256;

/// Sites of a ray besides the PMT: the event and both sides of both surfaces.
inline constexpr std::size_t kNearSites = 5;

/// One cell of a table of rays: H as a cubic of the share of the cell that is
/// passed, and bounds of the inverse slope of the swept angle. In single
/// precision, since the estimate is corrected; the bounds cover this.
struct alignas(8) RayCell {
  float h0, h1, h2, h3;
  float inverseSlope;  ///< |dt/d(swept angle)|, the middle of its bounds
  float spread;        ///< half of their distance; infinite if unknown
};

/// The families that a table can hold.
enum class eRayFamily {
  kOutwardJoined,  ///< from inside, also inwards: the event is where t is
  kOutwardFromInside,
  kInwardFromInside,
  kOutwardFromWall,
  kInwardFromWall,
  kInwardFromWater,
  kReflected
};
inline constexpr std::size_t kRayFamilies = 7;

/// How often a ray of each family turns by the angle to the radius at the near
/// sites (RayFamily::Turns; at the PMT it is always -1).
// NOLINTNEXTLINE(*-avoid-c-arrays)
inline constexpr int kNearTurns[kRayFamilies][kNearSites] = {
    {1, -1, 1, -1, 1}, {1, -1, 1, -1, 1},  {-1, -1, 1, -1, 1},
    {1, 0, 0, -1, 1},  {-1, -2, 2, -1, 1}, {-1, -2, 2, -2, 2},
    {-1, 0, 0, 0, 2}};

/// The bound of a ray holds if its swept angle is wrong by less than this, rad.
/// The sine of such an angle equals it within 2e-16.
inline constexpr double kLargestMiss = 1e-5;

/// How often t is corrected: once, for PMTs at nearly the distance of the
/// table; or until the bound is as small as it can be.
enum class eSteps { kOne, kMany };

/// The rays of one family from one event, over the direction to the PMT.
///
/// A ray is described by t (SweptAngle.hpp). G is the angle between event and
/// PMT seen from the centre, or its supplement if opposite, so that the ray
/// through the centre has G = t = 0. The table gives
///     H = tan(t / 2) / tan(G / 2)
/// over y = cos(G), or over sqrt(y - fold) if the family ends at the fold of a
/// caustic. H is smooth also at G = 0 and pi.
struct RayBranch {
  eRayFamily family;
  double sense;  ///< 1, or -1 if opposite
  bool isFolded;
  double fold;   ///< y there
  double first;  ///< of the cells, in y or its root
  double scale;  ///< cells per unit
  int count;
  const RayCell* cells;
  double leastCosine;  ///< cos(t) of the last ray
  double sign;         ///< of the product of all turns
  // By site: the sine and cosine of the angle to the radius are ratio sin(t)
  // and sqrt(rest + (ratio cos(t))^2).
  double ratios[kNearSites];  // NOLINT(*-avoid-c-arrays)
  double rests[kNearSites];   // NOLINT(*-avoid-c-arrays)
  double highest;  ///< ratio at the PMT times its distance from the centre
};

/// Some PMTs: unit vectors to them, and their inverse distances from the
/// centre, 1/mm.
struct RayPMTs {
  const double* x;
  const double* y;
  const double* z;
  const double* inverseRadius;
};

/// Rays from one event to some PMTs.
struct RayBlock {
  template <class Number>
  struct alignas(64) Lane {
    Number at[kRayBlock];  // NOLINT(*-avoid-c-arrays)
  };

  // Cosine and inverse sine of the angle between event and PMT, and cosine and
  // sine of t.
  Lane<double> cosine, inverseSine, cosT, sinT;
  /// Bound on the error of t, rad; above it, infinity, if it is not known. The
  /// crossings and directions turn by at most as much.
  Lane<double> bound;
  // The last point on the vessel in units of its outer radius, and the
  // direction of travel from there to the PMT.
  Lane<double> pointX, pointY, pointZ;
  Lane<double> directionX, directionY, directionZ;
  // The first point, in units of its surface's radius, and the direction back
  // to the event.
  Lane<double> firstX, firstY, firstZ;
  Lane<double> backX, backY, backZ;
  // Length in each medium, mm, and the angle of incidence at the PMT, rad.
  Lane<double> lengthInside, lengthInWall, lengthInWater, incidence;
};

/// The direction to the event; any unit vector for one at the centre.
struct RayOrigin {
  double x, y, z;
};

/// Distances from the centre, mm.
struct RayRadii {
  double event, inner, outer;
};

/// The functions that process a block; one set for each kind of processor.
struct RayKernel {
  /// Find t, its bound, the last points and the directions from there.
  void (*trace)(const RayBranch& branch, const RayOrigin& event, eSteps steps,
                const RayPMTs& pmts, RayBlock& block, std::size_t count);
  /// For light from the water: find the first points and the directions back to
  /// the event.
  void (*traceBack)(const RayBranch& branch, const RayOrigin& event,
                    const RayPMTs& pmts, RayBlock& block, std::size_t count);
  /// For light from inside: find everything but t. The bound is smaller than
  /// that of trace.
  void (*complete)(const RayBranch& branch, const RayOrigin& event,
                   const RayRadii& radii, const RayPMTs& pmts, RayBlock& block,
                   std::size_t count);
};

extern const RayKernel kBaselineRayKernel;
#ifdef __x86_64__
extern const RayKernel kAVX2RayKernel;
extern const RayKernel kAVX512RayKernel;
#endif

}  // namespace ZARN::DU
