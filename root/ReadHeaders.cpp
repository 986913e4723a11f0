#include <dlfcn.h>

#include <string>

#include "TInterpreter.h"

namespace {

/// Lets the interpreter read the headers when the library is loaded. The
/// dictionary alone would do so only when a class is named, so not for a
/// function or an enumerator. It could also hold only the paths of the build,
/// but an installed library may be moved.
// NOLINTNEXTLINE(misc-static-initialization-cycle): only its address is used
[[maybe_unused]] const bool kAreHeadersRead = [] {
  Dl_info library;
  if (dladdr(&kAreHeadersRead, &library) == 0) return false;
  const std::string file = library.dli_fname;
  const std::string folder = file.substr(0, file.find_last_of('/') + 1);
  gInterpreter->AddIncludePath((folder + ZARN_INCLUDE_FROM_LIBRARY).c_str());
  return gInterpreter->Declare("#include \"root/Headers.hpp\"");
}();

}  // namespace
