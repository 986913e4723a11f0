#include "db/Fingerprint.hpp"

#include <openssl/sha.h>

#include <array>
#include <charconv>
#include <nlohmann/json.hpp>
#include <string_view>
#include <variant>
#include <vector>

namespace ZARN {
namespace {

void Append(std::string& text, double number) {
  std::array<char, 32> digits;  // at most 24 are used
  const auto result =
      std::to_chars(digits.data(), digits.data() + digits.size(), number);
  text.append(digits.data(), result.ptr);
}

void Append(std::string& text, const std::string& string) {
  // Text that is not UTF-8 cannot come from a file; it must not throw here.
  constexpr auto kReplace = nlohmann::json::error_handler_t::replace;
  text += nlohmann::json(string).dump(-1, ' ', false, kReplace);
}

void Append(std::string& text, const std::vector<double>& numbers) {
  text += '[';
  std::string_view separator;
  for (const double number : numbers) {
    text += separator;
    Append(text, number);
    separator = ",";
  }
  text += ']';
}

void Append(std::string& text, const TableEntry& entry) {
  text += '{';
  std::string_view separator;
  for (const auto& [name, field] : entry.fields) {
    text += separator;
    Append(text, name);
    text += ':';
    std::visit([&text](const auto& value) { Append(text, value); }, field);
    separator = ",";
  }
  text += '}';
}

}  // namespace

std::string CanonicalText(const TableSet& tables) {
  std::string text = "{";
  const std::string* table = nullptr;  // the one that is open
  for (const auto& entry : tables.CurrentEntries()) {
    const bool isSameTable = table != nullptr && *table == entry->table;
    if (isSameTable) {
      text += ',';
    } else {
      if (table != nullptr) text += "},";
      Append(text, entry->table);
      text += ":{";
      table = &entry->table;
    }
    Append(text, entry->index);
    text += ':';
    Append(text, *entry);
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
