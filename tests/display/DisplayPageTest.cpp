#include "display/DisplayPage.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "display/HtmlText.hpp"
#include "display/PathTrace.hpp"
#include "du/hardware/HardwareItem.hpp"
#include "tests/display/PageBlocks.hpp"
#include "tests/scan/ScanTest.hpp"

namespace ZARN::Display {
namespace {

using DU::eLight;
using DU::eVerdict;
using Json = nlohmann::json;
using ::testing::HasSubstr;
using ::testing::Not;
using Testing::NumbersIn;
using Testing::TextIn;

/// A page of events in all media, in a detector with all components.
class DisplayPageTest : public Testing::ScanTest {
 protected:
  DisplayPageTest() {
    if (!CanMakePages()) return;
    AddPMTs(300, 0.009);
    content_.version = "1.2.3";
    content_.detector = "detector";
    content_.fingerprint = "f00";
    content_.run = 7;
    content_.pmts = pmts_;
    content_.events = {{0, 0, 0},       {4600, 0, 3000}, {0, -5500, 500},
                       {0, 5830, 100},  {0, 0, 8300},    {3000, 6000, -2500},
                       {-100, 0, -7000}};
    for (std::size_t i = 0; i < pmts_.size(); ++i) {
      content_.pmtNames.push_back("p" + std::to_string(i));
    }
    for (std::size_t i = 0; i < content_.events.size(); ++i) {
      content_.eventNames.push_back("e" + std::to_string(i));
    }
  }

  void SetUp() override {
    if (!CanMakePages()) GTEST_SKIP() << "this build has no page";
  }

  DisplayPage Make(std::size_t threads = 1) const {
    PageSettings settings;
    settings.threads = threads;
    return MakePage(content_, shadowing_, lightPath_, settings);
  }

