#pragma once

#include <optional>
#include <vector>

#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/Kernels.hpp"
#include "lightpath/LightPathType.hpp"
#include "lightpath/RayKernel.hpp"

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

/// Which path type light takes over a range of directions to the PMT, and the
/// table of its rays.
struct RayRange {
  eLightPathType type = kUninitialised;
  RayBranch branch = {};
  std::vector<RayCell> cells;
};

/// What light a table is for: that of CalcByPosition or of
/// CalcReflectionByPosition.
enum class eLight { kDirect, kReflected };

/// The shortest rays from one event to PMTs in all directions.
///
/// x is the cosine of the angle between event and PMT, seen from the centre.
/// For x > leastNear the shortest ray is that of Near(), for x < mostFar that
/// of Far(); between highestEmpty and lowestEmpty there is none. What lies in
/// between is not known.
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
  struct Piece;

 private:
  void SetThrough(const Reaches& reaches, eRayFamily nearFamily,
                  eRayFamily farFamily);
  void SetFromWater(const ConcentricMedia& media, double eventRadius,
                    const Reaches& reaches);
  void SetReflected(const ConcentricMedia& media, double eventRadius,
                    const Reaches& reaches);
  void SetNear(const Piece& piece, double end, double margin);
  void SetFar(const Piece& piece, double begin, double margin);
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
