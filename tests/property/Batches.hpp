#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::Testing {

/// Paths whose verdicts are known.
struct JudgedPaths {
  std::vector<DU::LightPath> paths;
  std::vector<DU::eShadowingComponent> verdicts;

  std::size_t Size() const { return paths.size(); }
  void Add(const DU::LightPath& path, DU::eShadowingComponent verdict) {
    paths.push_back(path);
    verdicts.push_back(verdict);
  }
  void Clear() {
    paths.clear();
    verdicts.clear();
  }
};

/// A path in hexadecimal and two verdicts.
std::string DescribeDifference(const DU::LightPath& path,
                               DU::eShadowingComponent found,
                               DU::eShadowingComponent plain);

// Each of these has all paths judged and returns what differed first, empty if
// nothing did; a verdict written before or after the batch's own counts, too.

/// One after the other.
std::string SingleDifference(const DU::ShadowingCalculator& calculator,
                             const JudgedPaths& judged);

/// As a batch of records.
std::string RecordsDifference(const DU::ShadowingCalculator& calculator,
                              const JudgedPaths& judged, std::size_t threads);

/// As a batch of columns; those that no path uses are null.
std::string ColumnsDifference(const DU::ShadowingCalculator& calculator,
                              const JudgedPaths& judged, std::size_t threads);

/// By the batch kernels alone, every one that this processor has, as records
/// and as columns. What they leave open is right; but all leave open the same.
///
/// @param open  how many of them the kernels leave open is added
std::string KernelDifference(const DU::ShadowingCalculator& calculator,
                             const JudgedPaths& judged, std::size_t& open);

/// One by one and as batches on 1 and on 3 threads.
std::string AnyDifference(const DU::ShadowingCalculator& calculator,
                          const JudgedPaths& judged);

}  // namespace ZARN::Testing
