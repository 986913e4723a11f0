#pragma once

#include <string>

#include "TError.h"

namespace ZARN::Testing {

/// Collects ROOT's own messages for as long as it lives. ROOT has one handler a
/// process, so there may be one of these at a time.
class RootMessages {
 public:
  RootMessages() : previous_(SetErrorHandler(&RootMessages::Take)) {
    current_ = this;
  }
  RootMessages(const RootMessages&) = delete;
  RootMessages& operator=(const RootMessages&) = delete;
  ~RootMessages() {
    SetErrorHandler(previous_);
    current_ = nullptr;
  }

  const std::string& Text() const { return text_; }
  void Empty() { text_.clear(); }

 private:
  static void Take(int /*level*/, bool /*abort*/, const char* location,
                   const char* text) {
    current_->text_.append(location).append(": ").append(text).append("\n");
  }

  inline static RootMessages* current_ = nullptr;

  ErrorHandlerFunc_t previous_;
  std::string text_;
};

}  // namespace ZARN::Testing
