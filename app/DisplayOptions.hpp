#pragma once

#include <optional>
#include <string>

#include "app/InputOptions.hpp"
#include "app/RunOptions.hpp"
#include "lightpath/LightPathCalculator.hpp"

namespace CLI {
class App;
}

namespace ZARN::App {

/// The options of a display.
struct DisplayOptions {
  RunOptions run;
  InputOptions input;
  std::string output = "DISPLAY.html";
  double wavelength = DU::LightPathCalculator::kDefaultWavelength;  // nm
  bool withReflections = false;
  std::string title;  // empty: the usual one
};

/// Add the options and the help of display; @p options must outlive the
/// parsing.
void AddDisplayOptions(CLI::App& command, DisplayOptions& options);

/// Check options against each other, and that files do not conflict.
///
/// @throws BadUsage, IO::BadInput
void RequireConsistent(const DisplayOptions& options);

}  // namespace ZARN::App
