#include "du/CheckTables.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "db/DBErrors.hpp"
#include "db/JsonTables.hpp"
#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "tests/property/DamagedTables.hpp"
#include "tests/property/Detectors.hpp"
#include "tests/property/Random.hpp"
#include "tests/property/RootMessages.hpp"
#include "tests/support/Captured.hpp"

// The check names an error exactly if a run has one.

namespace ZARN::Testing {
namespace {

using DU::CheckTables;
using DU::eSeverity;
using DU::TableFinding;

bool HasMedia(const TableSet& tables) {
  const auto entries = tables.CurrentEntries();
  return std::any_of(entries.begin(), entries.end(), [](const auto& entry) {
    return entry->table == "OPTICS";
  });
}

/// Whether a run begins with every component loaded and with something to
/// test, and, if there are media, light paths can be computed.
bool RunIsComplete(const TableSet& tables) {
  DU::ShadowingCalculator calculator;
  calculator.SetAllGeometryTolerances(0.0);  // no grid
  try {
    calculator.BeginOfRun(tables);
    for (const auto component : DU::kShadowingComponents) {
      if (!calculator.IsInfoLoaded(component)) return false;
      if (calculator.GetHardware().HasNothingToTest(component)) return false;
    }
    if (HasMedia(tables)) DU::LightPathCalculator().BeginOfRun(tables);
  } catch (const DBNotFoundError&) {
    return false;
  } catch (const DBValueError&) {
    return false;
  }
  return true;
}

std::string TextOf(const std::vector<TableFinding>& findings) {
  std::ostringstream text;
  for (const TableFinding& finding : findings) {
    text << DU::TextOf(finding) << "\n";
  }
  return text.str();
}

bool HasError(const std::vector<TableFinding>& findings) {
  return std::any_of(findings.begin(), findings.end(), [](const auto& finding) {
    return finding.severity == eSeverity::kError;
  });
}

/// Media, some of them refused.
void AddMedia(Tables& tables, Random& random) {
  using Numbers = std::vector<double>;
  for (const char* const medium : {"inner_av", "acrylic", "water"}) {
    if (random.Chance(0.05)) continue;
    const std::vector<TableField> indices = {1.5,
                                             1.0,
                                             0.9,
                                             Numbers{1.4, 1.3},
                                             Numbers{1.4, 0.5},
                                             Numbers{1.4},
                                             Numbers{},
                                             std::string("water")};
    const std::vector<TableField> wavelengths = {
        Numbers{300, 400}, Numbers{400, 300}, Numbers{0, 400},
        Numbers{400},      Numbers{},         400.0};
    const bool isWrong = random.Chance(0.3);
    tables.Set("OPTICS", medium, "refractive_index",
               indices[isWrong ? random.Below(indices.size()) : 3]);
    if (isWrong && random.Chance(0.2)) continue;
    tables.Set("OPTICS", medium, "wavelength",
               wavelengths[isWrong ? random.Below(wavelengths.size()) : 0]);
  }
}

/// Counts how often each outcome was seen.
struct Outcomes {
  int complete = 0;
  int incomplete = 0;
};

void Compare(const Tables& tables, Outcomes& outcomes) {
  const TableSet set = tables.AsSet();
  bool isComplete = false;
  {
    const Captured captured(warn);
    const RootMessages rootMessages;
    isComplete = RunIsComplete(set);
  }
  ++(isComplete ? outcomes.complete : outcomes.incomplete);
  const Captured captured(warn);
  const RootMessages rootMessages;
  const auto findings = CheckTables(set);
  EXPECT_EQ(!HasError(findings), isComplete) << TextOf(findings);
  EXPECT_EQ(captured.Text() + rootMessages.Text(), "");
}

TEST(TableChecks, NamesAnErrorExactlyIfARunIsIncomplete) {
  Outcomes outcomes;
  for (std::uint64_t seed = 0; seed < 1200 && !testing::Test::HasFailure();
       ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    Tables tables = MakeDetector(random, 2).tables;
    if (random.Chance(0.5)) AddMedia(tables, random);
    Compare(tables, outcomes);
  }
  EXPECT_GT(outcomes.complete, 150);
  EXPECT_GT(outcomes.incomplete, 400);
}

TEST(TableChecks, NamesAnErrorExactlyIfDamageLeavesARunIncomplete) {
  Outcomes outcomes;
  Random random(7);
  // The first complete one.
  Tables whole;
  while (HasError(CheckTables(whole.AsSet()))) {
    whole = MakeDetector(random, 1).tables;
  }
  for (int i = 0; i < 1200 && !testing::Test::HasFailure(); ++i) {
    SCOPED_TRACE("damage " + std::to_string(i));
    Tables tables = whole;
    if (random.Chance(0.2)) {
      DamageAVesselField(tables, random);
    } else {
      DamageAField(tables, random);
    }
    Compare(tables, outcomes);
  }
  EXPECT_GT(outcomes.complete, 60);
  EXPECT_GT(outcomes.incomplete, 600);
}

TEST(TableChecks, FindsNoWarningInTheReferenceDetector) {
  TableSet tables;
  LoadJsonTables(tables, ZARN_DATA_DIR "/reference-detector");
  for (const TableFinding& finding : CheckTables(tables)) {
    EXPECT_EQ(finding.severity, eSeverity::kNote) << DU::TextOf(finding);
  }
}

TEST(TableChecks, FindsNothingInTheMinimalDetector) {
  TableSet tables;
  LoadJsonTables(tables, ZARN_DATA_DIR "/../examples/minimal-detector");
  EXPECT_EQ(TextOf(CheckTables(tables)), "");
}

}  // namespace
}  // namespace ZARN::Testing
