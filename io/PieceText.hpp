#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace ZARN::IO {

/// Text made of many short pieces. Unlike a string it is not cleared when it
/// grows, and it copies short pieces without a call.
class PieceText {
 public:
  /// So many bytes after a piece must be readable.
  static constexpr std::size_t kPadding = 64;

  /// A piece with readable bytes after it.
  class Piece {
   public:
    Piece() : Piece("") {}
    explicit Piece(const std::string& text)
        : padded_(text + std::string(kPadding, ' ')), size_(text.size()) {}
    std::string_view Text() const { return {padded_.data(), size_}; }

   private:
    std::string padded_;
    std::size_t size_;
  };

  void Clear() { size_ = 0; }
  std::string_view Text() const { return {text_.get(), size_}; }

  /// Make room for pieces of this length in all.
  void Reserve(std::size_t length) {
    if (capacity_ < size_ + length + kPadding) Grow(length);
  }

  /// Append a piece, after Reserve. It should not be longer than @p kUsual, and
  /// kPadding bytes after it must be readable.
  template <std::size_t kUsual>
  void Append(std::string_view piece) {
    static_assert(kUsual <= kPadding);
    char* const end = text_.get() + size_;
    if (piece.size() <= kUsual) {
      std::memcpy(end, piece.data(), kUsual);
    } else {
      std::memcpy(end, piece.data(), piece.size());
    }
    size_ += piece.size();
  }

  /// Append any text.
  void AppendText(std::string_view text) {
    Reserve(text.size());
    std::memcpy(text_.get() + size_, text.data(), text.size());
    size_ += text.size();
  }

  void Append(char character) {
    Reserve(1);
    text_[size_++] = character;
  }

  /// Append the shortest decimal that reads back as the same double.
  void AppendNumber(double value);
  void AppendNumber(std::uint64_t value);

 private:
  void Grow(std::size_t length);
  template <class Value>
  void AppendDigits(Value value);

  std::unique_ptr<char[]> text_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace ZARN::IO
