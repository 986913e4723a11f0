#pragma once

#include <optional>
#include <string>
#include <vector>

#include "du/Smearing.hpp"

namespace ZARN::IO {

/// How results were made. It is stored with them, so that they can be made
/// again.
struct Origin {
  std::string program;
  std::string version;
  int run = 0;
  double tolerance = 0.0;            ///< mm
  std::optional<double> wavelength;  ///< nm; none where no light is traced
  std::string fingerprint;           ///< of the tables: db/Fingerprint.hpp
  /// None where only the positions of the events themselves are judged.
  std::optional<DU::Smearing> smearing = std::nullopt;
  /// Those of counts at several tolerances, mm; then they are written instead
  /// of the tolerance.
  std::vector<double> tolerances = {};
};

/// The members of @p origin as a JSON object on one line.
std::string Describe(const Origin& origin);

}  // namespace ZARN::IO
