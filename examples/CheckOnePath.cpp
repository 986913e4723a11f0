#include <exception>
#include <iostream>

#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathCalculator.hpp"

/// Tests whether an AV pipe blocks one light path. The argument is the geometry
/// tables, for example data/reference-detector.
int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: CheckOnePath TABLES\n";
    return 2;
  }
  try {
    ZARN::LoadJsonTables(ZARN::DB::Get(), argv[1]);
    ZARN::DU::ShadowingCalculator calculator;
    calculator.BeginOfRun();

    ZARN::DU::LightPathCalculator path;
    path.SetLightPathType(ZARN::DU::kAVToWater);
    path.SetAVPoint1({0, 5860, 0});     // mm: where the light leaves the vessel
    path.SetFinalDirection({0, 1, 0});  // its direction from there
    calculator.CheckForShadowing(path);
    std::cout << "shadowed by a pipe: " << calculator.IsShadowedByAVPipe()
              << "\n";
  } catch (const std::exception& error) {  // tables that are missing or bad
    std::cerr << "CheckOnePath: " << error.what() << "\n";
    return 2;
  }
  return 0;
}
