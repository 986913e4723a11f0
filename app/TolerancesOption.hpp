#pragma once

#include <vector>

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add --tolerances, a range START:STOP:STEP or a list of numbers in mm;
/// @p tolerances must outlive the parsing.
void AddTolerancesOption(CLI::App& command, std::vector<double>& tolerances);

}  // namespace ZARN::App
