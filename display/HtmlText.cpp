#include "display/HtmlText.hpp"

#include <nlohmann/json.hpp>

namespace ZARN::Display {
namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD";

bool IsAllowed(char c) {
  const auto code = static_cast<unsigned char>(c);
  return (code >= 0x20 && code != 0x7F) || c == '\t' || c == '\n';
}

}  // namespace

std::string ValidUtf8(std::string_view text) {
  using Json = nlohmann::json;
  // The library replaces what is not UTF-8 when it writes.
  const std::string json =
      Json(std::string(text))
          .dump(-1, ' ', false, Json::error_handler_t::replace);
  return Json::parse(json).get<std::string>();
}

std::string HtmlText(std::string_view text) {
  std::string html;
  for (const char c : ValidUtf8(text)) {
    switch (c) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      case '\'':
        html += "&#39;";
        break;
      default:
        if (IsAllowed(c)) {
          html += c;
        } else {
          html += kReplacement;
        }
    }
  }
  return html;
}

}  // namespace ZARN::Display
