#include "du/fast/EventBatch.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "du/geometry/CylinderCrossing.hpp"
#include "lightpath/PathBetween.hpp"

namespace ZARN::DU {
namespace {

/// The straight path to a PMT that is nearer than this is not judged here, mm.
constexpr double kNearPMT = 1.0;

/// The number of cells of a table.
constexpr int kCells = 128;

bool HasTwoCrossings(eLightPathType type) {
  return kShapesIn<LightPath, TVector3>[type].kind == ePathKind::kTwoCrossings;
}

/// Whether a ray is known well enough for bands that allow a turn of the
/// flattened direction by @p error.
bool IsWithin(double bound, double directionX, double directionY,
              double error) {
  const double flat2 = directionX * directionX + directionY * directionY;
  return (bound < error) & (bound * bound < error * error * flat2);
}

}  // namespace

void EventBatch::JudgeDirect(const BatchRow& row) {
  Judge(eLight::kDirect, row);
}

void EventBatch::JudgeReflected(const BatchRow& row) {
  Judge(eLight::kReflected, row);
}

void EventBatch::Judge(eLight light, const BatchRow& row) {
  row_ = row;
  std::fill_n(row.verdicts, event_.PMTs().Count(), kOpenVerdict);
  constexpr double kFarthest = 1e9;  // mm
  if (!(event_.EventRadius() < kFarthest &&
        event_.Media().OuterRadius <= ShadowMap::kLargestRadius)) {
    return;
  }
  for (const PMTArray::Group& group : event_.PMTs().Groups()) {
    if (EventRays::IsWorthATable(group)) JudgeGroup(light, group);
  }
}

void EventBatch::Set(std::uint32_t pmt, BatchVerdict verdict,
                     eLightPathType type) const {
  row_.verdicts[pmt] = verdict;
  if (row_.types != nullptr) row_.types[pmt] = static_cast<std::uint8_t>(type);
}

void EventBatch::JudgeGroup(eLight light, const PMTArray::Group& group) {
  const RayTable table = event_.TableFor(group, light, kCells);
  steps_ = group.IsNarrow() ? eSteps::kOne : eSteps::kMany;
  isAmongPMTs_ = event_.EventRadius() > group.lowest - kNearPMT &&
                 event_.EventRadius() < group.highest + kNearPMT;
  event_.Sort(group, table, sorted_);
  event_.ForEachNumber(sorted_.empty, [&](std::uint32_t pmt) {
    Set(pmt, row_.noPath, kUninitialised);
  });
  if (table.Near().has_value() && table.Near()->type == kWater) {
    event_.ForEachBlock(sorted_.near,
                        [&](const Block& block) { JudgeStraight(block); });
  } else if (table.Near().has_value()) {
    JudgeThrough(*table.Near(), sorted_.near);
  }
  if (table.Far().has_value()) JudgeThrough(*table.Far(), sorted_.far);
}

void EventBatch::JudgeThrough(const RayRange& range,
                              const EventRays::Part& part) {
  open_.clear();
  event_.ForEachBlock(part,
                      [&](const Block& block) { JudgeBlock(range, block); });
  event_.ForEachBlock(open_,
                      [&](const Block& block) { JudgeAgain(range, block); });
}

void EventBatch::Trace(const RayRange& range, eSteps steps,
                       const Block& block) {
  const RayKernel& kernel = event_.Kernel();
  kernel.trace(range.branch, event_.Origin(), steps, block.pmts, rays_,
               block.count);
  if (HasTwoCrossings(range.type)) {
    kernel.traceBack(range.branch, event_.Origin(), block.pmts, rays_,
                     block.count);
  }
}

void EventBatch::JudgeBlock(const RayRange& range, const Block& block) {
  Trace(range, steps_, block);
  const std::size_t count = block.count;
  const bool areTwo = HasTwoCrossings(range.type);
  CrossingBlock crossings;
  layers_.batch.CopyRays(rays_, event_.Media().OuterRadius, areTwo, crossings,
                         count);
  layers_.batch.Cross(crossings, areTwo ? 2 * count : count);

  BlockVerdicts verdicts;
  layers_.batch.FindVerdicts(layers_.filter, crossings, 0, count, !areTwo,
                             verdicts.data());
  if (areTwo) {
    BlockVerdicts firsts;
    layers_.batch.FindVerdicts(layers_.filter, crossings, count, count, true,
                               firsts.data());
    for (std::size_t i = 0; i < count; ++i) {
      verdicts[i] = EarlierOf(firsts[i], verdicts[i]);
    }
  }
  SetVerdicts(block, verdicts, range.type);
  ForEachOpen(verdicts.data(), count,
              [&](std::size_t i) { JudgeOpen(range, crossings, block, i); });
}

void EventBatch::SetVerdicts(const Block& block, const BlockVerdicts& verdicts,
                             eLightPathType type) const {
  for (std::size_t i = 0; i < block.count; ++i) {
    row_.verdicts[block.numbers[i]] = verdicts[i];
  }
  if (row_.types == nullptr) return;
  for (std::size_t i = 0; i < block.count; ++i) {
    row_.types[block.numbers[i]] = static_cast<std::uint8_t>(type);
  }
}

/// Judge a path of a block that is open, by the items of its cells. It is
/// appended to open_ if they are not enough.
void EventBatch::JudgeOpen(const RayRange& range,
                           const CrossingBlock& crossings, const Block& block,
                           std::size_t i) {
  const double radius = event_.Media().OuterRadius;
  const double error = (rays_.bound.at[i] + BoundedBands::kPathError) * radius;
  const auto judge = [&](std::size_t place, bool isFirst, const auto& x,
                         const auto& y, const auto& z) {
    return layers_.batch.VerdictOn(
        layers_.filter, crossings, place, isFirst,
        [&](std::size_t cell, const ShadowingFilter::KnownRopes& ropes) {
          const TVector3 point(radius * x.at[i], radius * y.at[i],
                               radius * z.at[i]);
          const auto found =
              layers_.filter.FindAtCrossing(point, error, cell, ropes);
          return found.has_value() ? BatchVerdictOf(*found) : kOpenVerdict;
        });
  };
  const bool areTwo = HasTwoCrossings(range.type);
  BatchVerdict verdict =
      judge(i, !areTwo, rays_.pointX, rays_.pointY, rays_.pointZ);
  if (areTwo) {
    verdict = EarlierOf(
        judge(block.count + i, true, rays_.firstX, rays_.firstY, rays_.firstZ),
        verdict);
  }
  if (verdict == kOpenVerdict) {
    open_.push_back(block.IndexOf(i));
  } else {
    row_.verdicts[block.numbers[i]] = verdict;
  }
}

/// Judge paths that are still open.
void EventBatch::JudgeAgain(const RayRange& range, const Block& block) {
  Trace(range, eSteps::kMany, block);
  const double radius = event_.Media().OuterRadius;
  const bool areTwo = HasTwoCrossings(range.type);
  constexpr double kError = BoundedBands::kPathError;
  for (std::size_t i = 0; i < block.count; ++i) {
    const double bound = rays_.bound.at[i];
    const TVector3 point(radius * rays_.pointX.at[i],
                         radius * rays_.pointY.at[i],
                         radius * rays_.pointZ.at[i]);
    const TVector3 direction(rays_.directionX.at[i], rays_.directionY.at[i],
                             rays_.directionZ.at[i]);
    if (!IsWithin(bound, direction.X(), direction.Y(), kError)) continue;
    const TVector3 first(radius * rays_.firstX.at[i],
                         radius * rays_.firstY.at[i],
                         radius * rays_.firstZ.at[i]);
    const TVector3 back(rays_.backX.at[i], rays_.backY.at[i],
                        rays_.backZ.at[i]);
    if (areTwo && !IsWithin(bound, back.X(), back.Y(), kError)) continue;
    const SegmentView last = {point, direction, 1.0};
    const auto found = layers_.filter.FindBounded(
        areTwo ? WaterSegmentViews{ePathKind::kTwoCrossings,
                                   {first, back, 1.0},
                                   last}
               : WaterSegmentViews{ePathKind::kOneCrossing, last, last},
        kError * radius);
    if (found.has_value()) {
      Set(block.numbers[i], BatchVerdictOf(*found), range.type);
    }
  }
}

void EventBatch::JudgeStraight(const Block& block) {
  static_assert(kRayBlock <= WaterBlock::kMost);
  WaterBlock water;
  layers_.batch.Join(event_.EventPos(), block.pmts, water, block.count);
  BlockVerdicts verdicts;
  layers_.batch.PassWater(water, block.count, verdicts.data());
  if (isAmongPMTs_) {
    for (std::size_t i = 0; i < block.count; ++i) {
      if (IsAt(block.numbers[i])) verdicts[i] = kOpenVerdict;
    }
  }
  SetVerdicts(block, verdicts, kWater);
  ForEachOpen(verdicts.data(), block.count, [&](std::size_t i) {
    const std::uint32_t pmt = block.numbers[i];
    if (!isAmongPMTs_ || !IsAt(pmt)) JudgeStraightAgain(pmt);
  });
}

/// Whether the event is so near to a PMT that there may be no path.
bool EventBatch::IsAt(std::uint32_t pmt) const {
  return (event_.PMTs().At(pmt) - event_.EventPos()).Mag() <= kNearPMT;
}

/// Judge a straight path in double precision. It is the exact one.
void EventBatch::JudgeStraightAgain(std::uint32_t pmt) {
  const TVector3& pmtPos = event_.PMTs().At(pmt);
  const TVector3& eventPos = event_.EventPos();
  const TVector3 direction = StraightDirection(eventPos, pmtPos);
  const auto found = layers_.filter.FindInWater({eventPos, direction, 1.0},
                                                {pmtPos, direction, -1.0});
  if (found.has_value()) Set(pmt, BatchVerdictOf(*found), kWater);
}

}  // namespace ZARN::DU
