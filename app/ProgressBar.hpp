#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <ostream>

namespace ZARN::App {

/// Shows on standard error how far long work has come: a bar where the whole is
/// known, and a count with its rate.
///
/// Nothing is shown unless standard error is a terminal, and nothing in the
/// first second. The bar goes away at the end, and makes room for messages.
class ProgressBar {
 public:
  ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar();

  /// A stream to standard error for messages while the work goes on.
  std::ostream& Messages() { return *messages_; }

  /// Tell how far the work is; cheap enough to call for every item.
  ///
  /// @param count  items done
  /// @param done   part done, in the units of @p whole
  /// @param whole  0 where it is not known
  void Update(std::uint64_t count, std::uint64_t done, std::uint64_t whole);

  /// Take the bar away.
  void Finish();

 private:
  using Clock = std::chrono::steady_clock;
  class ClearingBuffer;

  void Draw(std::uint64_t count, std::uint64_t done, std::uint64_t whole);

  bool isTerminal_;
  bool isShown_ = false;
  Clock::time_point begin_ = Clock::now();
  Clock::time_point nextDraw_;
  std::unique_ptr<ClearingBuffer> buffer_;
  std::unique_ptr<std::ostream> messages_;
};

}  // namespace ZARN::App
