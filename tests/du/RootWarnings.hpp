#pragma once

#include <string>
#include <vector>

#include "TError.h"

namespace ZARN::Testing {

/// Collects ROOT's messages, as "<function>: <text>", for as long as it lives.
/// One at a time.
class RootWarnings {
 public:
  RootWarnings() : previous_(SetErrorHandler(Collect)) { Messages().clear(); }
  RootWarnings(const RootWarnings&) = delete;
  RootWarnings& operator=(const RootWarnings&) = delete;
  ~RootWarnings() { SetErrorHandler(previous_); }

  /// What was written so far.
  static std::vector<std::string>& Messages() {
    static std::vector<std::string> messages;
    return messages;
  }

 private:
  static void Collect(int /*level*/, Bool_t /*abort*/, const char* location,
                      const char* text) {
    // Before the function stands the class, which ROOT knows only once its type
    // system is up.
    std::string function = location;
    if (const auto colons = function.rfind("::"); colons != std::string::npos) {
      function.erase(0, colons + 2);
    }
    Messages().push_back(function + ": " + text);
  }

  ErrorHandlerFunc_t previous_;
};

/// What ROOT says when a vector of no length shall get one.
inline const char* const kZeroVectorWarning =
    "SetMag: zero vector can't be stretched";

}  // namespace ZARN::Testing
