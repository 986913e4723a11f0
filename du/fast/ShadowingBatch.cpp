#include "du/fast/ShadowingBatch.hpp"

#include <array>
#include <numeric>

#include "log/Assert.hpp"

namespace ZARN::DU {
namespace {

const BatchKernel& KernelOf(eKernel kernel) {
#ifdef __x86_64__
  switch (kernel) {
    case eKernel::kAVX512:
      return kAVX512Kernel;
    case eKernel::kAVX2:
      return kAVX2Kernel;
    case eKernel::kBaseline:
      break;
  }
#else
  static_cast<void>(kernel);
#endif
  return kBaselineKernel;
}

/// The indexes of the paths of a block, by type. Unusual types are in the list
/// of uninitialised paths.
class PathsByType {
 public:
  template <class Paths>
  PathsByType(const Paths& paths, std::size_t count) {
    ZARN_ASSERT(count <= kBatchPaths, count);
    if (count > 0 && AreAlike(paths, count)) {
      const std::size_t list = ListOf(paths.Type(0));
      std::iota(lists_[list].begin(), lists_[list].end(), std::uint16_t{0});
      counts_[list] = count;
      return;
    }
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t list = ListOf(paths.Type(i));
      lists_[list][counts_[list]++] = static_cast<std::uint16_t>(i);
    }
  }

  std::size_t Count(std::size_t type) const { return counts_[type]; }
  const std::uint16_t* Of(std::size_t type) const {
    return lists_[type].data();
  }

 private:
  /// Whether all paths have the same type, as they often have.
  template <class Paths>
  static bool AreAlike(const Paths& paths, std::size_t count) {
    const int type = paths.Type(0);
    std::size_t i = 1;
    while (i < count && paths.Type(i) == type) ++i;
    return i == count;
  }
  static std::size_t ListOf(int type) {
    const bool isUsual =
        type > kUninitialised && type < kNumberOfLightPathTypes;
    return static_cast<std::size_t>(isUsual ? type : 0);
  }

  std::array<std::array<std::uint16_t, kBatchPaths>, kNumberOfLightPathTypes>
      lists_;
  std::array<std::size_t, kNumberOfLightPathTypes> counts_ = {};
};

}  // namespace

ShadowingBatch::ShadowingBatch(const ShadowingFilter& filter)
    : kernel_(&KernelOf(WidestKernel())), tables_(filter) {}

void ShadowingBatch::UseKernel(eKernel kernel) { kernel_ = &KernelOf(kernel); }

void ShadowingBatch::PassWater(WaterBlock& block, std::size_t count,
                               BatchVerdict* verdicts) const {
  kernel_->passWater(tables_.Geometry(), block, count);
  for (std::size_t i = 0; i < count; ++i) {
    verdicts[i] = tables_.InWater(block, i);
  }
}

/// Processes one block of paths: copies them into arrays, lets the kernel judge
/// them, and looks up its results in the tables.
template <class Paths>
class ShadowingBatch::Block {
 public:
  Block(const ShadowingBatch& batch, const ShadowingFilter& filter,
        const Paths& paths, std::size_t count, BatchVerdict* verdicts)
      : batch_(batch),
        filter_(filter),
        paths_(paths),
        byType_(paths, count),
        verdicts_(verdicts) {}

  void Judge() {
    JudgeCrossings();
    ForEachType(ePathKind::kWater,
                [this](std::size_t type) { JudgeInWater(type); });
    ForEachPath(kUninitialised,
                [this](std::size_t path) { verdicts_[path] = kOpenVerdict; });
  }

 private:
  using Path = typename Paths::Path;
  using Vector = typename Paths::Vector;
  using SegmentVerdicts = std::array<BatchVerdict, CrossingBlock::kMost>;
  static constexpr auto kShapes = kShapesIn<Path, Vector>;

  /// A segment that crosses the vessel.
  struct Segment {
    std::size_t place;  // in the block
    bool isFirst;       // of its path
    std::size_t path;
    Vector Path::*point;
  };

  /// Call @p work(type) for every type of a kind that has paths.
  template <class Work>
  void ForEachType(ePathKind kind, const Work& work) const {
    for (std::size_t type = 0; type < kShapes.size(); ++type) {
      if (kShapes[type].kind == kind && byType_.Count(type) > 0) work(type);
    }
  }

  /// Call @p work(path) with the index of every path of a type.
  template <class Work>
  void ForEachPath(std::size_t type, const Work& work) const {
    const std::uint16_t* const numbers = byType_.Of(type);
    const std::size_t count = byType_.Count(type);
    for (std::size_t i = 0; i < count; ++i) work(numbers[i]);
  }

  /// Call @p take(i, x, y, z) with a vector of every path of a type.
  template <class Take>
  void ForEachVector(std::size_t type, Vector Path::*member,
                     const Take& take) const {
    paths_.ForEach(member, byType_.Of(type), byType_.Count(type), take);
  }

