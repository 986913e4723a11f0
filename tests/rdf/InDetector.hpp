#pragma once

#include <cstddef>
#include <vector>

#include "db/JsonTables.hpp"
#include "db/TableSet.hpp"
#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "tests/rdf/Frames.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::Testing {

inline constexpr std::size_t kExamplePaths = 24'000;

/// A test in the reference detector, in a folder of its own, that may use
/// several threads.
class InDetector : public InFolder {
 protected:
  InDetector() {
    LoadJsonTables(tables_, ZARN_DATA_DIR "/reference-detector");
    calculator_.BeginOfRun(tables_);
    light_.BeginOfRun(tables_);
  }
  ~InDetector() override { UseThreads(1); }

  std::vector<int> CodesOf(const std::vector<DU::LightPath>& paths) const {
    std::vector<int> codes;
    codes.reserve(paths.size());
    for (const DU::LightPath& path : paths) {
      codes.push_back(static_cast<int>(calculator_.FindShadowing(path)));
    }
    return codes;
  }

  TableSet tables_;
  DU::ShadowingCalculator calculator_;
  DU::LightPathCalculator light_;
};

}  // namespace ZARN::Testing
