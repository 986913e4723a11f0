#include "io/PendingFile.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "io/Errors.hpp"
#include "io/FileNames.hpp"

namespace ZARN::IO {
namespace {

namespace fs = std::filesystem;

/// Pattern for mkostemp: a temporary file in the target's folder. The target's
/// name is shortened, so that the result does not exceed the limit for names.
std::string TemporaryPattern(const fs::path& target) {
  constexpr std::size_t kMaxNameLength = 200;
  const std::string name = target.filename().string().substr(0, kMaxNameLength);
  return (target.parent_path() / ("." + name + ".zarn-tmp-XXXXXX")).string();
}

/// The permissions of the target, or those that a new file would get.
mode_t PermissionsFor(const std::string& target) {
  struct stat status = {};
  if (stat(target.c_str(), &status) == 0) return status.st_mode & 0777U;
  const mode_t mask = umask(0);
  umask(mask);
  return 0666U & ~mask;
}

}  // namespace

PendingFile::PendingFile(const std::string& path)
    : name_(path), target_(TargetOf(path)) {
  struct stat status = {};
  if (stat(target_.c_str(), &status) == 0) {
    // rename would ignore a write protection of the target.
    if (access(target_.c_str(), W_OK) != 0) FailWithErrno();
  } else if (errno != ENOENT) {
    FailWithErrno();  // e.g. name too long: the temporary name is shorter
  }
  temporary_ = TemporaryPattern(target_);
  descriptor_ = mkostemp(temporary_.data(), O_CLOEXEC);
  if (descriptor_ < 0) FailWithErrno();
  fchmod(descriptor_, PermissionsFor(target_));
}

PendingFile::~PendingFile() {
  if (!temporary_.empty()) unlink(temporary_.c_str());
  if (descriptor_ >= 0) close(descriptor_);
}

void PendingFile::Finish() {
  // Sync before the rename, so that a crash cannot leave an empty target.
  if (fsync(descriptor_) != 0) FailWithErrno();
  // Some file systems report a failed write only when the file is closed.
  const int written = descriptor_;
  descriptor_ = -1;
  if (close(written) != 0 && errno != EINTR) FailWithErrno();
}

void PendingFile::Commit() {
  if (rename(temporary_.c_str(), target_.c_str()) != 0) FailWithErrno();
  temporary_.clear();
  const fs::path folder = fs::path(target_).parent_path();
  const int descriptor = open(folder.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor >= 0) {
    fsync(descriptor);  // best effort: the file itself is complete already
    close(descriptor);
  }
}

void PendingFile::FailWithErrno() const {
  throw OutputFailure(
      name_ + ": cannot be written: " + std::generic_category().message(errno));
}

}  // namespace ZARN::IO
