#include "sql/StoredText.hpp"

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "db/RunText.hpp"

namespace ZARN::SQL {
namespace {

/// A name that cannot control a terminal or end a message.
std::string Printable(const std::string& name) {
  constexpr auto kReplace = nlohmann::json::error_handler_t::replace;
  const std::string quoted =
      nlohmann::json(name).dump(-1, ' ', false, kReplace);
  return quoted.substr(1, quoted.size() - 2);
}

}  // namespace

bool IsUtf8(std::string_view text) {
  constexpr auto kStrict = nlohmann::json::error_handler_t::strict;
  try {
    static_cast<void>(nlohmann::json(text).dump(-1, ' ', false, kStrict));
    return true;
  } catch (const nlohmann::json::type_error&) {
    return false;
  }
}

void RequireStorable(std::string_view text, const std::string& what) {
  if (!IsUtf8(text)) throw std::invalid_argument(what + " is not UTF-8");
  if (text.find('\0') == std::string_view::npos) return;
  throw std::invalid_argument(what + " has the character NUL");
}

std::string TextOf(const TableEntry& entry) {
  return Printable(entry.table) + "/" + Printable(entry.index) + ", pass " +
         std::to_string(entry.pass) + ", " + TextOf(entry.runs);
}

}  // namespace ZARN::SQL
