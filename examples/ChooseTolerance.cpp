#include <algorithm>
#include <cstddef>
#include <exception>
#include <iomanip>
#include <iostream>
#include <stdexcept>
#include <vector>

#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "du/ShadowingCalculator.hpp"
#include "io/PositionReader.hpp"
#include "lightpath/LightPathCalculator.hpp"

/// Finds the largest tolerance that leaves 90 % of the light paths from events
/// to PMTs clear, from one pass over them. The arguments are the geometry
/// tables, for example data/reference-detector, and CSV files of events and
/// PMTs.
int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: ChooseTolerance TABLES EVENTS.csv PMTS.csv\n";
    return 2;
  }
  try {
    ZARN::LoadJsonTables(ZARN::DB::Get(), argv[1]);
    ZARN::DU::ShadowingCalculator shadowing;
    shadowing.BeginOfRun();
    ZARN::DU::LightPathCalculator lightPath;
    lightPath.BeginOfRun();
    const auto events =
        ZARN::IO::PositionsOf(ZARN::IO::ReadPositions(argv[2], "event"));
    const auto pmts =
        ZARN::IO::PositionsOf(ZARN::IO::ReadPositions(argv[3], "pmt"));

    // A path is shadowed from its critical tolerance on.
    std::vector<double> critical;
    for (const TVector3& event : events) {
      for (const TVector3& pmt : pmts) {
        lightPath.CalcByPosition(event, pmt);
        if (!lightPath.HasPath()) continue;
        critical.push_back(
            shadowing.FindCriticalTolerances(lightPath.GetLightPath())
                .Smallest());
      }
    }
    if (critical.empty()) throw std::runtime_error("there is no light path");
    // Below the critical tolerance of the first path too many.
    const auto tooMany =
        critical.begin() + static_cast<std::ptrdiff_t>(critical.size() / 10);
    std::nth_element(critical.begin(), tooMany, critical.end());
    std::cout << "90 % of " << critical.size()
              << " paths are clear below a tolerance of " << std::fixed
              << std::setprecision(3) << *tooMany << " mm\n";
  } catch (const std::exception& error) {  // files that are missing or bad
    std::cerr << "ChooseTolerance: " << error.what() << "\n";
    return 2;
  }
  return 0;
}
