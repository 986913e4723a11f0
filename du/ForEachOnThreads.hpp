#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <system_error>
#include <thread>
#include <vector>

namespace ZARN::DU {

/// Call work(i) once for every i from 0 to before @p count, on up to @p threads
/// threads, this one among them. Returns when all is done.
///
/// The threads are this call's own: a pool that the caller's framework keeps is
/// not disturbed, and no more threads work than asked for. Where the system
/// gives fewer, those do all of it.
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
  const std::size_t most = std::min(threads, count);
  try {
    while (others.size() + 1 < most) others.emplace_back(workOn);
  } catch (const std::system_error&) {
    // The threads that there are do the rest.
  }
  workOn();
  for (std::thread& other : others) other.join();
}

}  // namespace ZARN::DU
