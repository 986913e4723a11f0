#include "du/fast/ShadowingBatch.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "du/hardware/WaterSegments.hpp"

namespace ZARN::DU {
namespace {

using eComponent = eShadowingComponent;

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

/// The records of paths, or their columns from some place on, with the same
/// questions for both.
class Records {
 public:
  using Path = LightPath;
  using Vector = TVector3;

  explicit Records(const LightPath* paths) : paths_(paths) {}

  int Type(std::size_t i) const { return paths_[i].LightPathType; }
  const TVector3& At(Vector Path::*member, std::size_t i) const {
    return paths_[i].*member;
  }
  /// Call @p take(i, x, y, z) for some paths, with one of their vectors.
  template <class Take>
  void ForEach(Vector Path::*member, const std::uint16_t* begin,
               std::size_t count, const Take& take) const {
    for (std::size_t i = 0; i < count; ++i) {
      const TVector3& vector = paths_[begin[i]].*member;
      take(i, vector.X(), vector.Y(), vector.Z());
    }
  }

 private:
  const LightPath* paths_;
};

class Columns {
 public:
  using Path = LightPathArrays;
  using Vector = VectorArrays;

  Columns(const LightPathArrays& paths, std::size_t first)
      : paths_(paths), first_(first) {}

  int Type(std::size_t i) const { return paths_.LightPathType[first_ + i]; }
  TVector3 At(Vector Path::*member, std::size_t i) const {
    return (paths_.*member).At(first_ + i);
  }
  template <class Take>
  void ForEach(Vector Path::*member, const std::uint16_t* begin,
               std::size_t count, const Take& take) const {
    const VectorArrays& vectors = paths_.*member;
    const double* const x = vectors.x + first_;
    const double* const y = vectors.y + first_;
    const double* const z = vectors.z + first_;
    // Paths of one type alone stand side by side.
    if (begin[count - 1] - begin[0] + 1U == count) {
      const std::size_t at = begin[0];
      for (std::size_t i = 0; i < count; ++i) {
        take(i, x[at + i], y[at + i], z[at + i]);
      }
      return;
    }
    for (std::size_t i = 0; i < count; ++i) {
      take(i, x[begin[i]], y[begin[i]], z[begin[i]]);
    }
  }

 private:
  const LightPathArrays& paths_;
  std::size_t first_;
};

/// What blocks a path of two segments: the component that is tested first. Each
/// component is tested for both segments before the next, so an open segment
/// leaves the path open.
std::uint8_t EarlierOf(std::uint8_t first, std::uint8_t second) {
  constexpr std::uint8_t kOpen = ShadowingBatch::kOpen;
  constexpr auto kNone = static_cast<std::uint8_t>(eComponent::kNone);
  if (first == kOpen || second == kOpen) return kOpen;
  if (first == kNone || second == kNone) return std::max(first, second);
  return std::min(first, second);
}

/// The paths of a block by their type, each as its number.
class PathsByType {
 public:
  template <class Paths>
  PathsByType(const Paths& paths, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      const int type = paths.Type(i);
      const bool isUsual =
          type > kUninitialised && type < kNumberOfLightPathTypes;
      const auto list = static_cast<std::size_t>(isUsual ? type : 0);
      lists_[list][counts_[list]++] = static_cast<std::uint16_t>(i);
    }
  }

  std::size_t Count(std::size_t type) const { return counts_[type]; }
  const std::uint16_t* Of(std::size_t type) const {
    return lists_[type].data();
  }

 private:
  std::array<std::array<std::uint16_t, kBatchPaths>, kNumberOfLightPathTypes>
      lists_;
  std::array<std::size_t, kNumberOfLightPathTypes> counts_ = {};
};

/// A number in single precision, that much lower or higher as its rounding and
/// that of what it is compared with may be.
float Lower(double value) {
  return static_cast<float>(value - 1e-6 * std::max(1.0, std::abs(value)));
}
float Higher(double value) {
  return static_cast<float>(value + 1e-6 * std::max(1.0, std::abs(value)));
}

/// The square of a limit of a filter, or NaN where it judges nothing.
float SquareOrNaN(const VerticalRopeFilter& filter, double square) {
  return filter.Radius2() > 0.0 ? static_cast<float>(square)
                                : std::numeric_limits<float>::quiet_NaN();
}

}  // namespace

std::vector<eKernel> AvailableKernels() {
  std::vector<eKernel> kernels = {eKernel::kBaseline};
#ifdef __x86_64__
  if (__builtin_cpu_supports("avx2") != 0) kernels.push_back(eKernel::kAVX2);
  if (__builtin_cpu_supports("avx512f") != 0 &&
      __builtin_cpu_supports("avx512vl") != 0 &&
      __builtin_cpu_supports("avx512dq") != 0 &&
      __builtin_cpu_supports("avx512bw") != 0) {
    kernels.push_back(eKernel::kAVX512);
  }
#endif
  return kernels;
}

