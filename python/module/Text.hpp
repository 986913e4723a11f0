#pragma once

#include <nanobind/nanobind.h>

#include <string>

namespace ZARN::Python {

/// A text of the library for Python. Bytes that are not UTF-8, for example of a
/// file's name, become escape sequences.
inline nanobind::str TextOf(const std::string& text) {
  return nanobind::steal<nanobind::str>(PyUnicode_DecodeUTF8(
      text.data(), static_cast<Py_ssize_t>(text.size()), "backslashreplace"));
}

/// A path as the system knows it: its bytes need not be UTF-8.
inline std::string PathOf(const nanobind::bytes& path) {
  return {path.c_str(), path.size()};
}

}  // namespace ZARN::Python
