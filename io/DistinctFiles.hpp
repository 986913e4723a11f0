#pragma once

#include <string>
#include <vector>

namespace ZARN::IO {

/// Refuse file arguments that get in each other's way: two outputs to one
/// place, an output that would replace an input, two inputs from one pipe.
///
/// @param inputFiles   as for InputFile
/// @param outputFiles  as for OutputFile, and only those that were given
/// @throws BadInput naming the file
void RequireDistinctFiles(const std::vector<std::string>& inputFiles,
                          const std::vector<std::string>& outputFiles);

}  // namespace ZARN::IO