ShadowingBatch::ShadowingBatch(const ShadowingFilter& filter)
    : kernel_(&KernelOf(AvailableKernels().back())) {
  const ShadowMap& map = filter.Map();
  BatchGeometry& g = geometry_;
  g.lowest2 = Higher(map.Lowest2());
  g.highest2 = Lower(map.Highest2());
  g.mapCells = map.Cells();
  g.offMap = map.Cells() * map.Cells();

  // A component that is off is never met.
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  g.belowEnds = g.aboveEnds = -kInfinity;
  if (filter.HasHoldDownRopes()) {
    g.belowEnds = Lower(filter.HoldDownEndHeight());
    g.aboveEnds = Higher(filter.HoldDownEndHeight());
  }
  g.belowFeet = g.aboveFeet = kInfinity;
  if (filter.HasSupportRopes()) {
    g.belowFeet = Lower(filter.SupportFootHeight());
    g.aboveFeet = Higher(filter.SupportFootHeight());
  }

  const VerticalRopeFilter& holdDown = filter.HoldDownRopes();
  const VerticalRopeFilter& support = filter.SupportRopes();
  const VerticalRopeFilter& seen = filter.EnteredHoldDownRopes();
  const VerticalRopeFilter& seenInSpace = filter.LeftHoldDownRopes();
  const VerticalRopeFilter& ropes = holdDown.Radius2() > 0.0 ? holdDown : seen;
  g.ropesRadius2 = SquareOrNaN(ropes, ropes.Radius2());
  g.holdDownHeight2 = SquareOrNaN(holdDown, holdDown.Height2());
  g.supportRadius2 = SquareOrNaN(support, support.Radius2());
  g.supportHeight2 = SquareOrNaN(support, support.Height2());
  g.seenHeight2 = SquareOrNaN(seen, seen.Height2());
  g.lowestSine = Lower(seenInSpace.Ropes().LowestSine());
  g.highestSine = Higher(seenInSpace.Ropes().HighestSine());

  g.azimuthCells = holdDown.Ropes().Table().Cells();
  for (const VerticalRopeFilter* const other :
       {&support, &seen, &seenInSpace}) {
    g.azimuthCells = std::max(g.azimuthCells, other->Ropes().Table().Cells());
  }
  g.holdDownTable = Append(holdDown.Ropes().Table(), kBelowEnds);
  g.supportTable = Append(support.Ropes().Table(), 0);
  g.seenTable = Append(seen.Ropes().Table(), 0);
  g.seenInSpaceTable = Append(seenInSpace.Ropes().Table(), 0);
  g.noRope = Append(kClear);
  g.noRopeBelow = Append(kBelowEnds | kClear);
  g.open = Append(kNothingKnown);
  MakeCrossingVerdicts();
  MakeWaterVerdicts(filter);
}

int ShadowingBatch::Append(std::uint8_t answer) {
  ropes_.push_back(answer);
  return static_cast<int>(ropes_.size()) - 1;
}

/// Append a table's answers. One of fewer cells, of ropes that are not there,
/// is stretched.
int ShadowingBatch::Append(const AzimuthTable& table, std::uint8_t flag) {
  const auto begin = static_cast<int>(ropes_.size());
  for (int cell = 0; cell < geometry_.azimuthCells; ++cell) {
    const eAnswer answer = table.At(cell < table.Cells() ? cell : 0);
    Append(static_cast<std::uint8_t>(static_cast<std::uint8_t>(answer) | flag));
  }
  return begin;
}

