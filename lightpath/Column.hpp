#pragma once

#include <cstddef>
#include <cstring>

namespace ZARN::DU {

/// Numbers in a caller's memory: dense, or a field of larger records such as a
/// NumPy structured array. Null where there are none.
template <class Number>
class Column {
 public:
  constexpr Column() = default;
  /// A dense array; converts, so that a pointer can be assigned to a column.
  constexpr Column(const Number* first)  // NOLINT(google-explicit-constructor)
      : first_(first) {}
  /// @param first   need not be aligned
  /// @param stride  bytes from one number to the next; may be zero or negative
  constexpr Column(const void* first, std::ptrdiff_t stride)
      : first_(first), stride_(stride) {}

  constexpr bool IsNull() const { return first_ == nullptr; }
  constexpr bool IsDense() const { return stride_ == sizeof(Number); }

  Number operator[](std::size_t i) const {
    Number number;
    std::memcpy(&number,
                static_cast<const std::byte*>(first_) +
                    static_cast<std::ptrdiff_t>(i) * stride_,
                sizeof number);
    return number;
  }

  /// The elements of a dense column, for loops that are to be vectorised.
  class Dense {
   public:
    explicit Dense(const std::byte* first) : first_(first) {}
    Number operator[](std::size_t i) const {
      Number number;
      std::memcpy(&number, first_ + i * sizeof number, sizeof number);
      return number;
    }

   private:
    const std::byte* first_;
  };
  /// From element @p i on. @pre IsDense
  Dense DenseFrom(std::size_t i) const {
    return Dense(static_cast<const std::byte*>(first_) + i * sizeof(Number));
  }

  /// The column from element @p i on; null if this is.
  Column From(std::size_t i) const {
    if (IsNull()) return *this;
    return {static_cast<const std::byte*>(first_) +
                static_cast<std::ptrdiff_t>(i) * stride_,
            stride_};
  }

 private:
  const void* first_ = nullptr;
  std::ptrdiff_t stride_ = sizeof(Number);
};

}  // namespace ZARN::DU
