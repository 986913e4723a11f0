#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ZARN::IO {

/// Refuse file arguments that get in each other's way: two outputs to one
/// place, an output that would replace an input, two inputs from one pipe.
///
/// @param inputs   as for InputFile
/// @param outputs  as for OutputFile, and only those that were given
/// @throws BadInput naming the file
void RequireDistinctFiles(const std::vector<std::string>& inputs,
                          const std::vector<std::string>& outputs);

}  // namespace ZARN::IO
