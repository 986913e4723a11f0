#pragma once

#include <cstddef>

namespace ZARN::Testing {

/// While it lives, requests for more bytes than this find no memory. Only in
/// programs that ScarceMemory.cpp is part of: it replaces operator new.
class ScarceMemory {
 public:
  explicit ScarceMemory(std::size_t largestRequest);
  ScarceMemory(const ScarceMemory&) = delete;
  ScarceMemory& operator=(const ScarceMemory&) = delete;
  ~ScarceMemory();
};

}  // namespace ZARN::Testing
