#include <TROOT.h>

#include <ROOT/RDataFrame.hxx>
#include <exception>
#include <iostream>

#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "du/ShadowingCalculator.hpp"
#include "rdf/DataFrame.hpp"

/// Judges the light paths of a ROOT file in data frames. The arguments are the
/// geometry tables, for example data/reference-detector, and a file that
/// `zarn-shadow scan --paths paths.root` wrote.
int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: JudgeDataFrame TABLES PATHS.root\n";
    return 2;
  }
  try {
    ZARN::LoadJsonTables(ZARN::DB::Get(), argv[1]);
    ZARN::DU::ShadowingCalculator shadowing;
    shadowing.BeginOfRun();

    ROOT::EnableImplicitMT(2);
    // Reads the file in bulk, and judges in batches.
    auto frame = ZARN::RDF::FromPaths(argv[2], &shadowing);
    auto paths = frame.Count();
    auto shadowed = frame.Filter("code > 0").Count();
    std::cout << *shadowed << " of " << *paths << " paths are shadowed\n";

    // Adds the verdicts to any other frame with light paths.
    ROOT::RDataFrame other("paths", argv[2]);
    auto judged = ZARN::RDF::DefineShadowing(other, shadowing);
    std::cout << *judged.Filter("code == 5").Count() << " by a pipe\n";
  } catch (const std::exception& error) {  // files that are missing or bad
    std::cerr << "JudgeDataFrame: " << error.what() << "\n";
    return 2;
  }
  return 0;
}
