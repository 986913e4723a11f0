#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "du/hardware/ShadowingComponent.hpp"
#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathArrays.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::Benchmarks {

/// In the names of sets: paths of all types (no path is uninitialised).
inline constexpr DU::eLightPathType kMixed = DU::kUninitialised;

/// The types that light takes in the reference detector: the wall's index is
/// above the water's, so no ray passes through the wall alone.
inline constexpr std::array kTypesThatOccur = {
    DU::kInnerAVToWater, DU::kAVThroughInnerAVToWater,
    DU::kAVToWater,      DU::kWaterThroughInnerAV,
    DU::kWater,          DU::kWaterReflection};

/// The position and directions that the verdict on a path of this type reads.
std::vector<TVector3 DU::LightPath::*> MembersRead(DU::eLightPathType type);

/// The same light paths as records and as columns, with their verdicts.
class PathSet {
 public:
  explicit PathSet(std::vector<DU::LightPath> paths);

  std::size_t Size() const { return records_.size(); }
  const std::vector<DU::LightPath>& Records() const { return records_; }
  /// Columns that no path uses are null.
  const DU::LightPathArrays& Columns() const { return columns_; }
  /// The numbers of the columns that are used.
  const std::vector<std::vector<double>>& Numbers() const { return numbers_; }
  const std::vector<int>& Types() const { return types_; }

  /// Mean number of bytes in the cache lines of the columns that hold what the
  /// verdict on a path reads.
  double ColumnBytesPerPath() const { return columnBytesPerPath_; }

  std::vector<DU::eShadowingComponent> expected;

 private:
  std::vector<DU::LightPath> records_;
  std::vector<int> types_;
  std::vector<std::vector<double>> numbers_;
  DU::LightPathArrays columns_;
  double columnBytesPerPath_;
};

/// Draws light paths of the reference detector: from events that fill the
/// inside, the wall or the water evenly, to PMTs picked at random; what the
/// light path calculator makes of them, sorted by type.
class PathSource {
 public:
  /// The tables of the reference detector are in the database.
  PathSource();

  /// @param type  one of kTypesThatOccur, or kMixed: 59 % start inside, 30 %
  ///              stay in the water, 8 % cross the vessel from the water, and
  ///              1 % are of each other type, shuffled
  std::vector<DU::LightPath> Draw(DU::eLightPathType type, std::size_t count);

 private:
  DU::LightPath DrawOne(DU::eLightPathType type);
  TVector3 EventFor(DU::eLightPathType type);

  Testing::Random random_{5860};
  std::vector<TVector3> pmts_;
  DU::LightPathCalculator calculator_;
};

}  // namespace ZARN::Benchmarks