/// The verdict on a segment for every answer about ropes and code of the map.
void ShadowingBatch::MakeCrossingVerdicts() {
  const auto verdict = [](std::size_t ropes, ShadowMap::Code code,
                          bool withPipes) {
    if (ropes == kNothingKnown) return kOpen;
    const bool isBelowEnds = (ropes & kBelowEnds) != 0;
    const auto answer = static_cast<eAnswer>(ropes & 3U);
    const auto mapped = [&](eMappedTest test) {
      return ShadowMap::AnswerOf(code, test);
    };
    const std::array<std::pair<eComponent, eAnswer>, 6> answers = {{
        {eComponent::kAVHDRope,
         isBelowEnds ? answer : mapped(eMappedTest::kHoldDownSurface)},
        {eComponent::kSupportRope, isBelowEnds ? eAnswer::kClear : answer},
        {eComponent::kBellyPlate, mapped(eMappedTest::kBellyPlate)},
        {eComponent::kNCDAnchor, mapped(eMappedTest::kNCDAnchor)},
        {eComponent::kAVPipe,
         withPipes ? mapped(eMappedTest::kAVPipe) : eAnswer::kClear},
        {eComponent::kNeckBoss, mapped(eMappedTest::kNeckBoss)},
    }};
    for (const auto& [component, says] : answers) {
      if (says == eAnswer::kUnsure) return kOpen;
      if (says == eAnswer::kBlocks) return static_cast<std::uint8_t>(component);
    }
    return static_cast<std::uint8_t>(eComponent::kNone);
  };
  for (std::size_t ropes = 0; ropes < kRopes; ++ropes) {
    for (std::size_t code = 0; code < kCellAnswers.size(); ++code) {
      const auto mapCode = static_cast<ShadowMap::Code>(code);
      firstVerdicts_[ropes][code] = verdict(ropes, mapCode, true);
      secondVerdicts_[ropes][code] = verdict(ropes, mapCode, false);
    }
  }
}

/// The verdict on a path in water for its four answers about ropes, two bits
/// each.
void ShadowingBatch::MakeWaterVerdicts(const ShadowingFilter& filter) {
  const auto either = [](std::size_t a, std::size_t b) {
    if (a == kBlocks || b == kBlocks) return eAnswer::kBlocks;
    return a == kClear && b == kClear ? eAnswer::kClear : eAnswer::kUnsure;
  };
  for (std::size_t i = 0; i < waterVerdicts_.size(); ++i) {
    const eAnswer holdDown = filter.HasHoldDownRopes()
                                 ? either(i & 3U, i >> 2U & 3U)
                                 : eAnswer::kClear;
    const eAnswer support = filter.HasSupportRopes()
                                ? either(i >> 4U & 3U, i >> 6U & 3U)
                                : eAnswer::kClear;
    auto verdict = static_cast<std::uint8_t>(eComponent::kNone);
    if (holdDown == eAnswer::kBlocks) {
      verdict = static_cast<std::uint8_t>(eComponent::kAVHDRope);
    } else if (holdDown == eAnswer::kUnsure || support == eAnswer::kUnsure) {
      verdict = kOpen;
    } else if (support == eAnswer::kBlocks) {
      verdict = static_cast<std::uint8_t>(eComponent::kSupportRope);
    }
    waterVerdicts_[i] = verdict;
  }
}

void ShadowingBatch::UseKernel(eKernel kernel) { kernel_ = &KernelOf(kernel); }

void ShadowingBatch::Judge(const ShadowingFilter& filter,
                           const LightPath* paths, std::size_t count,
                           std::uint8_t* verdicts) const {
  JudgeBlock(filter, Records(paths), count, verdicts);
}

void ShadowingBatch::Judge(const ShadowingFilter& filter,
                           const LightPathArrays& paths, std::size_t first,
                           std::size_t count, std::uint8_t* verdicts) const {
  JudgeBlock(filter, Columns(paths, first), count, verdicts);
}

