#include "du/fast/EventBatch.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "du/geometry/CylinderCrossing.hpp"
#include "lightpath/PathBetween.hpp"

namespace ZARN::DU {
namespace {

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
  if (!(event_.EventRadius() < kFarthest)) return;
  for (const PMTArray::Group& group : event_.PMTs().Groups()) {
    if (EventRays::IsWorthATable(group)) JudgeGroup(light, group);
  }
}

void EventBatch::Set(std::uint32_t index, BatchVerdict verdict,
                     eLightPathType type) {
  const std::uint32_t pmt = event_.PMTs().Order()[index];
  row_.verdicts[pmt] = verdict;
  if (row_.types != nullptr) row_.types[pmt] = static_cast<std::uint8_t>(type);
}

void EventBatch::JudgeGroup(eLight light, const PMTArray::Group& group) {
  const RayTable table = event_.TableFor(group, light, kCells);
  steps_ = group.IsNarrow() ? eSteps::kOne : eSteps::kMany;
  event_.Sort(group, table, sorted_);
  for (const std::uint32_t index : sorted_.empty) {
    Set(index, row_.noPath, kUninitialised);
  }
  const Indexes& near = sorted_.near;
  if (table.Near().has_value() && table.Near()->type == kWater) {
    for (std::size_t i = 0; i < near.size(); i += kBatchPaths) {
      JudgeStraight(near.data() + i, std::min(kBatchPaths, near.size() - i));
    }
  } else if (table.Near().has_value()) {
    JudgeThrough(*table.Near(), near);
  }
  if (table.Far().has_value()) JudgeThrough(*table.Far(), sorted_.far);
}

void EventBatch::JudgeThrough(const RayRange& range, const Indexes& indexes) {
  open_.clear();
  for (std::size_t i = 0; i < indexes.size(); i += kRayBlock) {
    JudgeBlock(range, indexes.data() + i,
               std::min(kRayBlock, indexes.size() - i));
  }
  for (std::size_t i = 0; i < open_.size(); i += kRayBlock) {
    JudgeAgain(range, open_.data() + i, std::min(kRayBlock, open_.size() - i));
  }
}

void EventBatch::Trace(const RayRange& range, eSteps steps,
                       const std::uint32_t* indexes, std::size_t count) {
  event_.Load(indexes, count, rays_);
  const RayKernel& kernel = event_.Kernel();
  kernel.trace(range.branch, event_.Origin(), steps, rays_, count);
  if (HasTwoCrossings(range.type)) {
    kernel.traceBack(range.branch, event_.Origin(), rays_, count);
  }
}

void EventBatch::JudgeBlock(const RayRange& range, const std::uint32_t* indexes,
                            std::size_t count) {
  Trace(range, steps_, indexes, count);
  const double radius = event_.Media().OuterRadius;
  const bool areTwo = HasTwoCrossings(range.type);
  CrossingBlock block;
  const auto copy = [&](std::size_t begin, const auto& px, const auto& py,
                        const auto& pz, const auto& dx, const auto& dy,
                        const auto& dz) {
    for (std::size_t i = 0; i < count; ++i) {
      block.pointX.at[begin + i] = static_cast<float>(radius * px.at[i]);
      block.pointY.at[begin + i] = static_cast<float>(radius * py.at[i]);
      block.pointZ.at[begin + i] = static_cast<float>(radius * pz.at[i]);
      block.directionX.at[begin + i] = static_cast<float>(dx.at[i]);
      block.directionY.at[begin + i] = static_cast<float>(dy.at[i]);
      block.directionZ.at[begin + i] = static_cast<float>(dz.at[i]);
    }
  };
  if (areTwo) {
    copy(0, rays_.firstX, rays_.firstY, rays_.firstZ, rays_.backX, rays_.backY,
         rays_.backZ);
  }
  const std::size_t lasts = areTwo ? count : 0;
  copy(lasts, rays_.pointX, rays_.pointY, rays_.pointZ, rays_.directionX,
       rays_.directionY, rays_.directionZ);
  layers_.batch.Cross(block, lasts + count);

  std::array<BatchVerdict, kRayBlock> verdicts;
  layers_.batch.FindVerdicts(layers_.filter, block, lasts, count, !areTwo,
                             verdicts.data());
  if (areTwo) {
    std::array<BatchVerdict, kRayBlock> firsts;
    layers_.batch.FindVerdicts(layers_.filter, block, 0, count, true,
                               firsts.data());
    for (std::size_t i = 0; i < count; ++i) {
      verdicts[i] = EarlierOf(firsts[i], verdicts[i]);
    }
  }
  SetKnown(range, indexes, count, verdicts.data());
}

/// Set the verdicts of a block, and append the paths that are open to open_:
/// also those that are not known well enough, whatever their verdict is.
void EventBatch::SetKnown(const RayRange& range, const std::uint32_t* indexes,
                          std::size_t count, const BatchVerdict* verdicts) {
  constexpr double kError = CrossingBands<float>::kPathError;
  const bool areTwo = HasTwoCrossings(range.type);
  std::array<bool, kRayBlock> isKnown;
  for (std::size_t i = 0; i < count; ++i) {
    isKnown[i] = IsWithin(rays_.bound.at[i], rays_.directionX.at[i],
                          rays_.directionY.at[i], kError);
  }
  for (std::size_t i = 0; areTwo && i < count; ++i) {
    isKnown[i] = isKnown[i] & IsWithin(rays_.bound.at[i], rays_.backX.at[i],
                                       rays_.backY.at[i], kError);
  }
  // Written in any case, so that there is no branch to predict.
  std::array<std::uint32_t, kRayBlock> open;
  std::size_t opens = 0;
  const std::uint32_t* const order = event_.PMTs().Order().data();
  BatchVerdict* const row = row_.verdicts;
  for (std::size_t i = 0; i < count; ++i) {
    const BatchVerdict verdict = isKnown[i] ? verdicts[i] : kOpenVerdict;
    row[order[indexes[i]]] = verdict;
    open[opens] = indexes[i];
    opens += verdict == kOpenVerdict ? 1U : 0U;
  }
  open_.insert(open_.end(), open.begin(), open.begin() + opens);
  if (row_.types == nullptr) return;
  for (std::size_t i = 0; i < count; ++i) {
    row_.types[order[indexes[i]]] = static_cast<std::uint8_t>(range.type);
  }
}

/// Judge paths that the first bands leave open.
void EventBatch::JudgeAgain(const RayRange& range, const std::uint32_t* indexes,
                            std::size_t count) {
  Trace(range, eSteps::kMany, indexes, count);
  const double radius = event_.Media().OuterRadius;
  const bool areTwo = HasTwoCrossings(range.type);
  constexpr double kError = BoundedBands::kPathError;
  for (std::size_t i = 0; i < count; ++i) {
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
      Set(indexes[i], BatchVerdictOf(*found), range.type);
    }
  }
}

