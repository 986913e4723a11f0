#include <exception>
#include <iostream>

#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "du/ShadowingCalculator.hpp"
#include "io/PositionReader.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/PMTArray.hpp"
#include "scan/RowScan.hpp"
#include "scan/VerdictCounts.hpp"

/// Counts the shadowed light paths from events to PMTs, on two threads. The
/// arguments are the geometry tables, for example data/reference-detector, and
/// CSV files of events and PMTs.
int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: CountShadowed TABLES EVENTS.csv PMTS.csv\n";
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

    ZARN::Scan::RowScan::Settings settings;
    settings.threads = 2;
    ZARN::Scan::RowScan scan(shadowing, lightPath, ZARN::DU::PMTArray(pmts),
                             settings);
    ZARN::Scan::VerdictCounts counts;
    scan.Run(events, [&](const ZARN::Scan::RowBlock& block) {
      for (const auto& ofEvent : block.counts) counts += ofEvent;
    });
    std::cout << counts.Shadowed() << " of " << counts.Paths()
              << " paths are shadowed\n";
  } catch (const std::exception& error) {  // files that are missing or bad
    std::cerr << "CountShadowed: " << error.what() << "\n";
    return 2;
  }
  return 0;
}
