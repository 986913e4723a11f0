#include "io/RootErrors.hpp"

#include <TError.h>

#include <atomic>
#include <mutex>

#include "io/Quoted.hpp"

namespace ZARN::IO {
namespace {

thread_local RootErrors* current = nullptr;

// ROOT has one handler for all threads. It is replaced while any object exists.
std::mutex guard;
std::size_t objects = 0;
std::atomic<ErrorHandlerFunc_t> usual = &DefaultErrorHandler;

}  // namespace

RootErrors::RootErrors() : outer_(current) {
  current = this;
  const std::lock_guard<std::mutex> lock(guard);
  if (objects++ == 0) usual = SetErrorHandler(&RootErrors::Keep);
}

RootErrors::~RootErrors() {
  current = outer_;
  const std::lock_guard<std::mutex> lock(guard);
  if (--objects == 0) SetErrorHandler(usual);
}

void RootErrors::Keep(int level, bool abort, const char* place,
                      const char* text) {
  if (current == nullptr || level >= kFatal) {
    usual.load()(level, abort, place, text);
  } else if (level >= kError && current->first_.empty()) {
    current->first_ = Printable(text);
  }
}

}  // namespace ZARN::IO
