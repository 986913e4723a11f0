#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "du/fast/BatchKernel.hpp"
#include "du/fast/BatchVerdict.hpp"
#include "du/fast/ShadowMap.hpp"
#include "du/fast/ShadowingFilter.hpp"
#include "du/geometry/Answer.hpp"
#include "du/geometry/AzimuthTable.hpp"
#include "du/geometry/CylinderCrossing.hpp"
#include "du/hardware/ShadowingComponent.hpp"
#include "log/Assert.hpp"

namespace ZARN::DU {

/// What is known about the vertical ropes that a segment can meet: the
/// hold-down ropes if it starts below their ends, else the support ropes.
class RopeAnswer {
 public:
  /// The number of different values.
  static constexpr std::size_t kCount = 8;

  /// For unknown ropes.
  constexpr RopeAnswer() : code_(kNotKnown) {}
  constexpr RopeAnswer(eAnswer answer, bool isBelowEnds)
      : code_(static_cast<std::uint8_t>(static_cast<unsigned>(answer) |
                                        (isBelowEnds ? kBelowEnds : 0U))) {}
  /// @param code  below kCount
  static constexpr RopeAnswer OfCode(std::size_t code) {
    ZARN_ASSERT(code < kCount, code);
    RopeAnswer answer;
    answer.code_ = static_cast<std::uint8_t>(code);
    return answer;
  }

  std::size_t Code() const { return code_; }
  bool IsBelowEnds() const { return (code_ & kBelowEnds) != 0; }
  /// The number of the answer; kNotKnown if it is not known which ropes to
  /// test.
  std::size_t AnswerNumber() const { return code_ & kAnswer; }
  /// Whether it is known which ropes to test.
  bool IsKnown() const { return AnswerNumber() != kNotKnown; }
  eAnswer Answer() const {
    return IsKnown() ? static_cast<eAnswer>(AnswerNumber()) : eAnswer::kUnsure;
  }

 private:
  static constexpr unsigned kAnswer = 3;  // the bits that hold an eAnswer
  static constexpr unsigned kNotKnown = 3;
  static constexpr unsigned kBelowEnds = 4;

  std::uint8_t code_;
};

/// By how much a number of a geometry is moved, relative to it and at least by
/// this, mm or mm^2, so that a comparison in single precision is safe. A
/// crossing's squared distance has 5 roundings there, two of them of the path,
/// and the limit has one: 3.6e-7.
inline constexpr double kSinglePrecisionBand = 1e-6;

/// Bound on the error of a crossing's height in a row, mm, for any vessel that
/// has a map. Near z = 0 the band above does not cover it.
inline constexpr double kHeightError =
    CrossingBands<float>::kPathError * ShadowMap::kLargestRadius;

/// What a batch needs of a filter: numbers for its kernels, and small tables
/// that turn their results into verdicts.
class BatchTables {
 public:
  explicit BatchTables(const ShadowingFilter& filter);

  const BatchGeometry& Geometry() const { return geometry_; }

  /// The rope answer with an index that a kernel found.
  RopeAnswer RopesAt(int place) const {
    const auto i = static_cast<std::size_t>(place);
    ZARN_ASSERT(i < ropes_.size(), place, ropes_.size());
    return ropes_[i];
  }

  /// The verdict on a segment that crosses the vessel.
  ///
  /// @param isFirst  of its path: only this one is tested against the pipes
  BatchVerdict OnCrossing(RopeAnswer ropes, ShadowMap::Code code,
                          bool isFirst) const {
    return (isFirst ? firstVerdicts_ : secondVerdicts_)[ropes.Code()][code];
  }

  /// OnCrossing for segments of a block.
  ///
  /// @param codes  of the map
  void OnCrossings(const CrossingBlock& block, std::size_t begin,
                   std::size_t count, const ShadowMap::Code* codes,
                   bool isFirst, BatchVerdict* verdicts) const {
    // Copied: a byte that is written could be part of any of these.
    const RopeAnswer* const ropes = ropes_.data();
    const CrossingVerdicts& table = isFirst ? firstVerdicts_ : secondVerdicts_;
    for (std::size_t i = 0; i < count; ++i) {
      const RopeAnswer rope = ropes[block.rope.at[begin + i]];
      verdicts[i] = table[rope.Code()][codes[block.cell.at[begin + i]]];
    }
  }

  /// The verdict on path @p i of a block in water.
  BatchVerdict InWater(const WaterBlock& block, std::size_t i) const {
    const auto answer = [&](const WaterBlock::Values<int>& places) {
      return RopesAt(places.at[i]).AnswerNumber();
    };
    return waterVerdicts_[answer(block.entered) | answer(block.left) << 2U |
                          answer(block.seenEntered) << 4U |
                          answer(block.seenLeft) << 6U];
  }

 private:
  // Indexed by RopeAnswer and ShadowMap::Code.
  using CrossingVerdicts =
      std::array<std::array<BatchVerdict, 256>, RopeAnswer::kCount>;

  void SetHeights(const ShadowingFilter& filter);
  void SetRopeLimits(const ShadowingFilter& filter);
  void AppendRopeTables(const ShadowingFilter& filter);
  int Append(RopeAnswer answer);
  int Append(const VerticalRopeFilter& ropes, bool isBelowEnds);
  void MakeCrossingVerdicts();
  void MakeWaterVerdicts(const ShadowingFilter& filter);

  BatchGeometry geometry_ = {};
  std::vector<RopeAnswer> ropes_;         // the azimuth tables, end to end
  CrossingVerdicts firstVerdicts_ = {};   // of a path's first segment
  CrossingVerdicts secondVerdicts_ = {};  // of its second: no pipes
  // Indexed by the four answers of a WaterBlock, two bits of AnswerNumber each.
  std::array<BatchVerdict, 256> waterVerdicts_ = {};
};

}  // namespace ZARN::DU
