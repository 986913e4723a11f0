#pragma once

#include <map>
#include <string>
#include <vector>

#include "db/TableEntry.hpp"

namespace ZARN {

/// How the number -0 is written.
enum class eMinusZero {
  kReadsBack,   ///< -0.0: parsers of JSON read -0 as the whole number 0
  kFingerprint  ///< -0: the text that fingerprints are made of
};

/// Append a value as JSON with nothing between the tokens. This is the one way
/// in which the text of a fingerprint, table files and databases write values.
///
/// A number is the shortest text that reads back as the same double
/// (std::to_chars), in every locale; it must be finite, as those of every table
/// source are. What is not UTF-8 in a string is replaced. The names of fields
/// are sorted by bytes.
void AppendJson(std::string& text, double number,
                eMinusZero minusZero = eMinusZero::kReadsBack);
void AppendJson(std::string& text, const std::string& string);
void AppendJson(std::string& text, const std::vector<double>& numbers,
                eMinusZero minusZero = eMinusZero::kReadsBack);
void AppendJson(std::string& text,
                const std::map<std::string, TableField>& fields,
                eMinusZero minusZero = eMinusZero::kReadsBack);

/// The fields of an entry as an object of JSON on one line:
/// {"name":"a","x":[0.1,-2000]}. ParseJsonFields (db/JsonTables.hpp) reads back
/// the same fields, every double to the last bit.
std::string JsonOfFields(const std::map<std::string, TableField>& fields);

}  // namespace ZARN
