#include "lightpath/PathBatch.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "lightpath/PathBetween.hpp"
#include "lightpath/PathLengths.hpp"

namespace ZARN::DU {
namespace {

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

void PathBatch::Calc(const LightPathRow& row) {
  row_ = row;
  FillUnusedPoints();
  std::size_t done = 0;
  if (event_.Media().At(event_.EventRadius()) == eMedium::kInnerAV) {
    for (const PMTArray::Group& group : event_.PMTs().Groups()) {
      if (EventRays::IsWorthATable(group)) {
        CalcGroup(group);
      } else {
        CalcSingle(group.begin, group.end);
      }
      done = group.end;
    }
  }
  CalcSingle(done, event_.PMTs().Count());
}

/// Paths of a table have no further points on the vessel.
void PathBatch::FillUnusedPoints() const {
  for (const auto point : {kPointColumns[2], kPointColumns[3]}) {
    const VectorColumns& columns = row_.*point;
    for (double* const column : {columns.x, columns.y, columns.z}) {
      if (column != nullptr) {
        std::fill_n(column, event_.PMTs().Count(), 0.0);
      }
    }
  }
}

void PathBatch::CalcGroup(const PMTArray::Group& group) {
  const RayTable table = event_.TableFor(group, eLight::kDirect, kCells);
  event_.Sort(group, table, sorted_);
  event_.ForEachNumber(
      sorted_.empty, [&](std::uint32_t pmt) { WriteSingle(pmt, LightPath()); });
  event_.ForEachNumber(sorted_.open,
                       [&](std::uint32_t pmt) { CalcSingle(pmt); });
  if (table.Near().has_value()) CalcRange(*table.Near(), sorted_.near);
  if (table.Far().has_value()) CalcRange(*table.Far(), sorted_.far);
}

void PathBatch::CalcRange(const RayRange& range, const EventRays::Part& part) {
  const ConcentricMedia& media = event_.Media();
  const RayRadii radii = {event_.EventRadius(), media.InnerRadius,
                          media.OuterRadius};
  event_.ForEachBlock(part, [&](const EventRays::Block& block) {
    event_.Kernel().complete(range.branch, event_.Origin(), radii, block.pmts,
                             rays_, block.count);
    Write(range, block);
  });
}

/// Write the paths of a block to the columns.
void PathBatch::Write(const RayRange& range, const EventRays::Block& block) {
  const std::size_t count = block.count;
  const std::uint32_t* const numbers = block.numbers;
  using Lane = RayBlock::Lane<double>;
  const auto put = [&](double* column, auto valueAt) {
    if (column == nullptr) return;
    for (std::size_t i = 0; i < count; ++i) column[numbers[i]] = valueAt(i);
  };
  const auto putVector = [&](const VectorColumns& columns, double scale,
                             const Lane& x, const Lane& y, const Lane& z) {
    put(columns.x, [&](std::size_t i) { return scale * x.at[i]; });
    put(columns.y, [&](std::size_t i) { return scale * y.at[i]; });
    put(columns.z, [&](std::size_t i) { return scale * z.at[i]; });
  };
  if (row_.LightPathType != nullptr) {
    for (std::size_t i = 0; i < count; ++i) {
      row_.LightPathType[numbers[i]] = range.type;
    }
  }
  const RayBlock& k = rays_;
  putVector(row_.InitialDirection, -1.0, k.backX, k.backY, k.backZ);
  putVector(row_.FinalDirection, 1.0, k.directionX, k.directionY, k.directionZ);
  putVector(row_.AVPoint1, event_.Media().InnerRadius, k.firstX, k.firstY,
            k.firstZ);
  putVector(row_.AVPoint2, event_.Media().OuterRadius, k.pointX, k.pointY,
            k.pointZ);
  put(row_.Lengths[0], [&](std::size_t i) { return k.lengthInside.at[i]; });
  put(row_.Lengths[1], [&](std::size_t i) { return k.lengthInWall.at[i]; });
  put(row_.Lengths[2], [&](std::size_t i) { return k.lengthInWater.at[i]; });
  put(row_.TimeOfFlight, [&](std::size_t i) {
    return TimeOfFlightOf(
        {k.lengthInside.at[i], k.lengthInWall.at[i], k.lengthInWater.at[i]},
        groupIndices_);
  });
  put(row_.IncidenceAngle, [&](std::size_t i) { return k.incidence.at[i]; });

  const BoundOfPaths bounds(event_.Media(), groupIndices_);
  for (std::size_t i = 0; i < count; ++i) {
    const double bound =
        bounds.Of(k.bound.at[i], 1.0 / block.pmts.inverseRadius[i]);
    Set(row_.Bound, numbers[i], bound);
    if (!(bound <= kPromise)) CalcSingle(numbers[i]);
  }
}

/// Compute the paths of PMTs, given as places in their order.
void PathBatch::CalcSingle(std::size_t begin, std::size_t end) {
  for (std::size_t i = begin; i < end; ++i)
    CalcSingle(event_.PMTs().Order()[i]);
}

void PathBatch::CalcSingle(std::uint32_t pmt) {
  LightPath path;
  FindDirectPath(event_.Media(), event_.EventPos(), event_.PMTs().At(pmt),
                 path);
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
