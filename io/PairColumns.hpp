#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "TVector3.h"
#include "du/Verdict.hpp"
#include "lightpath/LightPathCalculator.hpp"

namespace ZARN::IO {

/// An event and a PMT, and the verdict on one light path between them.
struct JudgedPair {
  const TVector3& event;
  const TVector3& pmt;
  DU::eVerdict verdict;
  /// Holds the light path, if there is one and a column needs it.
  const DU::LightPathCalculator& lightPath;
  std::size_t smearedPaths = 0;     ///< positions around the event with a path
  std::size_t smearedShadowed = 0;  ///< those whose path is shadowed
};

/// A column that a table of verdicts can have besides its usual ones.
struct PairColumn {
  const char* name;
  const char* description;
  bool needsPath;  ///< whether the light path must be computed
  bool isWhole;    ///< whether the values are whole numbers
  /// Nullopt if the pair has no value: what belongs to the light path if there
  /// is none.
  std::optional<double> (*value)(const JudgedPair& pair);
};

/// All columns that can be chosen.
const std::vector<PairColumn>& PairColumns();

/// The columns of a scan that also judges positions around each event.
const std::vector<PairColumn>& SmearedColumns();

/// The column with this name; null if there is none.
const PairColumn* FindPairColumn(const std::string& name);

}  // namespace ZARN::IO
