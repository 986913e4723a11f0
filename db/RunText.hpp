#pragma once

#include <string>

#include "db/TableEntry.hpp"

namespace ZARN {

/// A range of runs in words: "all runs", "run 7", "runs 1000 to 1999",
/// "runs from 1000", "runs up to 999".
std::string TextOf(const RunRange& runs);

}  // namespace ZARN
