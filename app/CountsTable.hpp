#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include "du/ShadowingCalculator.hpp"
#include "scan/VerdictCounts.hpp"

namespace ZARN::App {

/// Print one line of the table that a command prints at its end.
void PrintCount(std::ostream& out, const std::string& label,
                std::uint64_t count);

/// Print verdict counts in the same form.
///
/// @param calculator  knows which components were loaded
/// @param seconds     time spent on the paths
void PrintCounts(std::ostream& out, const Scan::VerdictCounts& counts,
                 const DU::ShadowingCalculator& calculator, double seconds);

/// Print only the number of paths and the time, in the same form.
void PrintPaths(std::ostream& out, std::uint64_t paths, double seconds);

}  // namespace ZARN::App
