#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>

namespace ZARN::App {

/// Shows on standard error how far long work has come: a bar and the time left
/// where the whole is known, and a count with its rate.
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
  /// @param done   part of the whole, 0 to 1, where it is known
  void Update(std::uint64_t count, std::optional<double> done);

  /// Take the bar away.
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

/// Part of a whole; nothing where the whole is not known (0).
std::optional<double> Share(std::uint64_t part, std::uint64_t whole);

}  // namespace ZARN::App
