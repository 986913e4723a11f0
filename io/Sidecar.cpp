#include "io/Sidecar.hpp"

#include <filesystem>

#include "io/FileNames.hpp"

namespace ZARN::IO {

std::optional<std::string> SidecarName(
    const std::optional<std::string>& output) {
  constexpr std::size_t kMaxNameLength = 255;  // of usual file systems
  const std::string path = output.value_or("-");
  if (path.empty() || path == "-" || IsRootFileName(path)) return std::nullopt;
  if (!CanReplace(path)) return std::nullopt;
  std::string name = path + ".json";
  const std::filesystem::path file = std::filesystem::path(name).filename();
  if (file.native().size() > kMaxNameLength) return std::nullopt;
  return name;
}

Sidecar::Sidecar(const std::optional<std::string>& output,
                 const Origin& origin) {
  const std::optional<std::string> name = SidecarName(output);
  if (name.has_value()) file_.emplace(name).Write(Describe(origin) + "\n");
}

void Sidecar::Finish() {
  if (file_.has_value()) file_->Finish();
}

void Sidecar::Commit() {
  if (file_.has_value()) file_->Commit();
}

}  // namespace ZARN::IO
