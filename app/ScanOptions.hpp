#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/InputOptions.hpp"
#include "app/RunOptions.hpp"
#include "app/VerdictOptions.hpp"
#include "du/Smearing.hpp"
#include "io/PairColumns.hpp"
#include "lightpath/LightPathCalculator.hpp"

namespace CLI {
class App;
}

namespace ZARN::App {

/// The options of a scan.
struct ScanOptions {
  RunOptions run;
  InputOptions input;
  VerdictOptions verdicts;
  std::optional<std::string> paths;
  std::optional<std::string> perPMT;
  std::optional<std::string> perEvent;
  double wavelength = DU::LightPathCalculator::kDefaultWavelength;  // nm
  bool withReflections = false;
  std::optional<double> sigma;  // of the smearing, mm; none without it
  std::optional<int> samples;
  std::optional<int> seed;
  std::vector<double> tolerances;  // mm; empty: count at one tolerance only

  std::optional<DU::Smearing> Smearing() const;

  /// All columns besides the usual ones: those of the smearing come first.
  std::vector<const IO::PairColumn*> AllColumns() const;

  /// Whether the verdicts are written, or with several tolerances the table of
  /// all counts: to a file, or to standard output unless only the counts of
  /// PMTs or events were asked for.
  bool WritesVerdicts() const { return tolerances.empty() && WritesResults(); }
  bool WritesTable() const { return !tolerances.empty() && WritesResults(); }
  bool WritesResults() const {
    return verdicts.output.has_value() ||
           !(perPMT.has_value() || perEvent.has_value());
  }
};

/// Add the options and the help of scan; @p options must outlive the parsing.
void AddScanOptions(CLI::App& command, ScanOptions& options);

/// Check options against each other: events must be given once, and files must
/// not conflict.
///
/// @throws BadUsage, IO::BadInput
void RequireConsistent(const ScanOptions& options);

}  // namespace ZARN::App
