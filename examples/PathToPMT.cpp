#include <exception>
#include <iomanip>
#include <iostream>

#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathCalculator.hpp"

/// Computes the light path from an event to a PMT and tests whether it is
/// blocked. The argument is the geometry tables, for example
/// data/reference-detector.
int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: PathToPMT TABLES\n";
    return 2;
  }
  try {
    ZARN::LoadJsonTables(ZARN::DB::Get(), argv[1]);
    ZARN::DU::ShadowingCalculator calculator;
    calculator.BeginOfRun();
    ZARN::DU::LightPathCalculator path;
    path.BeginOfRun();

    path.CalcByPosition({0, 0, 3000}, {8300, 0, 0});  // event and PMT, mm
    if (path.HasPath()) {
      const bool isShadowed = calculator.CheckForShadowing(path);
      std::cout << path.LightPathTypeNames().at(path.GetLightPathType()) << ", "
                << std::fixed << std::setprecision(3) << path.GetTimeOfFlight()
                << " ns, shadowed: " << isShadowed << "\n";
    }
  } catch (const std::exception& error) {  // tables that are missing or bad
    std::cerr << "PathToPMT: " << error.what() << "\n";
    return 2;
  }
  return 0;
}
