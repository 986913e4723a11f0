#pragma once

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

/// Reads the data of a page.
namespace ZARN::Testing {

/// The text of one of its elements.
inline std::string TextIn(const std::string& html, const std::string& name) {
  const std::string tag = " id=\"zarn-" + name + "\">";
  const std::size_t begin = html.find(tag);
  if (begin == std::string::npos) {
    ADD_FAILURE() << "no element " << name;
    return "";
  }
  const std::size_t text = begin + tag.size();
  return html.substr(text, html.find("</script>", text) - text);
}

inline std::string FromBase64(const std::string& text) {
  const std::string digits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  EXPECT_EQ(text.size() % 4, 0U);
  std::string bytes;
  std::uint32_t bits = 0;
  int count = 0;
  for (const char c : text.substr(0, text.find('='))) {
    bits = bits << 6U | static_cast<std::uint32_t>(digits.find(c));
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> static_cast<unsigned>(count) & 255U);
  }
  return bytes;
}

inline std::string Inflated(const std::string& bytes) {
  z_stream stream = {};
  EXPECT_EQ(inflateInit(&stream), Z_OK);
  std::vector<unsigned char> input(bytes.begin(), bytes.end());
  std::vector<unsigned char> output(1U << 16U);
  stream.next_in = input.data();
  stream.avail_in = static_cast<uInt>(input.size());
  std::string all;
  int status = Z_OK;
  while (status == Z_OK) {
    stream.next_out = output.data();
    stream.avail_out = static_cast<uInt>(output.size());
    status = inflate(&stream, Z_NO_FLUSH);
    all.append(output.begin(),
               output.end() - static_cast<std::ptrdiff_t>(stream.avail_out));
  }
  EXPECT_EQ(status, Z_STREAM_END);
  inflateEnd(&stream);
  return all;
}

/// The numbers of one of its blocks.
template <class Number>
std::vector<Number> NumbersIn(const std::string& html,
                              const std::string& name) {
  const std::string bytes = Inflated(FromBase64(TextIn(html, name)));
  EXPECT_EQ(bytes.size() % sizeof(Number), 0U);
  std::vector<Number> numbers(bytes.size() / sizeof(Number));
  std::memcpy(numbers.data(), bytes.data(), numbers.size() * sizeof(Number));
  return numbers;
}

}  // namespace ZARN::Testing
