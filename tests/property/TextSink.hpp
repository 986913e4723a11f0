#pragma once

#include <ostream>
#include <streambuf>
#include <string>

namespace ZARN::Testing {

/// A stream into a string that can be looked at and emptied without a copy:
/// every path has four of them compared.
class TextSink : public std::ostream {
 public:
  TextSink() : std::ostream(nullptr) { rdbuf(&buffer_); }

  const std::string& Text() const { return buffer_.text; }
  void Empty() { buffer_.text.clear(); }

  /// Take text or drop it.
  void Switch(bool on) { clear(on ? std::ios::goodbit : std::ios::badbit); }

 private:
  struct Buffer : std::streambuf {
    std::string text;

    int overflow(int c) override {
      if (c == traits_type::eof()) return 0;
      text.push_back(static_cast<char>(c));
      return c;
    }
    std::streamsize xsputn(const char* from, std::streamsize length) override {
      text.append(from, static_cast<std::size_t>(length));
      return length;
    }
  };

  Buffer buffer_;
};

}  // namespace ZARN::Testing
