#pragma once

#include <ostream>

#include "log/Log.hpp"

namespace ZARN::App {

/// Sends the library's messages to a stream while this object exists.
class ScopedLogOutput {
 public:
  explicit ScopedLogOutput(std::ostream& stream) {
    warn.SetOutput(&stream);
    debug.SetOutput(&stream);
  }
  ScopedLogOutput(const ScopedLogOutput&) = delete;
  ScopedLogOutput& operator=(const ScopedLogOutput&) = delete;
  ~ScopedLogOutput() {
    warn.SetOutput(nullptr);
    debug.SetOutput(nullptr);
  }
};

}  // namespace ZARN::App
