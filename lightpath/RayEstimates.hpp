#pragma once

#include <cstddef>
#include <cstdint>

#include "lightpath/RayKernel.hpp"
#include "lightpath/RayPlane.hpp"

namespace ZARN::DU {

// What a table says about rays: a part of RayKernel.cpp. It is compiled for
// several processors, so every function here is always inlined.

/// What the table says about PMTs.
struct Estimates {
  template <class Number>
  using Lane = RayBlock::Lane<Number>;
  Lane<double> sine;   ///< of the angle between event and PMT
  Lane<int> cell;      ///< of the table
  Lane<double> share;  ///< of the cell that is passed
  Lane<double> h, inverseSlope, spread;
  Lane<double> cosT, sinT;
  Lane<double> miss, step;  ///< of the last correction
};

/// Two numbers of a cell. They are loaded as one, since loading from many cells
/// takes the longest.
using Word [[gnu::may_alias]] = std::uint64_t;
inline constexpr std::ptrdiff_t kWordsInCell = sizeof(RayCell) / sizeof(Word);

struct Pair {
  double first, second;
};

[[gnu::always_inline]] inline Pair PairOf(Word word) {
  constexpr unsigned kHalf = 32;
  return {__builtin_bit_cast(float, static_cast<std::uint32_t>(word)),
          __builtin_bit_cast(float, static_cast<std::uint32_t>(word >> kHalf))};
}

/// Find the angles between event and PMTs, and their cells.
template <bool kIsFolded>
[[gnu::always_inline]] inline void FindCells(const RayBranch& b,
                                             const RayOrigin& e,
                                             const RayPMTs& p, RayBlock& k,
                                             Estimates& found,
                                             std::size_t count) {
  const RayBranch branch = b;
  const RayOrigin event = e;
  const RayPMTs pmts = p;
  const double last = branch.count - 1;
#pragma GCC ivdep  // nothing that is given is among the results
  for (std::size_t i = 0; i < count; ++i) {
    const double x =
        event.x * pmts.x[i] + event.y * pmts.y[i] + event.z * pmts.z[i];
    const double y = branch.sense * x;
    const double sine2 = (1.0 - y) * (1.0 + y);
    const double beyond = y - branch.fold;
    const double along =
        kIsFolded ? __builtin_sqrt(beyond > 0.0 ? beyond : 0.0) : y;
    const double place = (along - branch.first) * branch.scale;
    const double positive = place > 0.0 ? place : 0.0;
    const int at = static_cast<int>(positive < last ? positive : last);
    k.cosine.at[i] = x;
    const double sine = __builtin_sqrt(sine2 > 0.0 ? sine2 : 0.0);
    k.inverseSine.at[i] = 1.0 / (sine > kLeastSine ? sine : kLeastSine);
    found.sine.at[i] = sine;
    found.cell.at[i] = at;
    found.share.at[i] = place - at;
  }
}

[[gnu::always_inline]] inline void ReadCells(const RayBranch& branch,
                                             Estimates& found,
                                             std::size_t count) {
  const auto* const words = reinterpret_cast<const Word*>(branch.cells);
#pragma GCC ivdep  // the cells are not among the results
  for (std::size_t i = 0; i < count; ++i) {
    const std::ptrdiff_t word = kWordsInCell * found.cell.at[i];
    const double share = found.share.at[i];
    const Pair h01 = PairOf(words[word]);
    const Pair h23 = PairOf(words[word + 1]);
    const Pair slope = PairOf(words[word + 2]);
    found.h.at[i] =
        h01.first +
        share * (h01.second + share * (h23.first + share * h23.second));
    found.inverseSlope.at[i] = slope.first;
    found.spread.at[i] = slope.second;
  }
}

template <bool kIsFolded>
[[gnu::always_inline]] inline void Estimate(const RayBranch& branch,
                                            const RayOrigin& event,
                                            const RayPMTs& pmts, RayBlock& k,
                                            Estimates& found,
                                            std::size_t count) {
  FindCells<kIsFolded>(branch, event, pmts, k, found, count);
  ReadCells(branch, found, count);
  const double sense = branch.sense;
  for (std::size_t i = 0; i < count; ++i) {
    const double y = sense * k.cosine.at[i];
    const double h = found.h.at[i];
    const double h2 = h * h * (1.0 - y);
    const double more = 1.0 + y;
    const double inverse = 1.0 / (more + h2);
    found.cosT.at[i] = (more - h2) * inverse;
    found.sinT.at[i] = 2.0 * h * found.sine.at[i] * inverse;
  }
}

}  // namespace ZARN::DU
