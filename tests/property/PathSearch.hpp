#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "tests/property/Paths.hpp"
#include "tests/property/Random.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Testing {

/// Searches for paths on which two calculators may differ: draws some, then
/// bisects between two that have different outcomes until they differ only in
/// the last bits, and changes the result slightly.
class PathSearch {
 public:
  /// Judges a path that is or is not near a limit, and returns a number for the
  /// outcome; nullopt ends the search.
  using Judge = std::function<std::optional<int>(const TestPath&, bool isNear)>;

  /// @param model  a loaded calculator; must outlive this object and not change
  PathSearch(const Reference::PlainShadowingCalculator& model, Random& random,
             Judge judge)
      : maker_(model, random), random_(random), judge_(std::move(judge)) {}

  /// Let this many paths be judged, or fewer if the search ends.
  void Run(std::size_t paths);

 private:
  struct Judged {
    TestPath path;
    int outcome;
  };

  bool IsOver() const { return left_ == 0; }
  std::optional<int> Ask(const TestPath& path, bool isNear);
  void Draw();
  const Judged* FindOther(const Judged& a);
  void Bisect(const Judged& a, const TestPath& b);

  PathMaker maker_;
  Random& random_;
  Judge judge_;
  std::vector<Judged> drawn_;
  std::size_t left_ = 0;
};

}  // namespace ZARN::Testing
