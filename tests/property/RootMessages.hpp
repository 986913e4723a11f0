#pragma once

#include <stdexcept>
#include <string>

#include "TError.h"

namespace ZARN::Testing {

/// Collects the messages of ROOT during its lifetime. ROOT has one handler per
/// process, so only one of these may exist at a time.
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

  /// Throw at a message with this text; empty: never throw.
  void ThrowAt(const std::string& text) { throwAt_ = text; }

 private:
  static void Take(int /*level*/, bool /*abort*/, const char* location,
                   const char* text) {
    std::string& all = current_->text_;
    all.append(location).append(": ").append(text).append("\n");
    const std::string& throwAt = current_->throwAt_;
    if (!throwAt.empty() && all.find(throwAt) != std::string::npos) {
      throw std::runtime_error(throwAt);
    }
  }

  inline static RootMessages* current_ = nullptr;

  ErrorHandlerFunc_t previous_;
  std::string text_;
  std::string throwAt_;
};

}  // namespace ZARN::Testing
