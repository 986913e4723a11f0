#pragma once

#include <string>
#include <vector>

namespace ZARN::IO {

/// Refuse file arguments that conflict: two inputs or two outputs that are one
/// file, an output that would replace an input, standard input used twice. Two
/// inputs may be different trees of one ROOT file, each given by its name.
///
/// @param inputFiles   as for InputFile or RootFile
/// @param outputFiles  as for OutputFile, and only those that were given
/// @throws BadInput naming the file
void RequireDistinctFiles(const std::vector<std::string>& inputFiles,
                          const std::vector<std::string>& outputFiles);

}  // namespace ZARN::IO
