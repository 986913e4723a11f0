#include "du/fast/EventBatch.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "du/geometry/CylinderCrossing.hpp"
#include "lightpath/PathBetween.hpp"

namespace ZARN::DU {
namespace {

/// With fewer PMTs a table costs more than it saves.
constexpr std::size_t kFewestPMTs = 16;

/// The distances of PMTs in a group differ by less than this, relative, if one
/// correction of their rays is enough.
constexpr double kNarrow = 1e-5;

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

EventBatch::EventBatch(const PreparedLayers& layers,
                       const ConcentricMedia& media, const TVector3& eventPos,
                       const PMTArray& pmts)
    : layers_(layers),
      media_(media),
      eventPos_(eventPos),
      eventRadius_(eventPos.Mag()),
      origin_{0.0, 0.0, 1.0},
      pmts_(pmts) {
  constexpr double kAtCentre = 1e-100;
  if (eventRadius_ < kAtCentre) return;
  // The same unit vector as that of a single path.
  const TVector3 direction = eventPos * (1.0 / eventRadius_);
  origin_ = {direction.X(), direction.Y(), direction.Z()};
}

void EventBatch::JudgeDirect(const BatchRow& row) {
  Judge(eLight::kDirect, row);
}

void EventBatch::JudgeReflected(const BatchRow& row) {
  Judge(eLight::kReflected, row);
}

void EventBatch::Judge(eLight light, const BatchRow& row) {
  row_ = row;
  std::fill_n(row.verdicts, pmts_.Count(), kOpenVerdict);
  constexpr double kFarthest = 1e9;  // mm
  if (!(eventRadius_ < kFarthest)) return;
  for (const PMTArray::Group& group : pmts_.Groups()) {
    if (group.end - group.begin >= kFewestPMTs) JudgeGroup(light, group);
  }
}

void EventBatch::Set(std::uint32_t index, BatchVerdict verdict,
                     eLightPathType type) {
  const std::uint32_t pmt = pmts_.Order()[index];
  row_.verdicts[pmt] = verdict;
  if (row_.types != nullptr) row_.types[pmt] = static_cast<std::uint8_t>(type);
}

void EventBatch::JudgeGroup(eLight light, const PMTArray::Group& group) {
  const RayTable table(
      light, media_, eventRadius_,
      {group.lowest, 0.5 * (group.lowest + group.highest), group.highest},
      kCells);
  steps_ = group.highest - group.lowest < kNarrow * group.highest
               ? eSteps::kOne
               : eSteps::kMany;
  SortGroup(group, table);
  if (table.Near().has_value()) {
    if (table.Near()->type == kWater) {
      for (std::size_t i = 0; i < near_.size(); i += kBatchPaths) {
        JudgeStraight(near_.data() + i,
                      std::min(kBatchPaths, near_.size() - i));
      }
    } else {
      JudgeThrough(*table.Near(), near_);
    }
  }
  if (table.Far().has_value()) JudgeThrough(*table.Far(), far_);
}

/// Sort the PMTs of a group by the range of the table that they are in.
void EventBatch::SortGroup(const PMTArray::Group& group,
                           const RayTable& table) {
  const std::size_t size = group.end - group.begin;
  near_.resize(size);
  far_.resize(size);
  std::size_t nears = 0;
  std::size_t fars = 0;
  const double* const pmtX = pmts_.X().data() + group.begin;
  const double* const pmtY = pmts_.Y().data() + group.begin;
  const double* const pmtZ = pmts_.Z().data() + group.begin;
  const RayOrigin origin = origin_;
  std::array<double, kRayBlock> cosines;
  for (std::size_t begin = 0; begin < size; begin += kRayBlock) {
    const std::size_t count = std::min(kRayBlock, size - begin);
    for (std::size_t i = 0; i < count; ++i) {
      cosines[i] = origin.x * pmtX[begin + i] + origin.y * pmtY[begin + i] +
                   origin.z * pmtZ[begin + i];
    }
    // Written in any case, so that there is no branch to predict.
    for (std::size_t i = 0; i < count; ++i) {
      const double x = cosines[i];
      const auto index = static_cast<std::uint32_t>(group.begin + begin + i);
      near_[nears] = index;
      nears += x > table.LeastNear() ? 1U : 0U;
      far_[fars] = index;
      fars += x < table.MostFar() ? 1U : 0U;
    }
    if (!(table.LeastEmpty() < table.MostEmpty())) continue;
    for (std::size_t i = 0; i < count; ++i) {
      const double x = cosines[i];
      if (x > table.LeastEmpty() && x < table.MostEmpty()) {
        Set(static_cast<std::uint32_t>(group.begin + begin + i), row_.noPath,
            kUninitialised);
      }
    }
  }
  near_.resize(nears);
  far_.resize(fars);
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
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t index = indexes[i];
    rays_.pmtX.at[i] = pmts_.X()[index];
    rays_.pmtY.at[i] = pmts_.Y()[index];
    rays_.pmtZ.at[i] = pmts_.Z()[index];
    rays_.inverseRadius.at[i] = pmts_.InverseRadius()[index];
  }
  kernel_->trace(range.branch, origin_, steps, rays_, count);
  if (HasTwoCrossings(range.type)) {
    kernel_->traceBack(range.branch, origin_, rays_, count);
  }
}

void EventBatch::JudgeBlock(const RayRange& range, const std::uint32_t* indexes,
                            std::size_t count) {
  Trace(range, steps_, indexes, count);
  const double radius = media_.OuterRadius;
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
  const std::uint32_t* const order = pmts_.Order().data();
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
  const double radius = media_.OuterRadius;
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
  const auto eventX = static_cast<float>(eventPos_.X());
  const auto eventY = static_cast<float>(eventPos_.Y());
  for (std::size_t i = 0; i < count; ++i) {
    const TVector3& pmt = pmts_.At(pmts_.Order()[indexes[i]]);
    const double x = pmt.X() - eventPos_.X();
    const double y = pmt.Y() - eventPos_.Y();
    const double z = pmt.Z() - eventPos_.Z();
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
  const TVector3& pmtPos = pmts_.At(pmts_.Order()[index]);
  const TVector3 direction = StraightDirection(eventPos_, pmtPos);
  const auto found = layers_.filter.FindInWater({eventPos_, direction, 1.0},
                                                {pmtPos, direction, -1.0});
  if (found.has_value()) Set(index, BatchVerdictOf(*found), kWater);
}

}  // namespace ZARN::DU
