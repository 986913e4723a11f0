#pragma once

#include <optional>
#include <vector>

#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/Kernels.hpp"
#include "lightpath/LightPathType.hpp"
#include "lightpath/RayKernel.hpp"
#include "lightpath/RayRange.hpp"

namespace ZARN::DU {

/// The loops for a kind of processor.
const RayKernel& RayKernelOf(eKernel kernel);

/// Distances of some PMTs from the centre, mm: for one of them a table is made,
/// and it holds for all.
struct PMTRadii {
  double lowest;
  double middle;
  double highest;
};

/// The shortest rays from one event to PMTs in all directions.
///
/// x is the cosine of the angle between event and PMT, seen from the centre.
/// For x > LeastNear() the shortest ray is that of Near(), for x < MostFar()
/// that of Far(); between LeastEmpty() and MostEmpty() there is none. The rest
/// is not known. Media and radii in which the following is not proved give an
/// empty table.
///
/// 1. Inside and in the wall there are two families, one that starts outwards
///    from x = 1 and one that starts inwards from x = -1. RayCurve finds their
///    folds (caustics), and proves between any two of its points that there is
///    no other. No swept angle may exceed pi, so that no ray goes the long way
///    round the centre.
/// 2. Along a family d(optical length) = invariant * d(swept angle), and the
///    invariant grows with t. Beyond the one fold of the inward family the
///    invariant is larger than before it, so rays there are longer than those
///    before it with the same swept angle. The same holds for both folds of a
///    family that starts outwards and goes on inwards: no ray between them is
///    the shortest.
/// 3. Where both families overlap, the difference of their lengths grows with
///    the angle; they change places where it is zero.
/// 4. From the water the path is straight up to the angle at which the line
///    touches the vessel; beyond it only the family through the inside may
///    exist, not the one that stays in the wall.
///
/// All this is proved for the PMTs' middle distance with margins for the
/// others (CurveSlack).
class RayTable {
 public:
  RayTable(eLight light, const ConcentricMedia& media, double eventRadius,
           const PMTRadii& pmts, int cells);
  RayTable(const RayTable&) = delete;  // the branches point to their cells
  RayTable& operator=(const RayTable&) = delete;

  const std::optional<RayRange>& Near() const { return near_; }
  const std::optional<RayRange>& Far() const { return far_; }
  double LeastNear() const { return leastNear_; }
  double MostFar() const { return mostFar_; }
  double LeastEmpty() const { return leastEmpty_; }
  double MostEmpty() const { return mostEmpty_; }

  class Reaches;

 private:
  void SetThrough(const Reaches& reaches, eRayFamily nearFamily,
                  eRayFamily farFamily);
  void SetFromWater(const ConcentricMedia& media, double eventRadius,
                    const Reaches& reaches);
  void SetReflected(const ConcentricMedia& media, double eventRadius,
                    const Reaches& reaches);
  void SetNear(const RayPiece& piece, double end, double margin);
  void SetFar(const RayPiece& piece, double begin, double margin);
  void SetEmpty(double begin, double end, double margin);

  int cells_;
  std::optional<RayRange> near_;
  std::optional<RayRange> far_;
  double leastNear_ = 2.0;
  double mostFar_ = -2.0;
  double leastEmpty_ = 2.0;
  double mostEmpty_ = -2.0;
};

}  // namespace ZARN::DU
