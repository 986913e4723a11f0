#pragma once

#include <memory>
#include <stdexcept>
#include <string>

namespace ZARN {

/// A table, an entry or a field is missing, or a field does not have the
/// requested type. The text names table, index, field, run and pass.
class DBNotFoundError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A field has an invalid value. The text names table, index and field.
class DBValueError : public std::runtime_error {
 public:
  DBValueError(const std::string& table, const std::string& index,
               const std::string& field, const std::string& reason)
      : std::runtime_error("table " + table + ", index " + index +
                           ": the field " + field + " " + reason),
        field_(std::make_shared<const std::string>(field)),
        reason_(std::make_shared<const std::string>(reason)) {}

  const std::string& Field() const { return *field_; }
  /// What is wrong, after the name of the field: "is empty".
  const std::string& Reason() const { return *reason_; }

 private:
  // Shared, since copies of an exception must not throw.
  std::shared_ptr<const std::string> field_;
  std::shared_ptr<const std::string> reason_;
};

/// A table file cannot be read or is invalid. The text names the file and, if
/// it is invalid, the line and the JSON path.
class TableFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// An empty link handle was dereferenced.
class null_dereference : public std::runtime_error {
 public:
  explicit null_dereference(const std::string& text)
      : std::runtime_error(text) {}
};

}  // namespace ZARN