void EventBatch::JudgeStraight(const std::uint32_t* indexes,
                               std::size_t count) {
  WaterBlock block;
  std::array<bool, kBatchPaths> isKnown;
  const TVector3& eventPos = event_.EventPos();
  const auto eventX = static_cast<float>(eventPos.X());
  const auto eventY = static_cast<float>(eventPos.Y());
  for (std::size_t i = 0; i < count; ++i) {
    const TVector3& pmt = event_.PMTs().At(event_.PMTs().Order()[indexes[i]]);
    const double x = pmt.X() - eventPos.X();
    const double y = pmt.Y() - eventPos.Y();
    const double z = pmt.Z() - eventPos.Z();
    const double length2 = x * x + y * y + z * z;
    isKnown[i] = length2 > 0.0;  // else the event may be at the PMT
    const double inverse = 1.0 / std::sqrt(isKnown[i] ? length2 : 1.0);
    block.startX.at[i] = eventX;
    block.startY.at[i] = eventY;
    block.endX.at[i] = static_cast<float>(pmt.X());
    block.endY.at[i] = static_cast<float>(pmt.Y());
    block.directionX.at[i] = static_cast<float>(inverse * x);
    block.directionY.at[i] = static_cast<float>(inverse * y);
    block.directionZ.at[i] = static_cast<float>(inverse * z);
  }
  std::array<BatchVerdict, kBatchPaths> verdicts;
  layers_.batch.PassWater(block, count, verdicts.data());
  for (std::size_t i = 0; i < count; ++i) {
    if (!isKnown[i]) continue;
    if (verdicts[i] == kOpenVerdict) {
      JudgeStraightAgain(indexes[i]);
    } else {
      Set(indexes[i], verdicts[i], kWater);
    }
  }
}

/// Judge a straight path in double precision. It is the exact one.
void EventBatch::JudgeStraightAgain(std::uint32_t index) {
  const TVector3& pmtPos = event_.PMTs().At(event_.PMTs().Order()[index]);
  const TVector3& eventPos = event_.EventPos();
  const TVector3 direction = StraightDirection(eventPos, pmtPos);
  const auto found = layers_.filter.FindInWater({eventPos, direction, 1.0},
                                                {pmtPos, direction, -1.0});
  if (found.has_value()) Set(index, BatchVerdictOf(*found), kWater);
}

}  // namespace ZARN::DU
