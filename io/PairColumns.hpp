#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TVector3.h"
#include "du/Verdict.hpp"
#include "lightpath/LightPathCalculator.hpp"

namespace ZARN::IO {

struct PathDetails;

/// An event and a PMT, and the verdict on one light path between them.
struct JudgedPair {
  const TVector3& event;
  const TVector3& pmt;
  DU::eVerdict verdict;
  /// Holds the light path, if there is one and a column needs it.
  const DU::LightPathCalculator& lightPath;
  std::size_t smearedPaths = 0;     ///< positions around the event with a path
  std::size_t smearedShadowed = 0;  ///< those whose path is shadowed
  /// Of the light path, if there is one and a column needs them.
  const PathDetails* details = nullptr;
};

/// The verdict on a path that was given, for the columns of such paths
/// (GivenPathColumns).
///
/// @param details  must outlive the result
JudgedPair JudgedPath(DU::eVerdict verdict, const PathDetails& details);

/// What must be found for a column besides the verdict.
enum class eNeed {
  kNothing,
  kPath,                ///< the light path
  kCriticalTolerances,  ///< and the tolerances at which it is blocked
  kItem                 ///< and the item that blocks it
};

/// What the values of a column are.
enum class eValue { kNumber, kWholeNumber, kText };

/// A column that a table of verdicts can have besides its usual ones.
struct PairColumn {
  const char* name;
  const char* description;
  eNeed need;
  eValue kind;
  /// Nullopt if the pair has no value: what belongs to the light path if there
  /// is none. Null for text.
  std::optional<double> (*value)(const JudgedPair& pair);
  /// Empty if the pair has no value. Null for numbers. Valid as long as the
  /// details of the pair.
  std::string_view (*text)(const JudgedPair& pair) = nullptr;
};

/// All columns that can be chosen.
const std::vector<PairColumn>& PairColumns();

/// The names of those that can be chosen for paths that are given.
const std::vector<std::string>& GivenPathColumns();

/// The columns of a scan that also judges positions around each event.
const std::vector<PairColumn>& SmearedColumns();

/// The column with this name; null if there is none.
const PairColumn* FindPairColumn(const std::string& name);

}  // namespace ZARN::IO
