#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <ostream>
#include <vector>

#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "du/ShadowingCalculator.hpp"
#include "du/fast/ShadowingBatch.hpp"
#include "du/fast/ShadowingFilter.hpp"
#include "log/Log.hpp"
#include "tests/property/ExamplePaths.hpp"
#include "tests/support/Captured.hpp"

// A filter that decides nothing gives no wrong verdict. These tests fail if one
// stops filtering: on computed paths in the reference detector, each layer must
// decide nearly all cases.

namespace ZARN::Testing {
namespace {

using DU::eAnswer;

/// How many cases a layer got, and for how many it was unsure.
struct Share {
  int cases = 0;
  int unsure = 0;

  void Count(bool isUnsure) {
    ++cases;
    if (isUnsure) ++unsure;
  }
  void Count(eAnswer answer) { Count(answer == eAnswer::kUnsure); }
  double Percent() const { return 100.0 * unsure / cases; }
};

/// Also fails if a layer got too few cases.
void ExpectUnsureBelow(double percent, const Share& share) {
  EXPECT_GT(share.cases, 1000);
  EXPECT_LT(share.Percent(), percent);
}

class Layers : public testing::Test {
 protected:
  static constexpr std::size_t kPaths = 20000;

  Layers() : paths_(ExamplePaths(kPaths)) {
    const Captured captured(warn);
    DB::Get().Clear();
    LoadJsonTables(DB::Get(), ZARN_DATA_DIR "/reference-detector");
    calculator_.SetAllGeometryTolerances(1.0);  // the grid does not matter
    calculator_.BeginOfRun();
  }

  DU::ShadowingFilter Filter(const DU::ShadowingLayers& layers = {}) const {
    return {calculator_.GetHardware(), layers};
  }

  /// Call @p work with all segments that start on the vessel.
  template <class Work>
  void ForEachCrossing(const Work& work) const {
    for (const DU::LightPath& path : paths_) {
      const auto views = DU::ViewsOf(path, DU::ShapeOfType(path.LightPathType));
      if (views.kind == DU::ePathKind::kWater) continue;
      work(views.first);
      if (views.kind == DU::ePathKind::kTwoCrossings) work(views.second);
    }
  }

  template <class Work>
  void ForEachInWater(const Work& work) const {
    for (const DU::LightPath& path : paths_) {
      const auto views = DU::ViewsOf(path, DU::ShapeOfType(path.LightPathType));
      if (views.kind == DU::ePathKind::kWater) work(views.first, views.second);
    }
  }

