#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "TVector3.h"
#include "app/RunOptions.hpp"
#include "io/ColumnNames.hpp"
#include "lightpath/LightPathCalculator.hpp"

namespace CLI {
class App;
}

namespace ZARN::App {

/// The options of explain. The light path is given in one of three ways.
struct ExplainOptions {
  RunOptions run;
  // By positions:
  std::optional<TVector3> at;
  std::optional<TVector3> to;
  // By names in files:
  std::optional<std::string> events;
  std::optional<std::string> event;
  std::optional<std::string> pmts;
  std::optional<std::string> pmt;
  // Itself, in a file:
  std::optional<std::string> paths;
  std::optional<std::uint64_t> row;  // from 1

  std::optional<std::string> inputColumns;  // names in these files

  double wavelength = DU::LightPathCalculator::kDefaultWavelength;  // nm
  bool isReflected = false;
  bool writesJson = false;

  /// What the columns of the files are called.
  ///
  /// @throws BadUsage
  IO::ColumnNames Names() const;
};

/// Add the options and the help of explain; @p options must outlive the
/// parsing.
void AddExplainOptions(CLI::App& command, ExplainOptions& options);

/// Check that the light path is given in exactly one way.
///
/// @throws BadUsage, IO::BadInput
void RequireConsistent(const ExplainOptions& options);

}  // namespace ZARN::App