  void JudgeCrossings() {
    CrossingBlock block;
    // In this order: segments of paths with one crossing, the first segments of
    // paths with two, and their second ones in the same order.
    std::size_t segments = 0;
    ForEachType(ePathKind::kOneCrossing, [&](std::size_t type) {
      CopySegments(type, kShapes[type].firstPoint, &Path::FinalDirection, 1.0F,
                   block, segments);
    });
    const std::size_t firsts = segments;
    ForEachType(ePathKind::kTwoCrossings, [&](std::size_t type) {
      CopySegments(type, kShapes[type].firstPoint, &Path::InitialDirection,
                   -1.0F, block, segments);
    });
    const std::size_t seconds = segments;
    ForEachType(ePathKind::kTwoCrossings, [&](std::size_t type) {
      CopySegments(type, kShapes[type].secondPoint, &Path::FinalDirection, 1.0F,
                   block, segments);
    });
    batch_.Cross(block, segments);

    SegmentVerdicts found;
    batch_.FindVerdicts(filter_, block, 0, seconds, true, found.data());
    batch_.FindVerdicts(filter_, block, seconds, segments - seconds, false,
                        found.data() + seconds);
    for (std::size_t i = firsts; i < seconds; ++i) {
      found[i] = EarlierOf(found[i], found[i - firsts + seconds]);
    }
    std::size_t begin = 0;
    ForEachType(ePathKind::kOneCrossing, [&](std::size_t type) {
      SetVerdicts(type, found.data() + begin, [&](std::size_t i, auto path) {
        return VerdictOn({begin + i, true, path, kShapes[type].firstPoint},
                         block);
      });
      begin += byType_.Count(type);
    });
    ForEachType(ePathKind::kTwoCrossings, [&](std::size_t type) {
      SetVerdicts(type, found.data() + begin, [&](std::size_t i, auto path) {
        const std::size_t first = begin + i;
        const std::size_t second = first - firsts + seconds;
        return EarlierOf(
            VerdictOn({first, true, path, kShapes[type].firstPoint}, block),
            VerdictOn({second, false, path, kShapes[type].secondPoint}, block));
      });
      begin += byType_.Count(type);
    });
  }

  /// Set the verdicts of the paths of a type, and judge those that are open
  /// again, by @p judge(i, path) for the i-th of them.
  template <class Judge>
  void SetVerdicts(std::size_t type, const BatchVerdict* found,
                   const Judge& judge) const {
    const std::uint16_t* const paths = byType_.Of(type);
    const std::size_t count = byType_.Count(type);
    for (std::size_t i = 0; i < count; ++i) verdicts_[paths[i]] = found[i];
    ForEachOpen(found, count, [&](std::size_t i) {
      verdicts_[paths[i]] = judge(i, std::size_t{paths[i]});
    });
  }

  /// Append a segment of every path of a type to those in the block.
  void CopySegments(std::size_t type, Vector Path::*point,
                    Vector Path::*direction, float sense, CrossingBlock& block,
                    std::size_t& segments) const {
    const std::size_t begin = segments;
    ForEachVector(type, point,
                  [&](std::size_t i, double x, double y, double z) {
                    block.pointX.at[begin + i] = static_cast<float>(x);
                    block.pointY.at[begin + i] = static_cast<float>(y);
                    block.pointZ.at[begin + i] = static_cast<float>(z);
                  });
    ForEachVector(
        type, direction,
        [&, sense](std::size_t i, double x, double y, double z) {
          block.directionX.at[begin + i] = sense * static_cast<float>(x);
          block.directionY.at[begin + i] = sense * static_cast<float>(y);
          block.directionZ.at[begin + i] = sense * static_cast<float>(z);
        });
    segments += byType_.Count(type);
  }

  BatchVerdict VerdictOn(const Segment& segment,
                         const CrossingBlock& block) const {
    return batch_.VerdictOn(
        filter_, block, segment.place, segment.isFirst,
        [&](std::size_t cell, const ShadowingFilter::KnownRopes& ropes) {
          return BatchVerdictOf(filter_.FindAtCrossing(
              paths_.At(segment.point, segment.path), cell, ropes));
        });
  }

  void JudgeInWater(std::size_t type) {
    WaterBlock block;
    ForEachVector(type, kShapes[type].firstPoint,
                  [&](std::size_t i, double x, double y, double) {
                    block.startX.at[i] = static_cast<float>(x);
                    block.startY.at[i] = static_cast<float>(y);
                  });
    ForEachVector(type, kShapes[type].secondPoint,
                  [&](std::size_t i, double x, double y, double) {
                    block.endX.at[i] = static_cast<float>(x);
                    block.endY.at[i] = static_cast<float>(y);
                  });
    ForEachVector(type, &Path::InitialDirection,
                  [&](std::size_t i, double x, double y, double z) {
                    block.directionX.at[i] = static_cast<float>(x);
                    block.directionY.at[i] = static_cast<float>(y);
                    block.directionZ.at[i] = static_cast<float>(z);
                  });
    std::array<BatchVerdict, kBatchPaths> verdicts;
    batch_.PassWater(block, byType_.Count(type), verdicts.data());
    std::size_t i = 0;
    ForEachPath(type,
                [&](std::size_t path) { verdicts_[path] = verdicts[i++]; });
  }

  const ShadowingBatch& batch_;
  const ShadowingFilter& filter_;
  const Paths& paths_;
  PathsByType byType_;
  BatchVerdict* verdicts_;
};

void ShadowingBatch::Judge(const ShadowingFilter& filter,
                           const PathsInRecords& paths, std::size_t count,
                           BatchVerdict* verdicts) const {
  Block(*this, filter, paths, count, verdicts).Judge();
}

void ShadowingBatch::Judge(const ShadowingFilter& filter,
                           const PathsInColumns& paths, std::size_t count,
                           BatchVerdict* verdicts) const {
  Block(*this, filter, paths, count, verdicts).Judge();
}

}  // namespace ZARN::DU
