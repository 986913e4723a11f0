#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>

namespace ZARN::App {

/// Shows the progress of long work on standard error: a bar and the time left
/// if the total is known, and always a count with its rate.
///
/// Shows nothing if standard error is not a terminal, and nothing during the
/// first second. The bar is removed at the end and before messages.
class ProgressBar {
 public:
  ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar();

  /// A stream to standard error for messages during the work.
  std::ostream& Messages() { return *messages_; }

  /// Report progress; cheap enough to call for every item.
  ///
  /// @param count  items done
  /// @param done   fraction done, 0 to 1, if known
  void Update(std::uint64_t count, std::optional<double> done);

  /// Remove the bar.
  void Finish();

 private:
  using Clock = std::chrono::steady_clock;
  class ClearingBuffer;

  void Draw(std::uint64_t count, std::optional<double> done);

  bool isTerminal_;
  bool isShown_ = false;
  Clock::time_point begin_ = Clock::now();
  Clock::time_point nextDraw_;
  std::unique_ptr<ClearingBuffer> buffer_;
  std::unique_ptr<std::ostream> messages_;
};

}  // namespace ZARN::App
