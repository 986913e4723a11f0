#include "python/module/Interruptible.hpp"

#include <nanobind/nanobind.h>

#include <chrono>
#include <thread>

#include "python/module/Unlocked.hpp"
#include "scan/WorkerThread.hpp"

namespace ZARN::Python {

namespace nb = nanobind;

void Interruptible::Run(const std::function<void()>& work,
                        const std::function<void()>& onTick) {
  std::exception_ptr failure;
  std::thread worker = Scan::StartWorkerThread([&] {
    try {
      work();
    } catch (...) {
      failure = std::current_exception();
    }
    {
      const std::lock_guard<std::mutex> lock(guard_);
      isDone_ = true;
    }
    changed_.notify_all();
  });
  std::exception_ptr ofCaller;
  try {
    Serve(onTick);
  } catch (...) {
    ofCaller = std::current_exception();
    const std::lock_guard<std::mutex> lock(guard_);
    isStopping_ = true;
    changed_.notify_all();
  }
  {
    const Unlocked unlocked;
    worker.join();
  }
  // The work's own exception is then only that it was stopped.
  if (ofCaller != nullptr) std::rethrow_exception(ofCaller);
  if (failure != nullptr) std::rethrow_exception(failure);
}

void Interruptible::Serve(const std::function<void()>& onTick) {
  constexpr std::chrono::milliseconds kTick(20);
  while (true) {
    bool isDone = false;
    const std::function<void()>* call = nullptr;
    {
      const Unlocked unlocked;
      std::unique_lock<std::mutex> lock(guard_);
      changed_.wait_for(lock, kTick,
                        [&] { return isDone_ || call_ != nullptr; });
      isDone = isDone_;
      call = call_;
    }
    if (PyErr_CheckSignals() != 0) throw nb::python_error();
    if (call != nullptr) {
      (*call)();
      const std::lock_guard<std::mutex> lock(guard_);
      call_ = nullptr;
      changed_.notify_all();
    }
    if (onTick) onTick();
    if (isDone) return;
  }
}

void Interruptible::DoOnCaller(const std::function<void()>& call) {
  std::unique_lock<std::mutex> lock(guard_);
  call_ = &call;
  changed_.notify_all();
  changed_.wait(lock, [&] { return call_ == nullptr || isStopping_; });
  CheckForStop();
}

}  // namespace ZARN::Python
