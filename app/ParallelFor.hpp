#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace ZARN::App {

/// Do work(item, worker) for every item from 0 to count - 1, each once, in no
/// particular order, on at most @p threads threads, of which the caller's is
/// one. Workers count from 0 to threads - 1. Returns when all is done; the
/// first exception of a worker then leaves from here, and items that had not
/// begun are left out.
///
/// ROOT's executor takes no more threads than there are cores, and hides its
/// locks from the thread sanitizer.
template <class Work>
void ParallelFor(std::size_t count, std::size_t threads, const Work& work) {
  std::atomic<std::size_t> next = 0;
  std::exception_ptr failure;
  std::mutex failureGuard;
  const auto run = [&](std::size_t worker) {
    try {
      for (std::size_t item = next++; item < count; item = next++) {
        work(item, worker);
      }
    } catch (...) {
      next = count;
      const std::lock_guard<std::mutex> lock(failureGuard);
      if (failure == nullptr) failure = std::current_exception();
    }
  };
  std::vector<std::thread> workers;
  const std::size_t wanted = std::min(threads, count);
  workers.reserve(wanted);
  try {
    for (std::size_t i = 1; i < wanted; ++i) workers.emplace_back(run, i);
  } catch (const std::system_error&) {
    // No more threads to be had: those that there are do the work.
  }
  run(0);
  for (std::thread& worker : workers) worker.join();
  if (failure != nullptr) std::rethrow_exception(failure);
}

}  // namespace ZARN::App
