#include "display/PngEncoder.hpp"

#include <zlib.h>

#include <stdexcept>
#include <vector>

namespace ZARN::Display {
namespace {

void AppendNumber(std::string& bytes, std::uint32_t number) {
  for (const unsigned shift : {24U, 16U, 8U, 0U}) {
    bytes += static_cast<char>((number >> shift) & 0xFFU);
  }
}

const Bytef* BytesOf(const std::string& text) {
  return reinterpret_cast<const Bytef*>(text.data());
}

void AppendChunk(std::string& bytes, const std::string& kind,
                 const std::string& data) {
  AppendNumber(bytes, static_cast<std::uint32_t>(data.size()));
  const std::string checked = kind + data;
  bytes += checked;
  AppendNumber(bytes, static_cast<std::uint32_t>(
                          crc32_z(0, BytesOf(checked), checked.size())));
}

// The rows, each after a byte that says that they are not filtered.
std::string RowsOf(const std::uint32_t* pixels, std::size_t stride,
                   std::size_t columns, std::size_t rows) {
  std::string bytes(rows * (1 + 3 * columns), '\0');
  auto at = bytes.begin();
  for (std::size_t row = 0; row < rows; ++row) {
    *at++ = 0;
    const std::uint32_t* const first = pixels + row * stride;
    for (std::size_t column = 0; column < columns; ++column) {
      const std::uint32_t pixel = first[column];
      *at++ = static_cast<char>((pixel >> 16U) & 0xFFU);
      *at++ = static_cast<char>((pixel >> 8U) & 0xFFU);
      *at++ = static_cast<char>(pixel & 0xFFU);
    }
  }
  return bytes;
}

}  // namespace

std::string EncodePng(const std::uint32_t* pixels, std::size_t stride,
                      std::size_t columns, std::size_t rows) {
  constexpr int kLevel = 4;
  const std::string plain = RowsOf(pixels, stride, columns, rows);
  uLongf length = compressBound(plain.size());
  std::vector<Bytef> packed(length);
  if (compress2(packed.data(), &length, BytesOf(plain), plain.size(), kLevel) !=
      Z_OK) {
    throw std::runtime_error("cannot compress a PNG");
  }
  std::string bytes = "\x89PNG\r\n\x1A\n";
  std::string header;
  AppendNumber(header, static_cast<std::uint32_t>(columns));
  AppendNumber(header, static_cast<std::uint32_t>(rows));
  // Bits a colour; red, green and blue; the only compression and filters; not
  // interlaced.
  header += std::string("\x08\x02\x00\x00\x00", 5);
  AppendChunk(bytes, "IHDR", header);
  AppendChunk(bytes, "IDAT",
              {packed.begin(), packed.begin() + static_cast<long>(length)});
  AppendChunk(bytes, "IEND", "");
  return bytes;
}

}  // namespace ZARN::Display