  PageContent content_;
};

/// The verdict, and the path unless there is none.
eVerdict JudgeOne(const DU::ShadowingCalculator& shadowing,
                  DU::LightPathCalculator& light, const TVector3& event,
                  const TVector3& pmt, eLight kind) {
  if (kind == eLight::kDirect) {
    light.CalcByPosition(event, pmt);
  } else {
    light.CalcReflectionByPosition(event, pmt);
  }
  return shadowing.FindVerdict(light, event, pmt, kind);
}

TEST_F(DisplayPageTest, HoldsWhatTheCalculatorsSayOfEachPair) {
  content_.withReflections = true;
  const DisplayPage page = Make();
  ASSERT_TRUE(page.hasPaths);
  const Json text = Json::parse(TextIn(page.html, "page"));
  const std::vector<std::string> items = text["itemNames"];
  int blocked = 0;
  for (const eLight kind : {eLight::kDirect, eLight::kReflected}) {
    const std::string prefix = kind == eLight::kDirect ? "" : "reflected-";
    const auto verdicts =
        NumbersIn<std::uint8_t>(page.html, prefix + "verdicts");
    const auto angles = NumbersIn<float>(page.html, prefix + "angles");
    const auto item = NumbersIn<std::uint16_t>(page.html, prefix + "items");
    const auto limits = NumbersIn<float>(page.html, prefix + "limits");
    const auto limitBy =
        NumbersIn<std::uint8_t>(page.html, prefix + "limit-by");
    const std::size_t pairs = content_.events.size() * pmts_.size();
    ASSERT_EQ(verdicts.size(), pairs);
    ASSERT_EQ(angles.size(), pairs);
    ASSERT_EQ(item.size(), pairs);
    ASSERT_EQ(limits.size(), pairs);
    ASSERT_EQ(limitBy.size(), pairs);
    for (std::size_t pair = 0; pair < pairs; ++pair) {
      const TVector3& event = content_.events[pair / pmts_.size()];
      const TVector3& pmt = pmts_[pair % pmts_.size()];
      const eVerdict verdict =
          JudgeOne(shadowing_, lightPath_, event, pmt, kind);
      ASSERT_EQ(verdicts[pair], static_cast<std::uint8_t>(verdict));
      if (!DU::HasPath(verdict)) {
        EXPECT_TRUE(std::isnan(angles[pair]));
        EXPECT_TRUE(std::isnan(limits[pair]));
        EXPECT_EQ(item[pair], 0);
        EXPECT_EQ(limitBy[pair], 0);
        continue;
      }
      const DU::LightPath& path = lightPath_.GetLightPath();
      EXPECT_EQ(angles[pair], static_cast<float>(LaunchAngle(path)));
      const auto critical = shadowing_.FindCriticalTolerances(path);
      if (verdict == eVerdict::kClear) {
        EXPECT_EQ(item[pair], 0);
        EXPECT_EQ(limitBy[pair], static_cast<std::uint8_t>(critical.By()));
        EXPECT_EQ(limits[pair], static_cast<float>(critical.Smallest()));
        continue;
      }
      ++blocked;
      const auto by = DU::ComponentOf(verdict);
      EXPECT_EQ(limitBy[pair], verdicts[pair]);
      EXPECT_EQ(limits[pair], static_cast<float>(critical.Of(by)));
      std::string name;
      for (const auto& finding : shadowing_.Explain(path, by).findings) {
        if (!finding.test.IsBlocking()) continue;
        if (finding.item.has_value()) name = DU::NameOf(*finding.item);
        break;
      }
      EXPECT_EQ(items[item[pair]], name);
    }
  }
  EXPECT_GT(blocked, 100);
}

TEST_F(DisplayPageTest, StoresThePathsThatAnAngleDoesNotGive) {
  content_.withReflections = true;
  // Light that grazes the vessel.
  for (int i = 0; i < 300; ++i) {
    content_.events.emplace_back(6500, 0, 25 * i);
    content_.eventNames.emplace_back("more");
  }
  const DisplayPage page = Make();
  const Json text = Json::parse(TextIn(page.html, "page"));
  EXPECT_EQ(text["storedPaths"].size(), page.storedPaths);
  EXPECT_GT(page.storedPaths, 10U);
  EXPECT_LT(page.storedPaths, page.direct.All() / 50);
  for (const Json& stored : text["storedPaths"]) {
    const TVector3& event = content_.events[stored["event"]];
    const TVector3& pmt = pmts_[stored["pmt"]];
    JudgeOne(shadowing_, lightPath_, event, pmt,
             stored["reflected"] ? eLight::kReflected : eLight::kDirect);
    const PathPoints exact = PointsOf(lightPath_.GetLightPath());
    ASSERT_EQ(stored["points"].size(), 3 * exact.count);
    ASSERT_EQ(stored["media"].size(), exact.count - 1);
    for (std::size_t i = 0; i < 3 * exact.count; ++i) {
      EXPECT_NEAR(stored["points"][i].get<double>(),
                  exact.points[i / 3][static_cast<int>(i % 3)], 1e-4);
    }
  }
}

TEST_F(DisplayPageTest, IsTheSameWithAnyNumberOfThreads) {
  content_.withReflections = true;
  const std::string wanted = Make().html;
  for (const std::size_t threads : {2U, 7U}) {
    EXPECT_EQ(Make(threads).html, wanted);
  }
}

TEST_F(DisplayPageTest, TellsWhatItIsAbout) {
  shadowing_.SetAllGeometryTolerances(40);
  const DisplayPage page = Make();
  const Json text = Json::parse(TextIn(page.html, "page"));
  EXPECT_EQ(text["format"], 1);
  EXPECT_EQ(text["version"], "1.2.3");
  EXPECT_EQ(text["title"], "");
  EXPECT_EQ(text["detector"], "detector");
  EXPECT_EQ(text["fingerprint"], "f00");
  EXPECT_EQ(text["run"], 7);
  EXPECT_EQ(text["tolerance"], 40);
  EXPECT_EQ(text["wavelength"], 400);
  EXPECT_EQ(text["vessel"]["innerRadius"], 5800);
  EXPECT_EQ(text["vessel"]["outerRadius"], 5860);
  EXPECT_EQ(text["refractiveIndices"], Json({1.5, 1.5, 1.33}));
  EXPECT_EQ(text["groupIndices"], Json({1.5, 1.5, 1.33}));
  EXPECT_EQ(text["hardware"].size(), DU::kNumberOfComponents);
  EXPECT_EQ(text["pmtNames"], Json(content_.pmtNames));
  EXPECT_EQ(text["eventNames"], Json(content_.eventNames));
  EXPECT_EQ(text["content"], "paths");
  EXPECT_EQ(text["hasReflections"], false);
  EXPECT_THAT(page.html, HasSubstr("<title>Shadow display</title>"));
  const auto positions = NumbersIn<double>(page.html, "pmt-positions");
  ASSERT_EQ(positions.size(), 3 * pmts_.size());
  EXPECT_EQ(positions[5], pmts_[1].Z());
  EXPECT_EQ(NumbersIn<double>(page.html, "event-positions")[3], 4600);
  EXPECT_THAT(page.html, Not(HasSubstr("zarn-reflected")));
}

TEST_F(DisplayPageTest, HoldsOnlyVerdictsWherePathsHaveNoRoom) {
  EXPECT_TRUE(HasRoomForPaths(content_, lightPath_));
  content_.events.assign(9000, {0, 0, 3000});
  content_.eventNames.assign(9000, "e");
  ASSERT_FALSE(HasRoomForPaths(content_, lightPath_));
  const DisplayPage page = Make();
  EXPECT_FALSE(page.hasPaths);
  EXPECT_EQ(Json::parse(TextIn(page.html, "page"))["content"], "verdicts");
  EXPECT_EQ(NumbersIn<std::uint8_t>(page.html, "verdicts").size(),
            9000 * pmts_.size());
  EXPECT_THAT(page.html, Not(HasSubstr("zarn-angles")));
  EXPECT_THAT(page.html, HasSubstr("and 8500 more"));
}

TEST_F(DisplayPageTest, ReadsNoNameAsHtml) {
  const std::string name = "</script></noscript><!-- zarn-data --><b>&'\"\xFF";
  content_.title = name;
  content_.pmtNames[0] = name;
  content_.eventNames[0] = name;
  const DisplayPage page = Make();
  EXPECT_THAT(page.html, Not(HasSubstr("<b>")));
  const Json text = Json::parse(TextIn(page.html, "page"));
  const std::string valid = ValidUtf8(name);
  EXPECT_EQ(valid.substr(valid.size() - 3), "\xEF\xBF\xBD");
  EXPECT_EQ(text["title"], valid);
  EXPECT_EQ(text["pmtNames"][0], valid);
  EXPECT_EQ(text["eventNames"][0], valid);
  EXPECT_EQ(text["pmtNames"].size(), pmts_.size());
  EXPECT_THAT(page.html, HasSubstr("<title>" + HtmlText(name) + "</title>"));
}

TEST_F(DisplayPageTest, EndsWhenACallbackThrows) {
  PageSettings settings;
  settings.threads = 2;
  settings.checkForStop = [] { throw std::runtime_error("stop"); };
  EXPECT_THROW(MakePage(content_, shadowing_, lightPath_, settings),
               std::runtime_error);
}

TEST_F(DisplayPageTest, ReportsItsProgress) {
  PageSettings settings;
  std::uint64_t last = 0;
  settings.onProgress = [&](std::uint64_t pairs) {
    EXPECT_GT(pairs, last);
    last = pairs;
  };
  MakePage(content_, shadowing_, lightPath_, settings);
  EXPECT_EQ(last, content_.events.size() * pmts_.size());
}

TEST(HtmlText, IsTextAndNothingElse) {
  EXPECT_EQ(HtmlText("a<b>&\"'"), "a&lt;b&gt;&amp;&quot;&#39;");
  EXPECT_EQ(HtmlText("\xC3\xA9"), "\xC3\xA9");
  EXPECT_EQ(HtmlText(std::string_view("\0\x1B\xFF\x7F", 4)),
            "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}

}  // namespace
}  // namespace ZARN::Display
