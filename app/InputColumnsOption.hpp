#pragma once

#include <string>
#include <vector>

#include "io/ColumnNames.hpp"

namespace CLI {
class App;
}

namespace ZARN::App {

/// Our names of the columns of a file of light paths, and of those of events
/// and PMTs, where event_x is the column x of the events.
std::vector<std::string> PathColumns();
std::vector<std::string> PositionColumns();

/// Read the value of --input-columns: "start_x=evt.x,start_y=evt.y".
///
/// @param known  the names that may stand before "="
/// @throws BadUsage
IO::ColumnNames InputColumnsOf(const std::string& list,
                               const std::vector<std::string>& known);

/// Add --input-columns; @p names must outlive the parsing.
///
/// @param example  a value, for the help
void AddInputColumnsOption(CLI::App& command, IO::ColumnNames& names,
                           const std::vector<std::string>& known,
                           const std::string& example);

}  // namespace ZARN::App
