#pragma once

#include <string>
#include <vector>

namespace ZARN::IO {

/// Refuse file arguments that conflict: two outputs to the same file, an output
/// that would replace an input, standard input used twice.
///
/// @param inputFiles   as for InputFile
/// @param outputFiles  as for OutputFile, and only those that were given
/// @throws BadInput naming the file
void RequireDistinctFiles(const std::vector<std::string>& inputFiles,
                          const std::vector<std::string>& outputFiles);

}  // namespace ZARN::IO