template <class Paths>
void ShadowingBatch::JudgeBlock(const ShadowingFilter& filter,
                                const Paths& paths, std::size_t count,
                                std::uint8_t* verdicts) const {
  using Path = typename Paths::Path;
  using Vector = typename Paths::Vector;
  static constexpr auto kShapes = kShapesIn<Path, Vector>;
  const PathsByType byType(paths, count);

  // One behind the other: segments of paths with one crossing, the first
  // segments of paths with two, and their second ones in the same order.
  CrossingBlock crossings;
  WaterBlock water;
  std::size_t segments = 0;
  const auto addSegments = [&](std::size_t type, Vector Path::*point,
                               Vector Path::*direction, float sense) {
    const std::size_t begin = segments;
    paths.ForEach(point, byType.Of(type), byType.Count(type),
                  [&](std::size_t i, double x, double y, double z) {
                    crossings.pointX.at[begin + i] = static_cast<float>(x);
                    crossings.pointY.at[begin + i] = static_cast<float>(y);
                    crossings.pointZ.at[begin + i] = static_cast<float>(z);
                  });
    paths.ForEach(
        direction, byType.Of(type), byType.Count(type),
        [&, sense](std::size_t i, double x, double y, double z) {
          crossings.directionX.at[begin + i] = sense * static_cast<float>(x);
          crossings.directionY.at[begin + i] = sense * static_cast<float>(y);
          crossings.directionZ.at[begin + i] = sense * static_cast<float>(z);
        });
    segments += byType.Count(type);
  };
  const auto forEachType = [&](ePathKind kind, const auto& work) {
    for (std::size_t type = 0; type < kShapes.size(); ++type) {
      if (kShapes[type].kind == kind && byType.Count(type) > 0) work(type);
    }
  };
  forEachType(ePathKind::kOneCrossing, [&](std::size_t type) {
    addSegments(type, kShapes[type].firstPoint, &Path::FinalDirection, 1.0F);
  });
  const std::size_t firsts = segments;
  forEachType(ePathKind::kTwoCrossings, [&](std::size_t type) {
    addSegments(type, kShapes[type].firstPoint, &Path::InitialDirection, -1.0F);
  });
  const std::size_t seconds = segments;
  forEachType(ePathKind::kTwoCrossings, [&](std::size_t type) {
    addSegments(type, kShapes[type].secondPoint, &Path::FinalDirection, 1.0F);
  });
  kernel_->cross(geometry_, crossings, segments);

  const ShadowMap::Code* const codes = filter.Map().Codes().data();
  const auto verdictOn = [&](bool isFirst, std::size_t segment,
                             Vector Path::*point, std::size_t path) {
    const CrossingVerdicts& table = isFirst ? firstVerdicts_ : secondVerdicts_;
    const std::uint8_t ropes =
        ropes_[static_cast<std::size_t>(crossings.rope.at[segment])];
    const int cell = crossings.cell.at[segment];
    const std::uint8_t verdict = table[ropes][codes[cell]];
    const bool areRopesKnown =
        ropes != kNothingKnown && (ropes & 3U) != kUnsure;
    if (verdict != kOpen || !areRopesKnown || cell == geometry_.offMap) {
      return verdict;
    }
    // No rope below the ends blocks it, or the verdict would not be open.
    const bool isAboveEnds = (ropes & kBelowEnds) == 0;
    return static_cast<std::uint8_t>(filter.FindAtCrossing(
        paths.At(point, path), static_cast<std::size_t>(cell),
        {isAboveEnds, isAboveEnds && ropes == kBlocks, isFirst}));
  };
  std::size_t at = 0;
  forEachType(ePathKind::kOneCrossing, [&](std::size_t type) {
    const std::uint16_t* const list = byType.Of(type);
    for (std::size_t i = 0; i < byType.Count(type); ++i) {
      verdicts[list[i]] =
          verdictOn(true, at++, kShapes[type].firstPoint, list[i]);
    }
  });
  at = firsts;
  forEachType(ePathKind::kTwoCrossings, [&](std::size_t type) {
    const std::uint16_t* const list = byType.Of(type);
    for (std::size_t i = 0; i < byType.Count(type); ++i, ++at) {
      const std::uint8_t first =
          verdictOn(true, at, kShapes[type].firstPoint, list[i]);
      const std::uint8_t second = verdictOn(false, at + (seconds - firsts),
                                            kShapes[type].secondPoint, list[i]);
      verdicts[list[i]] = EarlierOf(first, second);
    }
  });

  forEachType(ePathKind::kWater, [&](std::size_t type) {
    const std::uint16_t* const list = byType.Of(type);
    const std::size_t inWater = byType.Count(type);
    paths.ForEach(kShapes[type].firstPoint, list, inWater,
                  [&](std::size_t i, double x, double y, double) {
                    water.startX.at[i] = static_cast<float>(x);
                    water.startY.at[i] = static_cast<float>(y);
                  });
    paths.ForEach(kShapes[type].secondPoint, list, inWater,
                  [&](std::size_t i, double x, double y, double) {
                    water.endX.at[i] = static_cast<float>(x);
                    water.endY.at[i] = static_cast<float>(y);
                  });
    paths.ForEach(&Path::InitialDirection, list, inWater,
                  [&](std::size_t i, double x, double y, double z) {
                    water.directionX.at[i] = static_cast<float>(x);
                    water.directionY.at[i] = static_cast<float>(y);
                    water.directionZ.at[i] = static_cast<float>(z);
                  });
    kernel_->passWater(geometry_, water, inWater);
    const auto ropesAt = [&](const WaterBlock::Values<int>& places,
                             std::size_t i) {
      return ropes_[static_cast<std::size_t>(places.at[i])] & 3U;
    };
    for (std::size_t i = 0; i < inWater; ++i) {
      verdicts[list[i]] = waterVerdicts_[ropesAt(water.entered, i) |
                                         ropesAt(water.left, i) << 2U |
                                         ropesAt(water.seenEntered, i) << 4U |
                                         ropesAt(water.seenLeft, i) << 6U];
    }
  });
  for (std::size_t i = 0; i < byType.Count(kUninitialised); ++i) {
    verdicts[byType.Of(kUninitialised)[i]] = kOpen;
  }
}

}  // namespace ZARN::DU
