#pragma once

#include <string>
#include <vector>

#include "TError.h"

namespace ZARN::Testing {

/// Collects ROOT's messages, as "<function>: <text>", during its lifetime. Only
/// one may exist at a time.
class RootWarnings {
 public:
  RootWarnings() : previous_(SetErrorHandler(Collect)) { Messages().clear(); }
  RootWarnings(const RootWarnings&) = delete;
  RootWarnings& operator=(const RootWarnings&) = delete;
  ~RootWarnings() { SetErrorHandler(previous_); }

  /// The messages so far.
  static std::vector<std::string>& Messages() {
    static std::vector<std::string> messages;
    return messages;
  }

 private:
  static void Collect(int /*level*/, Bool_t /*abort*/, const char* location,
                      const char* text) {
    // The location starts with the class, which ROOT knows only after its type
    // system has been initialised.
    std::string function = location;
    if (const auto colons = function.rfind("::"); colons != std::string::npos) {
      function.erase(0, colons + 2);
    }
    Messages().push_back(function + ": " + text);
  }

  ErrorHandlerFunc_t previous_;
};

/// The warning of ROOT when a zero vector is given a length.
inline const char* const kZeroVectorWarning =
    "SetMag: zero vector can't be stretched";

}  // namespace ZARN::Testing
