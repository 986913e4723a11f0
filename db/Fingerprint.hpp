#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "db/TableSet.hpp"

namespace ZARN {

/// A fingerprint of the tables that are valid for the current run: the SHA-256
/// of CanonicalText, as 64 hexadecimal digits. Results with the same
/// fingerprint were computed with the same tables, whatever files these came
/// from.
std::string Fingerprint(const TableSet& tables);

/// The content of TableSet::CurrentEntries as one line of JSON: an object of
/// tables, each an object of indices, each an object of fields. The names are
/// sorted by bytes, nothing is between the tokens, and every number is the
/// shortest text that reads back as the same double (std::to_chars). Run ranges
/// and passes are not in it.
std::string CanonicalText(const TableSet& tables);

/// An entry whose fields are already text, as in CanonicalText.
struct CanonicalEntry {
  std::string_view table;
  std::string_view index;
  std::string_view fields;
};

/// The fingerprint of tables whose entries for a run are these.
///
/// @param entries  sorted by table and index, as in TableSet::CurrentEntries
std::string Fingerprint(const std::vector<CanonicalEntry>& entries);

}  // namespace ZARN
