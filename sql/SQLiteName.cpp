#include "sql/SQLiteName.hpp"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace ZARN::SQL {
namespace {

namespace fs = std::filesystem;

std::string Refusal() { return std::generic_category().message(errno); }

}  // namespace

std::string ConnectionToFile(const std::string& file, const std::string& mode) {
  // As a URI, in which every character can be escaped: blanks, quotes and equal
  // signs have a meaning in SOCI's own text.
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/._-";
  std::string text = "db=file:";
  for (const char c : fs::absolute(file).string()) {
    if (kPlain.find(c) != std::string_view::npos) {
      text += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      text += {'%', kDigits[byte / 16U], kDigits[byte % 16U]};
    }
  }
  return text + "?mode=" + mode;
}

std::string ReasonAgainst(const std::string& file, bool mayBeMade) {
  if (file.empty()) return "there is no name of a file after sqlite:";
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  if (fs::is_directory(status)) return "is a folder, not an SQLite file";
  if (fs::exists(status)) {
    return access(file.c_str(), R_OK) == 0 ? ""
                                           : "cannot be read: " + Refusal();
  }
  if (status.type() != fs::file_type::not_found) {
    return "cannot be read: " + error.message();
  }
  if (!mayBeMade) {
    return "there is no such file; zarn-shadow tables import makes it";
  }
  const fs::path folder = fs::absolute(file).parent_path();
  if (!fs::is_directory(folder, error)) {
    return "cannot be made: there is no folder " + folder.string();
  }
  return access(folder.c_str(), W_OK) == 0 ? ""
                                           : "cannot be made: " + Refusal();
}

}  // namespace ZARN::SQL
