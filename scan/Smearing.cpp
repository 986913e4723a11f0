#include "scan/Smearing.hpp"

#include <cmath>

#include "TMath.h"

namespace ZARN::Scan {
namespace {

std::mt19937_64 GeneratorOf(std::uint64_t seed, std::uint64_t number) {
  constexpr unsigned kHalf = 32;
  std::seed_seq sequence = {seed & UINT32_MAX, seed >> kHalf,
                            number & UINT32_MAX, number >> kHalf};
  return std::mt19937_64(sequence);
}

}  // namespace

SmearedPositions::SmearedPositions(const DU::Smearing& smearing,
                                   std::uint64_t number)
    : sigma_(smearing.sigma),
      generator_(
          GeneratorOf(static_cast<std::uint64_t>(smearing.seed), number)) {}

TVector3 SmearedPositions::Next(const TVector3& centre) {
  const double x = Gaussian();
  const double y = Gaussian();
  const double z = Gaussian();
  return centre + sigma_ * TVector3(x, y, z);
}

/// The method of Box and Muller, with half of its result. The distributions of
/// the standard library differ from one library to another.
double SmearedPositions::Gaussian() {
  constexpr unsigned kUnusedBits = 11;  // a double has 53
  constexpr double kStep = 0x1p-53;
  const auto uniform = [&] {  // > 0, where the logarithm is finite
    return (static_cast<double>(generator_() >> kUnusedBits) + 1.0) * kStep;
  };
  const double radius = std::sqrt(-2.0 * std::log(uniform()));
  return radius * std::cos(TMath::TwoPi() * uniform());
}

}  // namespace ZARN::Scan
