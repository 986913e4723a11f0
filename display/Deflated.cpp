#include "display/Deflated.hpp"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <new>
#include <utility>

namespace ZARN::Display {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "a page holds little-endian numbers");

class DeflatedBlock::Stream {
 public:
  Stream() {
    // It fails only without memory.
    if (deflateInit(&stream_, Z_DEFAULT_COMPRESSION) != Z_OK) {
      throw std::bad_alloc();
    }
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() { deflateEnd(&stream_); }

  void Append(std::string_view bytes) {
    constexpr std::size_t kMost = std::numeric_limits<uInt>::max();
    while (!bytes.empty()) {
      const std::string_view part = bytes.substr(0, kMost);
      Deflate(part, Z_NO_FLUSH);
      bytes.remove_prefix(part.size());
    }
  }

  std::string Finish() {
    Deflate({}, Z_FINISH);
    return std::move(compressed_);
  }

 private:
  void Deflate(std::string_view bytes, int flush) {
    std::array<unsigned char, 1U << 15U> part;
    // zlib does not write through the pointer, but older headers say so.
    stream_.next_in = const_cast<unsigned char*>(               // NOLINT
        reinterpret_cast<const unsigned char*>(bytes.data()));  // NOLINT
    stream_.avail_in = static_cast<uInt>(bytes.size());
    do {
      stream_.next_out = part.data();
      stream_.avail_out = static_cast<uInt>(part.size());
      deflate(&stream_, flush);
      compressed_.append(part.begin(), part.end() - stream_.avail_out);
    } while (stream_.avail_out == 0);
  }

  z_stream stream_ = {};
  std::string compressed_;
};

DeflatedBlock::DeflatedBlock(std::string name)
    : name_(std::move(name)), stream_(std::make_unique<Stream>()) {}
DeflatedBlock::DeflatedBlock(DeflatedBlock&&) noexcept = default;
DeflatedBlock& DeflatedBlock::operator=(DeflatedBlock&&) noexcept = default;
DeflatedBlock::~DeflatedBlock() = default;

void DeflatedBlock::AppendBytes(std::string_view bytes) {
  stream_->Append(bytes);
}

std::string DeflatedBlock::TakeBase64() { return Base64(stream_->Finish()); }

std::string Base64(std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t bits = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      bits <<= 8U;
      if (k < count) bits |= static_cast<unsigned char>(bytes[i + k]);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += k <= count ? kDigits[(bits >> (18U - 6U * k)) & 63U] : '=';
    }
  }
  return text;
}

}  // namespace ZARN::Display
