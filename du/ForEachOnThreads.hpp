#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <system_error>
#include <thread>
#include <vector>

namespace ZARN::DU {

/// Call work(i) once for each i with 0 <= i < @p count, on at most @p threads
/// threads, including the calling one. Returns when all calls have returned.
///
/// Starts its own threads: a thread pool of the caller's framework is not used,
/// and no more threads run than asked for. If the system cannot start that
/// many, those that did start do all the work.
///
/// @param work  must not throw
template <class Work>
void ForEachOnThreads(std::size_t count, std::size_t threads,
                      const Work& work) {
  std::atomic<std::size_t> next = 0;
  const auto workOn = [&] {
    for (std::size_t i = next++; i < count; i = next++) work(i);
  };
  std::vector<std::thread> others;
  const std::size_t maxThreads = std::min(threads, count);
  try {
    while (others.size() + 1 < maxThreads) others.emplace_back(workOn);
  } catch (const std::system_error&) {
    // The threads that did start do all the work.
  }
  workOn();
  for (std::thread& other : others) other.join();
}

}  // namespace ZARN::DU
