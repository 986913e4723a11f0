#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "scan/WorkerThread.hpp"

namespace ZARN::Scan {

/// Processes items on several threads and returns them in order. The threads
/// live as long as this object. One thread, the owner's, pushes and pops;
/// instead of waiting, it processes items too.
///
/// Why not ROOT's executor: it uses no more threads than there are cores, and
/// hides its locks from the thread sanitizer.
template <class Item>
class OrderedWork {
 public:
  /// Called once for every item. Workers count from 0 to threads - 1; each
  /// processes one item at a time, and the owner's thread is worker 0.
  using Work = std::function<void(Item& item, std::size_t worker)>;

  /// @param threads  maximum number; threads are started when there is work
  OrderedWork(std::size_t threads, Work work)
      : maxThreads_(threads), work_(std::move(work)) {}
  OrderedWork(const OrderedWork&) = delete;
  OrderedWork& operator=(const OrderedWork&) = delete;
  /// Items that no thread has started are dropped.
  ~OrderedWork() {
    {
      const std::lock_guard<std::mutex> lock(guard_);
      isEnding_ = true;
    }
    workCame_.notify_all();
    for (std::thread& thread : threads_) thread.join();
  }

  /// Number of items pushed and not yet popped.
  std::size_t Size() const { return slots_.size(); }

  void Push(Item item) {
    {
      const std::lock_guard<std::mutex> lock(guard_);
      slots_.push_back({std::move(item)});
    }
    workCame_.notify_one();
    if (threads_.size() + 1 < std::min(maxThreads_, Size())) StartThread();
  }

  /// Wait until the oldest item is processed and return it. If processing it
  /// threw, the exception is thrown here.
  Item Pop() {
    std::unique_lock<std::mutex> lock(guard_);
    while (!slots_.front().isDone) {
      if (begun_ < slots_.size()) {
        WorkOnNext(lock, 0);
      } else {
        workEnded_.wait(lock);
      }
    }
    Slot slot = std::move(slots_.front());
    slots_.pop_front();
    --begun_;
    if (slot.failure != nullptr) std::rethrow_exception(slot.failure);
    return std::move(slot.item);
  }

 private:
  struct Slot {
    Item item;
    bool isDone = false;
    std::exception_ptr failure = nullptr;
  };

  void StartThread() {
    const std::size_t worker = threads_.size() + 1;
    try {
      threads_.push_back(StartWorkerThread([this, worker] { Run(worker); }));
    } catch (const std::system_error&) {
      // The system gives no more threads; those already started do the work.
      maxThreads_ = worker;
    }
  }

  void Run(std::size_t worker) {
    std::unique_lock<std::mutex> lock(guard_);
    while (true) {
      workCame_.wait(lock,
                     [this] { return isEnding_ || begun_ < slots_.size(); });
      if (isEnding_) return;
      WorkOnNext(lock, worker);
    }
  }

  void WorkOnNext(std::unique_lock<std::mutex>& lock, std::size_t worker) {
    Slot& slot = slots_[begun_++];  // a deque does not move its elements
    lock.unlock();
    try {
      work_(slot.item, worker);
    } catch (...) {
      slot.failure = std::current_exception();
    }
    lock.lock();
    slot.isDone = true;
    workEnded_.notify_one();
  }

  std::size_t maxThreads_;
  Work work_;
  std::vector<std::thread> threads_;  // besides the owner's

  std::mutex guard_;
  std::condition_variable workCame_;
  std::condition_variable workEnded_;
  std::deque<Slot> slots_;  // the oldest first; only the owner adds and removes
  std::size_t begun_ = 0;   // number of slots whose work has started
  bool isEnding_ = false;
};

}  // namespace ZARN::Scan
