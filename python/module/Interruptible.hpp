#pragma once

#include <atomic>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>

namespace ZARN::Python {

/// Runs long work on a thread of its own, while the calling thread looks for
/// Ctrl-C: only Python's main thread can, and the work may be anywhere.
class Interruptible {
 public:
  /// Thrown in the work when it must end.
  struct Stopped : std::exception {
    const char* what() const noexcept override { return "stopped"; }
  };

  /// Call @p work, without the interpreter lock. Every few hundredths of a
  /// second the calling thread takes the lock, lets Python handle signals and
  /// calls @p onTick. If one of these raises, the work is stopped and the
  /// exception leaves; so does an exception of the work.
  ///
  /// Requires the interpreter lock.
  void Run(const std::function<void()>& work,
           const std::function<void()>& onTick = nullptr);

  /// In the work: throws Stopped if it must end. Thread-safe.
  void CheckForStop() const {
    if (isStopping_.load(std::memory_order_relaxed)) throw Stopped();
  }

  /// In the work, on its first thread: let the thread that called Run do
  /// @p call, with the interpreter lock, and wait until it has.
  void DoOnCaller(const std::function<void()>& call);

 private:
  void Serve(const std::function<void()>& onTick);

  std::atomic<bool> isStopping_ = false;
  std::mutex guard_;
  std::condition_variable changed_;
  bool isDone_ = false;
  const std::function<void()>* call_ = nullptr;
};

}  // namespace ZARN::Python
