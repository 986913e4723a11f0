#include "db/Fingerprint.hpp"

#include <openssl/sha.h>

#include <array>
#include <string_view>

#include "db/CanonicalJson.hpp"

namespace ZARN {

std::string CanonicalText(const TableSet& tables) {
  std::string text = "{";
  const std::string* table = nullptr;  // the one that is open
  for (const auto& entry : tables.CurrentEntries()) {
    const bool isSameTable = table != nullptr && *table == entry->table;
    if (isSameTable) {
      text += ',';
    } else {
      if (table != nullptr) text += "},";
      AppendJson(text, entry->table);
      text += ":{";
      table = &entry->table;
    }
    AppendJson(text, entry->index);
    text += ':';
    AppendJson(text, entry->fields, eMinusZero::kFingerprint);
  }
  return text + (table == nullptr ? "}" : "}}");
}

std::string Fingerprint(const TableSet& tables) {
  const std::string text = CanonicalText(tables);
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

}  // namespace ZARN
