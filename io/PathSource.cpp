#include "io/PathSource.hpp"

#include "io/RootFile.hpp"

namespace ZARN::IO {

std::unique_ptr<PathSource> OpenPaths(const std::string& input,
                                      const ColumnNames& names) {
  return IsRootInput(input) ? OpenRootPaths(input, names)
                            : OpenCsvPaths(input, names);
}

}  // namespace ZARN::IO
