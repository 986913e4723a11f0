#pragma once

#include "app/ProgressBar.hpp"
#include "log/Log.hpp"

namespace ZARN::App {

/// Sends the library's messages past the progress bar for as long as it lives.
class MessagesPast {
 public:
  explicit MessagesPast(ProgressBar& progress) {
    warn.SetOutput(&progress.Messages());
    debug.SetOutput(&progress.Messages());
  }
  MessagesPast(const MessagesPast&) = delete;
  MessagesPast& operator=(const MessagesPast&) = delete;
  ~MessagesPast() {
    warn.SetOutput(nullptr);
    debug.SetOutput(nullptr);
  }
};

}  // namespace ZARN::App
