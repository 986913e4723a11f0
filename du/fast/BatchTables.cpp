#include "du/fast/BatchTables.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ZARN::DU {
namespace {

using eComponent = eShadowingComponent;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// A number in single precision that is surely lower, or higher, even if the
/// number that it is compared with is rounded.
float Lower(double value) {
  return static_cast<float>(value - kSinglePrecisionBand *
                                        std::max(1.0, std::abs(value)));
}
float Higher(double value) {
  return static_cast<float>(value + kSinglePrecisionBand *
                                        std::max(1.0, std::abs(value)));
}

/// The square of a limit of a filter, or NaN if the filter judges nothing.
float SquareOrNaN(const VerticalRopeFilter& filter, double square) {
  return filter.Radius2() > 0.0 ? static_cast<float>(square)
                                : std::numeric_limits<float>::quiet_NaN();
}

/// The verdict from the answers of all components.
template <class AnswerOf>
BatchVerdict FirstAmong(const AnswerOf& answerOf) {
  for (const eComponent component : kShadowingComponents) {
    switch (answerOf(component)) {
      case eAnswer::kUnsure:
        return kOpenVerdict;
      case eAnswer::kBlocks:
        return BatchVerdictOf(component);
      case eAnswer::kClear:
        break;
    }
  }
  return BatchVerdictOf(eComponent::kNone);
}

/// The answer of a component for a segment that crosses the vessel.
eAnswer AnswerAtCrossing(eComponent component, RopeAnswer ropes,
                         ShadowMap::Code code, bool isFirst) {
  const auto mapped = [&](eMappedTest test) {
    return ShadowMap::AnswerOf(code, test);
  };
  switch (component) {
    case eComponent::kAVHDRope:
      return ropes.IsBelowEnds() ? ropes.Answer()
                                 : mapped(eMappedTest::kHoldDownSurface);
    case eComponent::kSupportRope:
      return ropes.IsBelowEnds() ? eAnswer::kClear : ropes.Answer();
    case eComponent::kBellyPlate:
      return mapped(eMappedTest::kBellyPlate);
    case eComponent::kNCDAnchor:
      return mapped(eMappedTest::kNCDAnchor);
    case eComponent::kAVPipe:
      return isFirst ? mapped(eMappedTest::kAVPipe) : eAnswer::kClear;
    case eComponent::kNeckBoss:
      return mapped(eMappedTest::kNeckBoss);
    case eComponent::kNone:
      break;
  }
  return eAnswer::kClear;
}

}  // namespace

BatchTables::BatchTables(const ShadowingFilter& filter) {
  const ShadowMap& map = filter.Map();
  geometry_.lowest2 = Higher(map.Lowest2());
  geometry_.highest2 = Lower(map.Highest2());
  geometry_.mapCells = map.Cells();
  geometry_.offMap = map.Cells() * map.Cells();
  SetHeights(filter);
  SetRopeLimits(filter);
  AppendRopeTables(filter);
  MakeCrossingVerdicts();
  MakeWaterVerdicts(filter);
}

/// Set the heights at which ropes begin and end. Ropes of a component that is
/// off are never met.
void BatchTables::SetHeights(const ShadowingFilter& filter) {
  BatchGeometry& g = geometry_;
  g.belowEnds = g.aboveEnds = -kInfinity;
  if (filter.HasHoldDownRopes()) {
    g.belowEnds = Lower(filter.HoldDownEndHeight() - kHeightError);
    g.aboveEnds = Higher(filter.HoldDownEndHeight() + kHeightError);
  }
  g.belowFeet = g.aboveFeet = kInfinity;
  if (filter.HasSupportRopes()) {
    g.belowFeet = Lower(filter.SupportFootHeight() - kHeightError);
    g.aboveFeet = Higher(filter.SupportFootHeight() + kHeightError);
  }
}

