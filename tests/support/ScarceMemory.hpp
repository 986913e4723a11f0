#pragma once

#include <cstddef>

namespace ZARN::Testing {

/// While it exists, requests for more bytes than this fail with std::bad_alloc.
/// Only for programs that compile ScarceMemory.cpp, which replaces operator
/// new.
class ScarceMemory {
 public:
  explicit ScarceMemory(std::size_t largestRequest);
  ScarceMemory(const ScarceMemory&) = delete;
  ScarceMemory& operator=(const ScarceMemory&) = delete;
  ~ScarceMemory();
};

}  // namespace ZARN::Testing
