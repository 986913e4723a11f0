#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include "du/ShadowingCalculator.hpp"
#include "scan/VerdictCounts.hpp"

namespace ZARN::App {

/// Print a line of the table at the end of a command.
void PrintCount(std::ostream& out, const std::string& label,
                std::uint64_t count);

/// Print verdict counts as the table at the end of a command.
///
/// @param calculator  tells which components were loaded
/// @param seconds     how long the paths took
void PrintCounts(std::ostream& out, const Scan::VerdictCounts& counts,
                 const DU::ShadowingCalculator& calculator, double seconds);

}  // namespace ZARN::App
