#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add --tolerances, a range START:STOP:STEP or a list of numbers in mm;
/// @p tolerances must outlive the parsing.
///
/// @param description  what they are for; the forms are added
void AddTolerancesOption(CLI::App& command, std::vector<double>& tolerances,
                         const std::string& description);

}  // namespace ZARN::App
