#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "du/ShadowingCalculator.hpp"
#include "du/fast/HardwareFormulas.hpp"
#include "du/fast/ShadowingBatch.hpp"
#include "du/fast/ShadowingFilter.hpp"
#include "du/geometry/CylinderCrossing.hpp"
#include "du/geometry/CylinderSide.hpp"
#include "io/PositionReader.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "log/Log.hpp"

namespace ZARN::DU {
namespace {

/// What a verdict is read from or computed with, from the fastest to the
/// slowest.
enum class eStep {
  kMap,      ///< cells of the shadow map
  kTable,    ///< cells of the azimuth tables, or no rope within reach
  kAlgebra,  ///< the few ropes, points and plates that a cell leaves open
  kFormula
};
constexpr std::size_t kSteps = 4;

/// Goes the filter's way to the verdict on one path and notes the slowest step.
class Walk {
 public:
  Walk(const Hardware& hardware, const ShadowingFilter& filter,
       const WaterSegmentViews& path)
      : filter_(filter), path_(path), formulas_{hardware, path} {}

  eShadowingComponent Find() {
    if (path_.kind == ePathKind::kWater) return FindInWater();
    return FirstComponentThat([this](eShadowingComponent component) {
      return IsBlocked(component, path_.first) ||
             (path_.kind == ePathKind::kTwoCrossings &&
              component != eShadowingComponent::kAVPipe &&
              IsBlocked(component, path_.second));
    });
  }

  eStep Slowest() const { return slowest_; }

 private:
  void Need(eStep step) { slowest_ = std::max(slowest_, step); }

  bool IsBlocked(eShadowingComponent component, const SegmentView& segment) {
    const TVector3& point = segment.point;
    switch (component) {
      case eShadowingComponent::kAVHDRope:
        if (!filter_.HasHoldDownRopes()) return false;
        if (filter_.HoldDownEndHeight() > point.Z()) {
          return IsAtRope(component, filter_.HoldDownRopes(), segment);
        }
        return IsInMap(
            eMappedTest::kHoldDownSurface, point, eStep::kAlgebra,
            [&] { return filter_.SurfacePoints().HasPointNear(point); });
      case eShadowingComponent::kSupportRope:
        return filter_.HasSupportRopes() &&
               point.Z() > filter_.SupportFootHeight() &&
               IsAtRope(component, filter_.SupportRopes(), segment);
      case eShadowingComponent::kBellyPlate:
        return IsInMap(eMappedTest::kBellyPlate, point, eStep::kAlgebra,
                       [&] { return filter_.BellyPlates().HasPlateAt(point); });
      case eShadowingComponent::kNCDAnchor:
        return IsInMap(eMappedTest::kNCDAnchor, point, eStep::kAlgebra,
                       [&] { return filter_.Anchors().HasPointNear(point); });
      case eShadowingComponent::kAVPipe:
        return IsInMap(eMappedTest::kAVPipe, point, eStep::kFormula,
                       [&] { return formulas_(component); });
      case eShadowingComponent::kNeckBoss:
        return IsInMap(eMappedTest::kNeckBoss, point, eStep::kFormula,
                       [&] { return formulas_(component); });
      case eShadowingComponent::kNone:
        break;
    }
    return false;
  }

  template <class Decide>
  bool IsInMap(eMappedTest test, const TVector3& point, eStep otherwise,
               const Decide& decide) {
    return IsBlocking(ShadowMap::AnswerOf(filter_.Map().At(point), test), [&] {
      Need(otherwise);
      return decide();
    });
  }

  bool IsAtRope(eShadowingComponent component, const VerticalRopeFilter& ropes,
                const SegmentView& segment) {
    return IsBlocking(Ask(ropes, segment), [&] {
      Need(eStep::kFormula);
      return formulas_(component, segment);
    });
  }

  /// What a filter says of a segment.
  eAnswer Ask(const VerticalRopeFilter& ropes, const SegmentView& segment) {
    const auto crossing =
        CrossCylinder(segment.point.X(), segment.point.Y(),
                      segment.sense * segment.direction.X(),
                      segment.sense * segment.direction.Y(),
                      segment.sense * segment.direction.Z(), ropes.Radius2());
    const AzimuthTable& table = ropes.Ropes().Table();
    const bool isInTable =
        IsAboveHeight(crossing, ropes.Height2()) ||
        table.At(table.CellOf(crossing.x, crossing.y)) != eAnswer::kUnsure;
    Need(isInTable ? eStep::kTable : eStep::kAlgebra);
    return ropes.JudgeFlattened(segment);
  }

  eShadowingComponent FindInWater() {
    const SegmentView& first = path_.first;
    const SegmentView& second = path_.second;
    const auto isBlocked = [&](eShadowingComponent component, eAnswer answer) {
      return IsBlocking(answer, [&] {
        Need(eStep::kFormula);
        return formulas_(component);
      });
    };
    Need(eStep::kTable);
    AskInWater(filter_.HoldDownRopes());
    if (filter_.HasHoldDownRopes() &&
        isBlocked(eShadowingComponent::kAVHDRope,
                  filter_.JudgeHoldDownInWater(first, second))) {
      return eShadowingComponent::kAVHDRope;
    }
    AskInWater(IsFarOut() ? filter_.EnteredHoldDownRopes()
                          : filter_.SupportRopes());
    if (filter_.HasSupportRopes() &&
        isBlocked(eShadowingComponent::kSupportRope,
                  filter_.JudgeSupportInWater(first, second))) {
      return eShadowingComponent::kSupportRope;
    }
    return eShadowingComponent::kNone;
  }