void BatchTables::SetRopeLimits(const ShadowingFilter& filter) {
  BatchGeometry& g = geometry_;
  const VerticalRopeFilter& holdDown = filter.HoldDownRopes();
  const VerticalRopeFilter& support = filter.SupportRopes();
  const VerticalRopeFilter& seen = filter.EnteredHoldDownRopes();
  const VerticalRopeFilter& ropes = holdDown.Radius2() > 0.0 ? holdDown : seen;
  g.ropesRadius2 = SquareOrNaN(ropes, ropes.Radius2());
  g.holdDownHeight2 = SquareOrNaN(holdDown, holdDown.Height2());
  g.supportRadius2 = SquareOrNaN(support, support.Radius2());
  g.supportHeight2 = SquareOrNaN(support, support.Height2());
  g.seenHeight2 = SquareOrNaN(seen, seen.Height2());
  const RopeDirections& seenInSpace = filter.LeftHoldDownRopes().Ropes();
  g.lowestSine = Lower(seenInSpace.LowestSine());
  g.highestSine = Higher(seenInSpace.HighestSine());
}

void BatchTables::AppendRopeTables(const ShadowingFilter& filter) {
  BatchGeometry& g = geometry_;
  const VerticalRopeFilter& holdDown = filter.HoldDownRopes();
  const VerticalRopeFilter& support = filter.SupportRopes();
  const VerticalRopeFilter& seen = filter.EnteredHoldDownRopes();
  const VerticalRopeFilter& seenInSpace = filter.LeftHoldDownRopes();
  for (const VerticalRopeFilter* const ropes :
       {&holdDown, &support, &seen, &seenInSpace}) {
    g.azimuthCells = std::max(g.azimuthCells, ropes->Ropes().Table().Cells());
  }
  g.holdDownTable = Append(holdDown, true);
  g.supportTable = Append(support, false);
  g.seenTable = Append(seen, false);
  g.seenInSpaceTable = Append(seenInSpace, false);
  g.noRope = Append({eAnswer::kClear, false});
  g.noRopeBelow = Append({eAnswer::kClear, true});
  g.open = Append(RopeAnswer());
}

int BatchTables::Append(RopeAnswer answer) {
  ropes_.push_back(answer);
  return static_cast<int>(ropes_.size()) - 1;
}

/// Append the answers of the ropes' azimuth table. The table of missing ropes
/// has fewer cells; it is filled up with its first one.
int BatchTables::Append(const VerticalRopeFilter& ropes, bool isBelowEnds) {
  const AzimuthTable& table = ropes.Ropes().Table();
  const std::size_t begin = ropes_.size();
  ropes_.resize(begin + static_cast<std::size_t>(geometry_.azimuthCells),
                {table.At(0), isBelowEnds});
  std::transform(table.Answers().begin(), table.Answers().end(),
                 ropes_.begin() + static_cast<std::ptrdiff_t>(begin),
                 [&](eAnswer answer) -> RopeAnswer {
                   return {answer, isBelowEnds};
                 });
  return static_cast<int>(begin);
}

void BatchTables::MakeCrossingVerdicts() {
  const auto verdict = [](RopeAnswer ropes, std::size_t code, bool isFirst) {
    if (!ropes.IsKnown()) return kOpenVerdict;
    return FirstAmong([&](eComponent component) {
      return AnswerAtCrossing(component, ropes,
                              static_cast<ShadowMap::Code>(code), isFirst);
    });
  };
  for (std::size_t i = 0; i < RopeAnswer::kCount; ++i) {
    const RopeAnswer ropes = RopeAnswer::OfCode(i);
    for (std::size_t code = 0; code < kCellAnswers.size(); ++code) {
      firstVerdicts_[i][code] = verdict(ropes, code, true);
      secondVerdicts_[i][code] = verdict(ropes, code, false);
    }
  }
}

void BatchTables::MakeWaterVerdicts(const ShadowingFilter& filter) {
  for (std::size_t i = 0; i < waterVerdicts_.size(); ++i) {
    const auto answer = [i](unsigned bits) {
      const std::size_t number = i >> bits & 3U;
      return number < 3 ? static_cast<eAnswer>(number) : eAnswer::kUnsure;
    };
    const eAnswer holdDown = Either(answer(0), answer(2));
    const eAnswer support = Either(answer(4), answer(6));
    waterVerdicts_[i] = FirstAmong([&](eComponent component) {
      if (component == eComponent::kAVHDRope && filter.HasHoldDownRopes()) {
        return holdDown;
      }
      if (component == eComponent::kSupportRope && filter.HasSupportRopes()) {
        return support;
      }
      return eAnswer::kClear;
    });
  }
}

}  // namespace ZARN::DU
