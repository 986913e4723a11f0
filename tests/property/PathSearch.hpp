#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "tests/property/Paths.hpp"
#include "tests/property/Random.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Testing {

/// Looks for paths on which two calculators may differ: draws some, then
/// narrows down the way between two that have different outcomes until they
/// differ in the last bits, and shakes what it found.
class PathSearch {
 public:
  /// Judges a path, which lies at a limit or not, and numbers its outcome; none
  /// ends the search.
  using Judge = std::function<std::optional<int>(const TestPath&, bool isNear)>;

  /// @param model  a loaded calculator; must outlive this and not change
  PathSearch(const Reference::PlainShadowingCalculator& model, Random& random,
             Judge judge)
      : maker_(model, random), random_(random), judge_(std::move(judge)) {}

  /// Have this many paths judged, or as many as it takes to end the search.
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
