#include "tests/property/PathSearch.hpp"

#include <cmath>

namespace ZARN::Testing {

namespace {

constexpr std::size_t kDrawnPerThousand = 120;
constexpr int kSteps = 60;
constexpr int kShakes = 180;
constexpr int kBeside = 60;
/// Between paths that are less than this fraction apart, the relative distance
/// is below PathMaker::kAtLimit.
constexpr double kNear = 0x1p-42;

}  // namespace

std::optional<int> PathSearch::Ask(const TestPath& path, bool isNear) {
  if (IsOver()) return std::nullopt;
  const std::optional<int> outcome = judge_(path, isNear);
  left_ = outcome.has_value() ? left_ - 1 : 0;
  return outcome;
}

void PathSearch::Draw() {
  const TestPath path = maker_.Draw();
  const std::optional<int> outcome = Ask(path, path.isAtLimit);
  if (outcome.has_value() && PathMaker::IsFinite(path)) {
    drawn_.push_back({path, *outcome});
  }
}

void PathSearch::Run(std::size_t paths) {
  left_ = paths;
  drawn_.clear();
  const std::size_t toDraw = paths * kDrawnPerThousand / 1000;
  for (std::size_t i = 0; i < toDraw; ++i) Draw();
  while (!IsOver()) {
    if (drawn_.empty()) {
      Draw();
      continue;
    }
    // A copy: drawing adds to the list.
    const Judged a = random_.Pick(drawn_);
    const Judged* const b = FindOther(a);
    if (b == nullptr) {
      // All paths of this type have the same outcome: try one more path.
      Draw();
    } else {
      Bisect(a, b->path);
    }
  }
}

const PathSearch::Judged* PathSearch::FindOther(const Judged& a) {
  constexpr int kAttempts = 30;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const Judged& other = random_.Pick(drawn_);
    if (other.path.path.LightPathType == a.path.path.LightPathType &&
        other.path.naming == a.path.naming && other.path.name == a.path.name &&
        other.outcome != a.outcome) {
      return &other;
    }
  }
  return nullptr;
}

void PathSearch::Bisect(const Judged& a, const TestPath& b) {
  double low = 0.0;
  double high = 1.0;
  for (int step = 0; step < kSteps; ++step) {
    const double middle = low + (high - low) / 2.0;
    if (middle == low || middle == high) break;
    const std::optional<int> outcome =
        Ask(PathMaker::Between(a.path, b, middle), high - low < kNear);
    if (!outcome.has_value()) return;
    (*outcome == a.outcome ? low : high) = middle;
  }
  for (int i = 0; i < kShakes && !IsOver(); ++i) {
    const double t = random_.Chance(0.5) ? low : high;
    Ask(maker_.Shaken(PathMaker::Between(a.path, b, t)), true);
  }
  // At distances where single precision starts to distinguish the two sides.
  for (int i = 0; i < kBeside && !IsOver(); ++i) {
    const double away = std::pow(10.0, random_.Uniform(-5.0, -1.0));
    const double t = random_.Chance(0.5) ? low - away : high + away;
    Ask(PathMaker::Between(a.path, b, t), false);
  }
}

}  // namespace ZARN::Testing
