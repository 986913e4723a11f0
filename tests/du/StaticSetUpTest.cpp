#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <vector>

#include "db/JsonTables.hpp"
#include "db/TableSet.hpp"
#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "tests/support/Captured.hpp"

namespace ZARN::DU {
namespace {

/// Set up calculators, and find the verdicts on light paths from everywhere to
/// PMTs all around.
std::vector<eShadowingComponent> VerdictsOfAFreshSetUp() {
  const Testing::Captured captured(warn);
  TableSet tables;
  LoadJsonTables(tables, ZARN_DATA_DIR "/reference-detector");
  ShadowingCalculator calculator;
  calculator.BeginOfRun(tables);
  LightPathCalculator path;
  path.BeginOfRun(tables);

  std::mt19937_64 random(20250317);
  std::normal_distribution<double> normal;
  const auto direction = [&] {
    const double x = normal(random);
    const double y = normal(random);
    const double z = normal(random);
    return TVector3(x, y, z).Unit();
  };
  std::uniform_real_distribution<double> eventRadius(0.0, 8000.0);
  std::vector<eShadowingComponent> verdicts;
  for (int i = 0; i < 20000; ++i) {
    const TVector3 event = eventRadius(random) * direction();
    path.CalcByPosition(event, 8300.0 * direction());
    verdicts.push_back(calculator.FindShadowing(path.GetLightPath()));
  }
  return verdicts;
}

/// The translation unit of this test is the first of its program: statics of
/// the library are initialised later, so nothing here may need them.
const std::vector<eShadowingComponent> kVerdictsBeforeMain =
    VerdictsOfAFreshSetUp();

TEST(StaticSetUp, GivesTheSameVerdictsAsALaterOne) {
  const auto later = VerdictsOfAFreshSetUp();
  std::size_t differences = 0;
  for (std::size_t i = 0; i < later.size(); ++i) {
    if (kVerdictsBeforeMain[i] != later[i]) ++differences;
  }
  EXPECT_EQ(differences, 0U) << "of " << later.size();
}

}  // namespace
}  // namespace ZARN::DU
