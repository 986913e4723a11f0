#include "io/FileNames.hpp"

#include <unistd.h>

#include <charconv>
#include <filesystem>
#include <system_error>

namespace ZARN::IO {
namespace {

namespace fs = std::filesystem;

/// Follow symbolic links one by one until @p isEnd is true.
template <class IsEnd>
fs::path FollowLinks(const std::string& name, const IsEnd& isEnd) {
  constexpr int kMaxLinks = 40;  // the kernel's limit; more is a loop
  std::error_code error;
  fs::path place = fs::absolute(name, error);
  for (int links = 0; links < kMaxLinks && !isEnd(place); ++links) {
    const fs::path next = fs::read_symlink(place, error);
    if (error) break;  // not a link
    place = place.parent_path() / next;
  }
  return place;
}

/// Whether a path is in the folder of this process's open descriptors.
bool IsDescriptor(const fs::path& place) {
  std::error_code error;
  const fs::path folder = fs::canonical(place.parent_path(), error);
  return !error &&
         folder == fs::path("/proc") / std::to_string(getpid()) / "fd";
}

}  // namespace

std::optional<int> DescriptorNamed(const std::string& name) {
  const fs::path place = FollowLinks(name, IsDescriptor);
  if (!IsDescriptor(place)) return std::nullopt;
  const std::string digits = place.filename().string();
  int descriptor = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, descriptor);
  if (error != std::errc() || stop != end || descriptor < 0) {
    return std::nullopt;
  }
  return descriptor;
}

bool CanReplace(const std::string& name) {
  if (DescriptorNamed(name).has_value()) return false;
  std::error_code error;
  const fs::file_status status = fs::status(name, error);
  return !fs::exists(status) || fs::is_regular_file(status);
}

std::string TargetOf(const std::string& name) {
  return FollowLinks(name, [](const fs::path&) { return false; }).string();
}

bool IsRootFileName(std::string_view name) {
  constexpr std::string_view kEnding = ".root";
  return name.size() >= kEnding.size() &&
         name.substr(name.size() - kEnding.size()) == kEnding;
}

}  // namespace ZARN::IO
