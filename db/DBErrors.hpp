#pragma once

#include <stdexcept>
#include <string>

namespace ZARN {

/// A table, an entry or a field is missing, or a field has another type than
/// the one asked for. The text names table, index, field, run and pass.
class DBNotFoundError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A link handle that holds nothing was dereferenced.
class null_dereference : public std::runtime_error {
 public:
  explicit null_dereference(const std::string& text)
      : std::runtime_error(text) {}
};

}  // namespace ZARN
