#include "lightpath/PathBatch.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "lightpath/PathBetween.hpp"
#include "lightpath/PathLengths.hpp"

namespace ZARN::DU {
namespace {

/// With fewer PMTs a table costs more than it saves.
constexpr std::size_t kFewestPMTs = 16;

/// The number of cells of a table.
constexpr int kCells = 64;

/// The columns of a row that are points on the vessel.
constexpr std::array<VectorColumns LightPathRow::*, 4> kPointColumns = {
    &LightPathRow::AVPoint1, &LightPathRow::AVPoint2, &LightPathRow::AVPoint3,
    &LightPathRow::AVPoint4};

/// A bound, in the unit of each column, for rays that are known within @p angle
/// (rad).
///
/// Where an angle to the radius has the derivative a by t, |a| <= 1. A crossing
/// is where two of them differ from an end, so seen from the centre it moves by
/// at most 2 rad per rad of t; so do both ends of a length, along one line: its
/// derivative is the difference of two a times the line's distance from the
/// centre. The bound of the angle already has a term for the error of the
/// crossings themselves. The time adds up all lengths.
class BoundOfPaths {
 public:
  BoundOfPaths(const ConcentricMedia& media, const PerMedium& groupIndices) {
    double slowness = 0.0;
    for (const double index : groupIndices) slowness += std::abs(index);
    slowness /= kSpeedOfLight;
    perAngle_ =
        std::max(1.0, 2.0 * media.OuterRadius * std::max(1.0, slowness));
    perRadius_ = kRounding * std::max(1.0, slowness);
  }

  double Of(double angle, double pmtRadius) const {
    return perAngle_ * angle + perRadius_ * pmtRadius;
  }

 private:
  /// Rounding errors of coordinates and of sums of a few of them, relative to
  /// the largest.
  static constexpr double kRounding =
      16 * std::numeric_limits<double>::epsilon();

