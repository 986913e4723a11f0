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

/// Text with a path in hexadecimal and two verdicts.
std::string DescribeDifference(const DU::LightPath& path,
                               DU::eShadowingComponent found,
                               DU::eShadowingComponent plain);

// Each of these judges all paths and returns the first difference, empty if
// there is none; a verdict written before or after those of the batch counts as
// one.

/// By single calls.
std::string SingleDifference(const DU::ShadowingCalculator& calculator,
                             const JudgedPaths& judged);

/// As a batch of records.
std::string RecordsDifference(const DU::ShadowingCalculator& calculator,
                              const JudgedPaths& judged, std::size_t threads);

/// As a batch of columns; those that no path uses are null.
std::string ColumnsDifference(const DU::ShadowingCalculator& calculator,
                              const JudgedPaths& judged, std::size_t threads);

/// By each batch kernel of this processor alone, as records and as columns.
/// Verdicts may be left open, but by all kernels for the same paths.
///
/// @param open  the number of paths that the kernels leave open is added to it
std::string KernelDifference(const DU::ShadowingCalculator& calculator,
                             const JudgedPaths& judged, std::size_t& open);

/// By single calls and as batches on 1 and on 3 threads.
std::string AnyDifference(const DU::ShadowingCalculator& calculator,
                          const JudgedPaths& judged);

}  // namespace ZARN::Testing
