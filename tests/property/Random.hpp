#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "TVector3.h"

namespace ZARN::Testing {

/// Random numbers from a seed. They are the same with every compiler, which the
/// distributions of the standard library do not guarantee.
class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}

  /// In [low, high).
  double Uniform(double low, double high) {
    constexpr double kStep = 0x1p-53;
    const double fraction = static_cast<double>(engine_() >> 11U) * kStep;
    return low + fraction * (high - low);
  }

  /// In [0, count).
  std::size_t Below(std::size_t count) { return engine_() % count; }

  /// In [low, high], both included.
  int Whole(int low, int high) {
    return low +
           static_cast<int>(Below(static_cast<std::size_t>(high - low) + 1));
  }

  bool Chance(double probability) { return Uniform(0.0, 1.0) < probability; }

  template <class List>
  const auto& Pick(const List& list) {
    return list[Below(list.size())];
  }

  /// Uniformly distributed on the unit sphere.
  TVector3 Direction() {
    const double z = Uniform(-1.0, 1.0);
    const double phi = Uniform(-3.2, 3.2);
    const double rho = std::sqrt(1.0 - z * z);
    return {rho * std::cos(phi), rho * std::sin(phi), z};
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace ZARN::Testing
