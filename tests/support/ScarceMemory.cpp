#include "tests/support/ScarceMemory.hpp"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::size_t kAny = std::numeric_limits<std::size_t>::max();
std::atomic<std::size_t> largestRequest = kAny;

}  // namespace

void* operator new(std::size_t size) {
  void* const memory = size > largestRequest ? nullptr : std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

namespace ZARN::Testing {

ScarceMemory::ScarceMemory(std::size_t largest) { largestRequest = largest; }
ScarceMemory::~ScarceMemory() { largestRequest = kAny; }

}  // namespace ZARN::Testing
