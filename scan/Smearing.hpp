#pragma once

#include <cstdint>
#include <optional>
#include <random>

#include "TVector3.h"
#include "du/Smearing.hpp"

namespace ZARN::Scan {

/// Random positions around an event. They depend only on the seed and on the
/// event's number, so that they are the same with any number of threads.
class SmearedPositions {
 public:
  /// @param number  of the event in the scan
  SmearedPositions(const DU::Smearing& smearing, std::uint64_t number);

  TVector3 Next(const TVector3& centre);

 private:
  double Gaussian();

  double sigma_;
  std::mt19937_64 generator_;
};

/// What is known of a pair after its smeared positions were judged.
struct SmearedCount {
  std::uint16_t paths = 0;     ///< positions with a light path
  std::uint16_t shadowed = 0;  ///< those whose path is shadowed
};

/// The mean share of smeared positions that are shadowed, over the pairs that
/// have such a share.
class SmearedMean {
 public:
  void Add(SmearedCount count) {
    if (count.paths == 0) return;
    sum_ +=
        static_cast<double>(count.shadowed) / static_cast<double>(count.paths);
    ++pairs_;
  }
  /// Nullopt if no pair has a share.
  std::optional<double> Value() const {
    if (pairs_ == 0) return std::nullopt;
    return sum_ / static_cast<double>(pairs_);
  }

 private:
  double sum_ = 0.0;
  std::uint64_t pairs_ = 0;
};

}  // namespace ZARN::Scan
