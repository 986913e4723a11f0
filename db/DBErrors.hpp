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

/// A field holds a value that cannot be. The text names table, index and field.
class DBValueError : public std::runtime_error {
 public:
  DBValueError(const std::string& table, const std::string& index,
               const std::string& field, const std::string& reason)
      : std::runtime_error("table " + table + ", index " + index +
                           ": the field " + field + " " + reason) {}
};

/// A table file that cannot be used. The text names the file, the line and the
/// JSON path of what is wrong with it.
class TableFileError : public std::runtime_error {
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
