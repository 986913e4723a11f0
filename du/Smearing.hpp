#pragma once

#include <cstddef>
#include <cstdint>

namespace ZARN::DU {

/// How uncertain the positions of events are, and how many positions are judged
/// for each.
struct Smearing {
  double sigma = 0.0;         ///< mm, of a Gaussian in each coordinate
  std::size_t samples = 100;  ///< 1 to kMostSamples
  std::int64_t seed = 1;      ///< any

  static constexpr int kMostSamples = 65535;
};

}  // namespace ZARN::DU
