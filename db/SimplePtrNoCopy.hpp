#pragma once

#include <utility>

#include "db/DBErrors.hpp"

namespace ZARN {

/// Reference-counted handle: copies of the handle share the object ("nocopy":
/// the object itself is never copied), and the last one deletes it.
///
/// The count is not atomic: use all copies of one handle in one thread.
template <class T>
class simple_ptr_nocopy {
 public:
  /// @param object  the handle takes ownership; may be null
  explicit simple_ptr_nocopy(T* object = nullptr) try
      : object_(object), count_(new unsigned(1)) {
  } catch (...) {
    delete object;
    throw;
  }

  simple_ptr_nocopy(const simple_ptr_nocopy& other)
      : object_(other.object_), count_(other.count_) {
    ++*count_;
  }

  simple_ptr_nocopy& operator=(simple_ptr_nocopy other) {
    std::swap(object_, other.object_);
    std::swap(count_, other.count_);
    return *this;
  }

  ~simple_ptr_nocopy() {
    if (--*count_ != 0) return;
    delete object_;
    delete count_;
  }

  /// @throws null_dereference if the handle is empty
  T* operator->() const {
    if (object_ == nullptr) {
      throw null_dereference(
          "null pointer dereferenced in simple_ptr_nocopy::operator->");
    }
    return object_;
  }

 private:
  T* object_;
  unsigned* count_;
};

}  // namespace ZARN
