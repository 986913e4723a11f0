#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "db/TableEntry.hpp"

namespace ZARN::Json {

/// A JSON value with its place in the text, for error messages.
struct Node {
  enum class eKind { kNull, kBoolean, kNumber, kString, kArray, kObject };

  eKind kind = eKind::kNull;
  TextPlace place = {1, 1};          ///< where the value begins
  TextPlace keyPlace;                ///< where the key of a member begins
  std::string path;                  ///< JSON path, e.g. $[3].fields.x[0]
  double number = 0.0;               ///< of a number
  std::optional<long long> integer;  ///< of a number written as a whole number
  std::string text;                  ///< of a string
  std::vector<Node> items;           ///< of an array
  /// Of an object, in file order.
  std::vector<std::pair<std::string, Node>> members;
};

/// Report an error at a place: throws TableFileError with
/// "<name>:<line>: <path>: <reason>".
[[noreturn]] void Refuse(const std::string& name, int line,
                         const std::string& path, const std::string& reason);

/// Parse JSON text into a tree.
///
/// @throws TableFileError for text that is not JSON, a key given twice in one
///         object, a number that a double cannot hold, or too deep nesting
Node ParseTree(const std::string& text, const std::string& name);

}  // namespace ZARN::Json
