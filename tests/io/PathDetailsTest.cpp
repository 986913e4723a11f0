#include "io/PathDetails.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "tests/du/Detector.hpp"
#include "tests/du/Paths.hpp"

namespace ZARN::IO {
namespace {

using DU::eShadowingComponent;

class PathDetailsTest : public ::testing::Test {
 protected:
  PathDetails Find(const DU::LightPath& path,
                   const std::vector<const PairColumn*>& columns) const {
    PathDetails details;
    DetailFinder(detector_, columns)
        .Find(path, detector_.FindShadowing(path), details);
    return details;
  }

  const DU::ShadowingCalculator detector_ = Testing::InRun(Testing::Only(
      {eShadowingComponent::kNCDAnchor, eShadowingComponent::kAVPipe}));
  const DU::LightPath nearAnchor_ = Testing::OneCrossing({1, 5860, 100.1});
};

TEST_F(PathDetailsTest, AreThoseOfTheCalculator) {
  const PathDetails found =
      Find(nearAnchor_,
           {FindPairColumn("item"), FindPairColumn("critical_tolerance")});
  EXPECT_EQ(found.critical.of,
            detector_.FindCriticalTolerances(nearAnchor_).of);
  EXPECT_EQ(found.item, "anchor 0");
}

TEST_F(PathDetailsTest, NameNoItemOfPipesAndOfAClearPath) {
  const auto item = [&](const DU::LightPath& path) {
    return Find(path, {FindPairColumn("item")}).item;
  };
  EXPECT_EQ(item(Testing::OneCrossing({0, 5860, 2000})), "") << "pipes";
  EXPECT_EQ(item(Testing::FreePath()), "");
}

TEST_F(PathDetailsTest, AreFoundOnlyIfAColumnNeedsThem) {
  EXPECT_FALSE(DetailFinder(detector_, {FindPairColumn("time")}).IsNeeded());
  EXPECT_TRUE(DetailFinder(detector_, {FindPairColumn("item")}).IsNeeded());
  const PathDetails onlyItem = Find(nearAnchor_, {FindPairColumn("item")});
  EXPECT_EQ(onlyItem.critical.of, DU::CriticalTolerances().of);
  EXPECT_EQ(Find(nearAnchor_, {FindPairColumn("critical_by")}).item, "");
}

}  // namespace
}  // namespace ZARN::IO