  double perAngle_;
  double perRadius_;
};

void Set(double* column, std::uint32_t pmt, double value) {
  if (column != nullptr) column[pmt] = value;
}

void Set(const VectorColumns& columns, std::uint32_t pmt,
         const TVector3& value) {
  Set(columns.x, pmt, value.X());
  Set(columns.y, pmt, value.Y());
  Set(columns.z, pmt, value.Z());
}

}  // namespace

PathBatch::PathBatch(const ConcentricMedia& media,
                     const PerMedium& groupIndices, const TVector3& eventPos,
                     const PMTArray& pmts)
    : media_(media),
      groupIndices_(groupIndices),
      eventPos_(eventPos),
      pmts_(pmts),
      radii_{eventPos.Mag(), media.InnerRadius, media.OuterRadius} {
  constexpr double kAtCentre = 1e-100;
  if (radii_.event < kAtCentre) return;
  // The same unit vector as that of a single path.
  const TVector3 direction = eventPos * (1.0 / radii_.event);
  origin_ = {direction.X(), direction.Y(), direction.Z()};
}

void PathBatch::Calc(const LightPathRow& row) {
  row_ = row;
  std::size_t done = 0;
  if (media_.At(radii_.event) == eMedium::kInnerAV) {
    for (const PMTArray::Group& group : pmts_.Groups()) {
      if (group.end - group.begin >= kFewestPMTs) {
        CalcGroup(group);
      } else {
        CalcSingle(group.begin, group.end);
      }
      done = group.end;
    }
  }
  CalcSingle(done, pmts_.Count());
}

void PathBatch::CalcGroup(const PMTArray::Group& group) {
  const RayTable table(
      eLight::kDirect, media_, radii_.event,
      {group.lowest, 0.5 * (group.lowest + group.highest), group.highest},
      kCells);
  Queue near;
  Queue far;
  for (std::size_t i = group.begin; i < group.end; ++i) {
    const double x = origin_.x * pmts_.X()[i] + origin_.y * pmts_.Y()[i] +
                     origin_.z * pmts_.Z()[i];
    const auto index = static_cast<std::uint32_t>(i);
    if (x > table.LeastNear()) {
      near.indexes[near.count++] = index;
      if (near.count == kRayBlock) CalcQueue(*table.Near(), near);
    } else if (x < table.MostFar()) {
      far.indexes[far.count++] = index;
      if (far.count == kRayBlock) CalcQueue(*table.Far(), far);
    } else if (x > table.LeastEmpty() && x < table.MostEmpty()) {
      WriteSingle(pmts_.Order()[i], LightPath());
    } else {
      CalcSingle(pmts_.Order()[i]);
    }
  }
  if (near.count > 0) CalcQueue(*table.Near(), near);
  if (far.count > 0) CalcQueue(*table.Far(), far);
}

void PathBatch::CalcQueue(const RayRange& range, Queue& queue) {
  for (std::size_t i = 0; i < queue.count; ++i) {
    const std::uint32_t index = queue.indexes[i];
    numbers_[i] = pmts_.Order()[index];
    rays_.pmtX.at[i] = pmts_.X()[index];
    rays_.pmtY.at[i] = pmts_.Y()[index];
    rays_.pmtZ.at[i] = pmts_.Z()[index];
    rays_.inverseRadius.at[i] = pmts_.InverseRadius()[index];
  }
  kernel_->complete(range.branch, origin_, radii_, rays_, queue.count);
  Write(range, queue.count);
  queue.count = 0;
}

/// Write the paths of a block to the columns.
void PathBatch::Write(const RayRange& range, std::size_t count) {
  using Lane = RayBlock::Lane<double>;
  const auto put = [&](double* column, auto valueAt) {
    if (column == nullptr) return;
    for (std::size_t i = 0; i < count; ++i) column[numbers_[i]] = valueAt(i);
  };
  const auto putVector = [&](const VectorColumns& columns, double scale,
                             const Lane& x, const Lane& y, const Lane& z) {
    put(columns.x, [&](std::size_t i) { return scale * x.at[i]; });
    put(columns.y, [&](std::size_t i) { return scale * y.at[i]; });
    put(columns.z, [&](std::size_t i) { return scale * z.at[i]; });
  };
  if (row_.LightPathType != nullptr) {
    for (std::size_t i = 0; i < count; ++i) {
      row_.LightPathType[numbers_[i]] = range.type;
    }
  }
  const RayBlock& k = rays_;
  putVector(row_.InitialDirection, -1.0, k.backX, k.backY, k.backZ);
  putVector(row_.FinalDirection, 1.0, k.directionX, k.directionY, k.directionZ);
  putVector(row_.AVPoint1, media_.InnerRadius, k.firstX, k.firstY, k.firstZ);
  putVector(row_.AVPoint2, media_.OuterRadius, k.pointX, k.pointY, k.pointZ);
  const auto zero = [](std::size_t) { return 0.0; };
  for (const auto point : {kPointColumns[2], kPointColumns[3]}) {
    put((row_.*point).x, zero);
    put((row_.*point).y, zero);
    put((row_.*point).z, zero);
  }
  put(row_.Lengths[0], [&](std::size_t i) { return k.lengthInside.at[i]; });
  put(row_.Lengths[1], [&](std::size_t i) { return k.lengthInWall.at[i]; });
  put(row_.Lengths[2], [&](std::size_t i) { return k.lengthInWater.at[i]; });
  put(row_.TimeOfFlight, [&](std::size_t i) {
    return TimeOfFlightOf(
        {k.lengthInside.at[i], k.lengthInWall.at[i], k.lengthInWater.at[i]},
        groupIndices_);
  });
  put(row_.IncidenceAngle, [&](std::size_t i) { return k.incidence.at[i]; });

  const BoundOfPaths bounds(media_, groupIndices_);
  for (std::size_t i = 0; i < count; ++i) {
    const double bound = bounds.Of(k.bound.at[i], 1.0 / k.inverseRadius.at[i]);
    Set(row_.Bound, numbers_[i], bound);
    if (!(bound <= kPromise)) CalcSingle(numbers_[i]);
  }
}

/// Compute the paths of PMTs, given as places in their order.
void PathBatch::CalcSingle(std::size_t begin, std::size_t end) {
  for (std::size_t i = begin; i < end; ++i) CalcSingle(pmts_.Order()[i]);
}

void PathBatch::CalcSingle(std::uint32_t pmt) {
  LightPath path;
  FindDirectPath(media_, eventPos_, pmts_.At(pmt), path);
  WriteSingle(pmt, path);
}

void PathBatch::WriteSingle(std::uint32_t pmt, const LightPath& path) {
  if (row_.LightPathType != nullptr) {
    row_.LightPathType[pmt] = path.LightPathType;
  }
  Set(row_.FinalDirection, pmt, path.FinalDirection);
  Set(row_.InitialDirection, pmt, path.InitialDirection);
  for (std::size_t i = 0; i < kPointColumns.size(); ++i) {
    Set(row_.*kPointColumns[i], pmt, path.*kAVPoints[i]);
  }
  const PerMedium lengths = LengthsOf(path);
  for (std::size_t i = 0; i < lengths.size(); ++i) {
    Set(row_.Lengths[i], pmt, lengths[i]);
  }
  Set(row_.TimeOfFlight, pmt, TimeOfFlightOf(lengths, groupIndices_));
  Set(row_.IncidenceAngle, pmt, IncidenceAngleOf(path));
  Set(row_.Bound, pmt, 0.0);
}

}  // namespace ZARN::DU
