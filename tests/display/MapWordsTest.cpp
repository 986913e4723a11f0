#include "display/MapWords.hpp"

#include <gtest/gtest.h>

#include "tests/display/MapContents.hpp"

namespace ZARN::Display {
namespace {

TEST(MapWords, WriteNumbers) {
  EXPECT_EQ(WordOf(0.0), "0");
  EXPECT_EQ(WordOf(-0.0), "0");
  EXPECT_EQ(WordOf(-4600.0), "\u22124600");
  EXPECT_EQ(WordOf(0.12345), "0.123");
  EXPECT_EQ(WordOf(-1e-9), "0");
  EXPECT_EQ(WordOf(150.5), "150.5");
  EXPECT_EQ(WordOf(1000.0), "1000");
  EXPECT_EQ(WordOf(-1e300), "\u22121e+300");
}

TEST(MapWords, WriteCountsThatFit) {
  EXPECT_EQ(WordOfCount(8000), "8,000");
  EXPECT_EQ(WordOfCount(99999999), "99,999,999");
  EXPECT_EQ(WordOfCount(123456789012), "1.23\u00D710\u00B9\u00B9");
  EXPECT_EQ(WordOfCount(999999999999), "1.00\u00D710\u00B9\u00B2");
}

TEST(MapWords, WriteShares) {
  EXPECT_EQ(WordOfShare(3154, 8000), "39.4 %");
  EXPECT_EQ(WordOfShare(0, 8000), "0.0 %");
  EXPECT_EQ(WordOfShare(1, 8000), "< 0.1 %");
  EXPECT_EQ(WordOfShare(8000, 8000), "100.0 %");
  EXPECT_EQ(WordOfShare(7999, 8000), "> 99.9 %");
  EXPECT_EQ(WordOfShare(9994, 10000), "99.9 %");
  EXPECT_EQ(WordOfShare(0, 0), "\u2013");
}

TEST(MapWords, NameTheEventInTheTitle) {
  MapContent content = MakeMarks(8);
  EXPECT_EQ(TitleOf(content),
            "What hides the PMTs from an event at (4600, 0, 3000) mm");
  content.eventName = "17";
  EXPECT_EQ(TitleOf(content),
            "What hides the PMTs from event 17 at (4600, 0, 3000) mm");
  content.pixels.emplace();
  EXPECT_EQ(TitleOf(content),
            "Which directions are hidden from event 17 at (4600, 0, 3000) mm");
  content.title = "Mine";
  EXPECT_EQ(TitleOf(content), "Mine");
}

TEST(MapWords, SumUpWhatIsShadowed) {
  MapContent content = MakeMarks(80);
  EXPECT_EQ(SummaryOf(content),
            "60 of 70 PMTs with a light path shadowed (85.7 %)");
  EXPECT_EQ(FootnoteOf(content),
            "Percent of the 70 PMTs with a light path; no path: of all 80 "
            "PMTs.");
  content.events.resize(2);
  EXPECT_EQ(SummaryOf(content), "60 of 70 light paths shadowed (85.7 %)");
  EXPECT_EQ(FootnoteOf(content),
            "Percent of the 70 light paths; no path: of all 80 pairs of event "
            "and PMT.");
  EXPECT_EQ(TitleOf(content), "How often PMTs are hidden from 2 events");
}

TEST(MapWords, CountASinglePMT) {
  MapContent content = MakeMarks(1);
  EXPECT_EQ(SummaryOf(content), "0 of 1 PMT shadowed (0.0 %)");
  EXPECT_EQ(FootnoteOf(content), "Percent of the 1 PMT.");
}

TEST(MapWords, SayThatThereIsNothing) {
  EXPECT_EQ(SummaryOf(MakeEmptyContent()), "No PMTs");
  MapContent content = MakeEmptyContent();
  content.counts.Add(DU::eVerdict::kTotalReflection);
  EXPECT_EQ(SummaryOf(content), "No light path to any of the PMTs");
  content = MakeMarks(8);
  content.comparison.emplace();
  EXPECT_EQ(SummaryOf(content), "No verdict changed");
}

TEST(MapWords, SumUpWhatChanged) {
  MapContent content = MakeMarks(80);
  content.comparison = MapContent::Comparison{
      "a",
      "b",
      {{DU::eVerdict::kClear, DU::eVerdict::kAVPipe, 3},
       {DU::eVerdict::kAVPipe, DU::eVerdict::kClear, 1}}};
  EXPECT_EQ(SummaryOf(content), "4 of 80 PMTs changed (5.0 %)");
  EXPECT_EQ(TablesOf(content), "a \u2192 b");
  EXPECT_EQ(FootnoteOf(content),
            "Percent of the 80 PMTs. No path: total reflection.");
  content.pixels.emplace();
  EXPECT_EQ(SummaryOf(content), "5.0 % of the directions changed");
  EXPECT_EQ(FootnoteOf(content),
            "Percent of all directions. No path: total reflection.");
}

TEST(MapWords, GiveEveryReasonForNoPath) {
  MapContent content = MakeEmptyContent();
  EXPECT_EQ(ReasonsOf(content), "total reflection");
  content.counts.Add(DU::eVerdict::kEventAtPMT);
  EXPECT_EQ(ReasonsOf(content), "event at the PMT");
  content.counts.Add(DU::eVerdict::kTotalReflection);
  EXPECT_EQ(ReasonsOf(content), "total reflection, event at the PMT");
}

TEST(MapWords, CountPMTsThatAreNotDrawn) {
  MapContent content = MakeMarks(8);
  content.marks[3].direction = TVector3();
  EXPECT_EQ(FootnoteOf(content),
            "Percent of the 7 PMTs with a light path; no path: of all 8 PMTs. "
            "Not drawn, because without a direction: 1 PMT.");
}

TEST(MapWords, ExplainMarksOnlyIfThereAreSome) {
  MapContent content = MakeMarks(1);
  EXPECT_EQ(CaptionOf(content).find("Each mark is one PMT"), 0U);
  content.marks[0].direction = TVector3();
  EXPECT_EQ(CaptionOf(content).find("No PMT has a direction. Seen from"), 0U);
  content.marks.clear();
  EXPECT_EQ(CaptionOf(content).find("There are no PMTs. Seen from"), 0U);
}

TEST(MapWords, DescribeTheMap) {
  MapContent content = MakeMarks(80);
  content.components[1] = eComponentState::kNotLoaded;
  const std::string text = DescriptionOf(content);
  EXPECT_NE(text.find("Hold-down ropes: 14.3 %."), std::string::npos);
  EXPECT_NE(text.find("Support ropes: not loaded."), std::string::npos);
  EXPECT_NE(text.find("No path: 12.5 %."), std::string::npos);
  EXPECT_NE(text.find("azimuth grows to the left"), std::string::npos);
}

}  // namespace
}  // namespace ZARN::Display
