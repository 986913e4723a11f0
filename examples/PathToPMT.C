R__LOAD_LIBRARY(PREFIX/lib/libzarn_root.so)  // PREFIX: where it is installed

/// Computes the light path from an event to a PMT and tests whether it is
/// blocked, at ROOT's prompt:
///   root -l -b -q 'PathToPMT.C("data/reference-detector")'
void PathToPMT(const char* tables) {
  ZARN::LoadJsonTables(ZARN::DB::Get(), tables);
  ZARN::DU::ShadowingCalculator calculator;
  calculator.BeginOfRun();
  ZARN::DU::LightPathCalculator path;
  path.BeginOfRun();

  path.CalcByPosition({0, 0, 3000}, {8300, 0, 0});  // event and PMT, mm
  std::cout << path.GetTimeOfFlight()
            << " ns, shadowed: " << calculator.CheckForShadowing(path) << "\n";
}