  /// Note how the crossings of a path in water are found out, where it has any.
  void AskInWater(const VerticalRopeFilter& ropes) {
    const bool startsInside =
        IsInside(path_.first.point.Perp2(), ropes.Radius2());
    const bool endsInside =
        IsInside(path_.second.point.Perp2(), ropes.Radius2());
    if (startsInside && endsInside) return;
    if (!startsInside && !endsInside && IsBeside(ropes)) return;
    if (!endsInside || startsInside) Ask(ropes, path_.first);
    if (!startsInside) Ask(ropes, path_.second);
  }
  bool IsBeside(const VerticalRopeFilter& ropes) const {
    const TVector3& start = path_.first.point;
    const TVector3& end = path_.second.point;
    return IsPassingBeside(PassageOf(start.Perp2(), end.Perp2(),
                                     start.X() * end.X() + start.Y() * end.Y(),
                                     ropes.Radius2()));
  }
  /// Outside the support ropes on both ends.
  bool IsFarOut() const {
    const double radius2 = filter_.SupportRopes().Radius2();
    return !IsInside(path_.first.point.Perp2(), radius2) &&
           !IsInside(path_.second.point.Perp2(), radius2);
  }

  const ShadowingFilter& filter_;
  const WaterSegmentViews& path_;
  HardwareFormulas formulas_;
  eStep slowest_ = eStep::kMap;
};

/// How many paths each way of judging them decides where.
struct Shares {
  std::size_t paths = 0;
  std::array<std::size_t, kSteps> single = {};
  std::size_t batchAtOnce = 0;  ///< by the kernel and its tables
  std::size_t batchInCell = 0;  ///< and by the points and plates of the cell
  std::size_t batchLeft = 0;    ///< by the single call, without a formula
};

/// Count some paths; false where the walk and the filter disagree.
bool Count(const Hardware& hardware, const ShadowingFilter& filter,
           const ShadowingBatch& batch, const std::vector<LightPath>& paths,
           Shares& shares) {
  std::array<BatchVerdict, kBatchPaths> verdicts;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const std::size_t inBlock = i % kBatchPaths;
    if (inBlock == 0) {
      batch.Judge(filter, PathsInRecords(paths.data() + i),
                  std::min(kBatchPaths, paths.size() - i), verdicts.data());
    }
    const LightPath& path = paths[i];
    const auto views = ViewsOf(path, ShapeOfType(path.LightPathType));
    Walk walk(hardware, filter, views);
    bool asksFormula = false;
    const HardwareFormulas formulas = {hardware, views};
    const auto verdict = filter.Find(views, [&](const auto&... question) {
      asksFormula = true;
      return formulas(question...);
    });
    if (walk.Find() != verdict) return false;
    if (asksFormula && walk.Slowest() != eStep::kFormula) return false;
    ++shares.paths;
    ++shares.single[static_cast<std::size_t>(walk.Slowest())];
    if (walk.Slowest() == eStep::kFormula) continue;  // in a batch as well
    if (verdicts[inBlock] == kOpenVerdict) {
      ++shares.batchLeft;
    } else if (walk.Slowest() > eStep::kTable) {
      ++shares.batchInCell;
    } else {
      ++shares.batchAtOnce;
    }
  }
  return true;
}

/// The paths of an event to all PMTs.
std::vector<LightPath> PathsFrom(const TVector3& event,
                                 const std::vector<TVector3>& pmts,
                                 LightPathCalculator& calculator) {
  std::vector<LightPath> paths;
  for (const TVector3& pmt : pmts) {
    calculator.CalcByPosition(event, pmt);
    if (calculator.HasPath()) paths.push_back(calculator.GetLightPath());
  }
  return paths;
}

int Run(const std::string& data) {
  warn.Switch(otext::eState::kSilent);
  LoadJsonTables(DB::Get(), data + "/reference-detector");
  ShadowingCalculator calculator;
  calculator.BeginOfRun();
  LightPathCalculator lightPath;
  lightPath.BeginOfRun();
  const ShadowingFilter filter(calculator.GetHardware(), {});
  const ShadowingBatch batch(filter);
  const auto pmts =
      IO::PositionsOf(IO::ReadPositions(data + "/pmts.csv", "pmt"));
  Shares shares;
  for (const auto& event :
       IO::ReadPositions(data + "/source-scan.csv", "event")) {
    if (!Count(calculator.GetHardware(), filter, batch,
               PathsFrom(event.position, pmts, lightPath), shares)) {
      std::cerr << "verdict_shares: the walk and the filter differ\n";
      return 1;
    }
  }
  std::cout << "paths " << shares.paths << "\nsingle";
  for (const std::size_t count : shares.single) std::cout << ' ' << count;
  std::cout << "\nbatch " << shares.batchAtOnce << ' ' << shares.batchInCell
            << ' ' << shares.batchLeft << ' ' << shares.single.back() << "\n";
  return 0;
}

}  // namespace
}  // namespace ZARN::DU

/// Count what decides the verdicts of the source scan, by single calls and in
/// batches, for docs/draw-flow.py. The argument is the folder data/.
int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: verdict_shares DATA\n";
    return 2;
  }
  try {
    return ZARN::DU::Run(argv[1]);
  } catch (const std::exception& error) {  // files that are missing or bad
    std::cerr << "verdict_shares: " << error.what() << "\n";
    return 2;
  }
}
