#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "TVector3.h"
#include "du/ShadowingCalculator.hpp"
#include "du/Verdict.hpp"
#include "du/fast/LazyLayers.hpp"
#include "lightpath/Kernels.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/PMTArray.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::Testing {

/// The random tolerances at which geometries are tested.
double AnyTolerance(Random& random);

/// Begin a run with a random geometry and random media. The radii of the
/// vessel are mostly the same for the light as for the hardware.
void BeginRandomRun(DU::ShadowingCalculator& shadowing,
                    DU::LightPathCalculator& light, Random& random);

/// What comparisons found.
struct RowTally {
  static constexpr std::size_t kVerdicts =
      static_cast<std::size_t>(DU::eVerdict::kNoReflectedPath) + 1;

  std::uint64_t pairs = 0;
  std::uint64_t open = 0;  ///< of the pairs, asked exactly
  /// On direct and on reflected light.
  std::array<std::uint64_t, kVerdicts> direct{};
  std::array<std::uint64_t, kVerdicts> reflected{};

  void Add(const RowTally& other);
};

/// Compares rows of verdicts with the verdicts on their pairs, each from its
/// exact path.
class RowComparison {
 public:
  /// @param shadowing, light  after their BeginOfRun; must outlive this
  RowComparison(const DU::ShadowingCalculator& shadowing,
                const DU::LightPathCalculator& light);

  /// Compare the rows of FindVerdicts, and those of kernels where they are not
  /// open.
  ///
  /// @param kernels  the first is the one whose open pairs are counted
  /// @return the first difference, empty if there is none
  std::string Compare(const TVector3& eventPos, const DU::PMTArray& pmts,
                      const std::vector<DU::eKernel>& kernels, RowTally& tally);

  /// PMTs so near to where the verdict or the type of the direct or reflected
  /// light changes that only the last digits of a crossing point decide: by
  /// bisection between two of @p positions. May give fewer than @p count, and
  /// one more.
  std::vector<TVector3> NearLimits(const TVector3& eventPos,
                                   const std::vector<TVector3>& positions,
                                   std::size_t count, Random& random);

 private:
  /// What is right for a pair.
  struct Pair {
    DU::eVerdict direct;
    DU::eVerdict reflected;
    std::uint8_t type;

    bool operator==(const Pair& other) const {
      return direct == other.direct && reflected == other.reflected &&
             type == other.type;
    }
  };

  Pair Ask(const TVector3& eventPos, const TVector3& pmtPos);
  std::string FullDifference(const TVector3& eventPos,
                             const DU::PMTArray& pmts) const;
  std::string KernelDifference(const TVector3& eventPos,
                               const DU::PMTArray& pmts, DU::eKernel kernel,
                               std::uint64_t& open);

  const DU::ShadowingCalculator& shadowing_;
  DU::LightPathCalculator light_;
  DU::PreparedLayers layers_;
  std::vector<Pair> expected_;
};

}  // namespace ZARN::Testing
