#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Testing {

/// What the comparisons of critical tolerances came across.
struct ToleranceTally {
  /// Finite ones of each component, in the order of testing.
  std::array<long, DU::kNumberOfComponents> finite{};
  /// Verdicts of the belly plates at the tolerance that was set which the
  /// critical tolerance does not give, because of ragged edges, and the largest
  /// distance between the two tolerances, mm.
  long ragged = 0;
  double widest = 0.0;

  void Add(const ToleranceTally& other) {
    for (std::size_t i = 0; i < finite.size(); ++i)
      finite[i] += other.finite[i];
    ragged += other.ragged;
    widest = std::max(widest, other.widest);
  }
};

/// What the real calculator says about a path.
struct ExplainedPath {
  DU::ShadowingExplanation explanation;
  DU::CriticalTolerances critical;
};

/// Compare this for every component with the plain reference: the verdict of
/// each component at the tolerance that is set, and those at its critical
/// tolerance and at the next smaller double.
///
/// @param real   gives the ranges of the tolerances
/// @param plain  in the same run at the same tolerance; its tolerances are
///               changed and set back
/// @param path   the path, with default type names
/// @return the first difference; empty if there is none
std::string ExplanationDifference(const ExplainedPath& explained,
                                  const DU::ShadowingCalculator& real,
                                  Reference::PlainShadowingCalculator& plain,
                                  DU::LightPathCalculator& path,
                                  ToleranceTally& tally);

}  // namespace ZARN::Testing
