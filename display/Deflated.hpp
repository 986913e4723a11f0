#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ZARN::Display {

/// Numbers for a page: compressed by zlib's deflate as they come.
class DeflatedBlock {
 public:
  /// @param name  of the block in the page
  explicit DeflatedBlock(std::string name);
  DeflatedBlock(DeflatedBlock&&) noexcept;
  DeflatedBlock& operator=(DeflatedBlock&&) noexcept;
  ~DeflatedBlock();

  const std::string& Name() const { return name_; }

  /// Append numbers in the byte order of a page, the little-endian one.
  template <class Number>
  void Append(const std::vector<Number>& numbers) {
    AppendBytes({reinterpret_cast<const char*>(numbers.data()),  // NOLINT
                 numbers.size() * sizeof(Number)});
  }

  /// What was appended, compressed, as base64. Call it once, at the end.
  std::string TakeBase64();

 private:
  class Stream;

  void AppendBytes(std::string_view bytes);

  std::string name_;
  std::unique_ptr<Stream> stream_;
};

/// RFC 4648, with padding.
std::string Base64(std::string_view bytes);

}  // namespace ZARN::Display
