#include "log/Assert.hpp"

#include <cstdio>
#include <cstdlib>

namespace ZARN {

void AbortAt(const char* file, int line, const std::string& text) {
  const std::string message =
      std::string(file) + ":" + std::to_string(line) + ": " + text + "\n";
  static_cast<void>(std::fputs(message.c_str(), stderr));
  std::abort();
}

}  // namespace ZARN
