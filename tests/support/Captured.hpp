#pragma once

#include <sstream>
#include <string>

#include "log/Log.hpp"

namespace ZARN::Testing {

/// Switches an otext on and collects its output for as long as this object
/// exists.
class Captured {
 public:
  explicit Captured(otext& stream) : stream_(stream), wasOn_(stream.IsOn()) {
    stream_.SetOutput(&text_);
    stream_.Switch(otext::eState::kOn);
  }
  Captured(const Captured&) = delete;
  Captured& operator=(const Captured&) = delete;
  ~Captured() {
    stream_.SetOutput(nullptr);
    stream_.Switch(wasOn_ ? otext::eState::kOn : otext::eState::kSilent);
  }

  std::string Text() const { return text_.str(); }

  /// What was written since the last call.
  std::string Take() {
    std::string text = text_.str();
    text_.str("");
    return text;
  }

 private:
  otext& stream_;
  bool wasOn_;
  std::ostringstream text_;
};

}  // namespace ZARN::Testing
