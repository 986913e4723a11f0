#include "db/Fingerprint.hpp"

#include <openssl/sha.h>

#include <array>
#include <string_view>
#include <utility>

#include "db/CanonicalJson.hpp"

namespace ZARN {
namespace {

/// Writes tables as one object. Entries come sorted by table and index.
class TablesText {
 public:
  /// Begin an entry; its fields must be appended to the text returned.
  std::string& Begin(std::string_view table, std::string_view index) {
    if (!isEmpty_ && table == table_) {
      text_ += ',';
    } else {
      if (!isEmpty_) text_ += "},";
      AppendJson(text_, std::string(table));
      text_ += ":{";
      table_ = table;
      isEmpty_ = false;
    }
    AppendJson(text_, std::string(index));
    text_ += ':';
    return text_;
  }

  std::string Take() {
    text_ += isEmpty_ ? "}" : "}}";
    return std::move(text_);
  }

 private:
  std::string text_ = "{";
  std::string table_;  // the one that is open
  bool isEmpty_ = true;
};

std::string HashOf(const std::string& text) {
  std::array<unsigned char, SHA256_DIGEST_LENGTH> digest = {};
  SHA256(reinterpret_cast<const unsigned char*>(text.data()), text.size(),
         digest.data());
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string hexadecimal;
  for (const unsigned byte : digest) {
    hexadecimal += kDigits[byte / 16];
    hexadecimal += kDigits[byte % 16];
  }
  return hexadecimal;
}

}  // namespace

std::string CanonicalText(const TableSet& tables) {
  TablesText text;
  for (const auto& entry : tables.CurrentEntries()) {
    AppendJson(text.Begin(entry->table, entry->index), entry->fields,
               eMinusZero::kFingerprint);
  }
  return text.Take();
}

std::string Fingerprint(const TableSet& tables) {
  return HashOf(CanonicalText(tables));
}

std::string Fingerprint(const std::vector<CanonicalEntry>& entries) {
  TablesText text;
  for (const CanonicalEntry& entry : entries) {
    text.Begin(entry.table, entry.index) += entry.fields;
  }
  return HashOf(text.Take());
}

}  // namespace ZARN