  std::vector<DU::LightPath> paths_;
  DU::ShadowingCalculator calculator_;
};

TEST_F(Layers, TheMapDecidesNearlyAllCrossings) {
  constexpr std::array kTests = {
      DU::eMappedTest::kHoldDownSurface, DU::eMappedTest::kBellyPlate,
      DU::eMappedTest::kNCDAnchor, DU::eMappedTest::kAVPipe,
      DU::eMappedTest::kNeckBoss};
  for (const double tolerance : {150.0, 0.0, 50.0, 400.0}) {
    calculator_.SetAllGeometryTolerances(tolerance);
    const DU::ShadowingFilter filter = Filter();
    for (const DU::eMappedTest test : kTests) {
      SCOPED_TRACE(std::to_string(static_cast<int>(test)) + " with " +
                   std::to_string(tolerance));
      Share share;
      ForEachCrossing([&](const DU::SegmentView& segment) {
        share.Count(
            DU::ShadowMap::AnswerOf(filter.Map().At(segment.point), test));
      });
      ExpectUnsureBelow(6.0, share);
      RecordProperty("test" + std::to_string(static_cast<int>(test)) + "at" +
                         std::to_string(static_cast<int>(tolerance)),
                     std::to_string(share.Percent()));
    }
  }
}

TEST_F(Layers, TheAlgebraDecidesNearlyAllCrossingsOfRopeCylinders) {
  const DU::ShadowingFilter filter = Filter();
  Share holdDown;
  Share support;
  ForEachCrossing([&](const DU::SegmentView& segment) {
    if (segment.point.Z() < filter.HoldDownEndHeight()) {
      holdDown.Count(filter.HoldDownRopes().JudgeFlattened(segment));
    }
    if (segment.point.Z() > filter.SupportFootHeight()) {
      support.Count(filter.SupportRopes().JudgeFlattened(segment));
    }
  });
  ExpectUnsureBelow(0.2, holdDown);
  ExpectUnsureBelow(0.2, support);
  RecordProperty("holdDown", std::to_string(holdDown.Percent()));
  RecordProperty("support", std::to_string(support.Percent()));
}

TEST_F(Layers, TheAlgebraDecidesNearlyAllPathsInWater) {
  const DU::ShadowingFilter filter = Filter();
  Share holdDown;
  Share support;
  ForEachInWater(
      [&](const DU::SegmentView& first, const DU::SegmentView& second) {
        holdDown.Count(filter.JudgeHoldDownInWater(first, second));
        support.Count(filter.JudgeSupportInWater(first, second));
      });
  ExpectUnsureBelow(0.2, holdDown);
  ExpectUnsureBelow(0.2, support);
  RecordProperty("holdDown", std::to_string(holdDown.Percent()));
  RecordProperty("support", std::to_string(support.Percent()));
}

TEST_F(Layers, TheTablesDecideNearlyAllAzimuths) {
  const DU::ShadowingFilter filter = Filter();
  Share holdDown;
  Share support;
  ForEachCrossing([&](const DU::SegmentView& segment) {
    const double x = segment.point.X();
    const double y = segment.point.Y();
    const DU::AzimuthTable& first = filter.HoldDownRopes().Ropes().Table();
    holdDown.Count(first.At(first.CellOf(x, y)));
    const DU::AzimuthTable& second = filter.SupportRopes().Ropes().Table();
    support.Count(second.At(second.CellOf(x, y)));
  });
  ExpectUnsureBelow(4.0, holdDown);
  ExpectUnsureBelow(4.0, support);
  RecordProperty("holdDown", std::to_string(holdDown.Percent()));
  RecordProperty("support", std::to_string(support.Percent()));
}

TEST_F(Layers, EveryKernelDecidesNearlyAllPaths) {
  const DU::ShadowingFilter filter = Filter();
  DU::ShadowingBatch batch(filter);
  for (const DU::eKernel kernel : DU::AvailableKernels()) {
    SCOPED_TRACE(static_cast<int>(kernel));
    batch.UseKernel(kernel);
    std::array<Share, DU::kNumberOfLightPathTypes> shares;
    for (std::size_t i = 0; i < paths_.size(); i += DU::kBatchPaths) {
      std::array<std::uint8_t, DU::kBatchPaths> found;
      const std::size_t count = std::min(DU::kBatchPaths, paths_.size() - i);
      batch.Judge(filter, DU::PathsInRecords(paths_.data() + i), count,
                  found.data());
      for (std::size_t k = 0; k < count; ++k) {
        shares[static_cast<std::size_t>(paths_[i + k].LightPathType)].Count(
            found[k] == DU::kOpenVerdict);
      }
    }
    for (std::size_t type = 1; type < shares.size(); ++type) {
      SCOPED_TRACE(DU::kLightPathTypeNames[type]);
      EXPECT_GT(shares[type].cases, 100);
      EXPECT_LT(shares[type].Percent(), 15.0);
      RecordProperty("kernel" + std::to_string(static_cast<int>(kernel)) +
                         "type" + std::to_string(type),
                     std::to_string(shares[type].Percent()));
    }
  }
}

TEST_F(Layers, DecideNothingIfTheyAreOff) {
  const DU::ShadowingFilter filter = Filter({false, false, false});
  ForEachCrossing([&](const DU::SegmentView& segment) {
    ASSERT_EQ(filter.Map().At(segment.point), DU::ShadowMap::kNothingKnown);
    ASSERT_EQ(filter.HoldDownRopes().JudgeFlattened(segment), eAnswer::kUnsure);
    ASSERT_EQ(filter.SupportRopes().JudgeFlattened(segment), eAnswer::kUnsure);
  });
  ForEachInWater(
      [&](const DU::SegmentView& first, const DU::SegmentView& second) {
        ASSERT_EQ(filter.JudgeHoldDownInWater(first, second), eAnswer::kUnsure);
        ASSERT_EQ(filter.JudgeSupportInWater(first, second), eAnswer::kUnsure);
      });
}

}  // namespace
}  // namespace ZARN::Testing
