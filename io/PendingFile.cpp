#include "io/PendingFile.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "io/Errors.hpp"
#include "io/InterruptCheck.hpp"

namespace ZARN::IO {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kTemporaryMark = ".zarn-tmp-";
constexpr std::string_view kRandomPart = "XXXXXX";  // as mkostemp wants it

/// What the names of temporary files begin with; six characters follow. The
/// target's name is shortened, so that the longest one leaves room.
std::string TemporaryPrefix(const fs::path& target) {
  constexpr std::size_t kMaxNameLength = 200;
  return "." + target.filename().string().substr(0, kMaxNameLength) +
         std::string(kTemporaryMark);
}

bool IsTemporaryName(const std::string& name, const std::string& prefix) {
  return name.size() == prefix.size() + kRandomPart.size() &&
         name.compare(0, prefix.size(), prefix) == 0;
}

/// A temporary file is locked for as long as its process lives, so one that can
/// be locked was left behind. Where a file system has no locks, none can.
enum class eLock { kTaken, kHeldByAnother, kNotSupported };

eLock TryToLock(int descriptor) {
  if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) return eLock::kTaken;
  return errno == EWOULDBLOCK ? eLock::kHeldByAnother : eLock::kNotSupported;
}

void RemoveLeftBehind(const fs::path& target) {
  const std::string prefix = TemporaryPrefix(target);
  std::error_code error;
  for (const auto& item : fs::directory_iterator(target.parent_path(), error)) {
    if (!IsTemporaryName(item.path().filename().string(), prefix)) continue;
    const int descriptor =
        open(item.path().c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor < 0) continue;
    if (TryToLock(descriptor) == eLock::kTaken) unlink(item.path().c_str());
    close(descriptor);
  }
}

/// The permissions that an ordinary file would have here.
mode_t PermissionsFor(const std::string& target) {
  struct stat status = {};
  if (stat(target.c_str(), &status) == 0) return status.st_mode & 0777U;
  const mode_t mask = umask(0);
  umask(mask);
  return 0666U & ~mask;
}

}  // namespace

bool PendingFile::CanReplace(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  return !fs::exists(status) || fs::is_regular_file(status);
}

std::string PendingFile::TargetOf(const std::string& path) {
  constexpr int kMaxLinks = 40;  // as the kernel has it; more is a circle
  std::error_code error;
  fs::path target = fs::absolute(path, error);
  for (int links = 0; links < kMaxLinks; ++links) {
    const fs::path next = fs::read_symlink(target, error);
    if (error) break;  // no link (any more)
    target = target.parent_path() / next;
  }
  return target.string();
}

PendingFile::PendingFile(const std::string& path)
    : name_(path), target_(TargetOf(path)) {
  struct stat status = {};
  if (stat(target_.c_str(), &status) == 0) {
    // Replacing it would go past its protection.
    if (access(target_.c_str(), W_OK) != 0) FailWithErrno();
  } else if (errno != ENOENT) {
    FailWithErrno();  // a name too long, say: the temporary one is shorter
  }
  Open();
}

PendingFile::~PendingFile() {
  if (!temporary_.empty()) unlink(temporary_.c_str());
  if (descriptor_ >= 0) close(descriptor_);
}

void PendingFile::Open() {
  const fs::path target = target_;
  RemoveLeftBehind(target);
  while (descriptor_ < 0) {
    temporary_ =
        (target.parent_path() / (TemporaryPrefix(target).append(kRandomPart)))
            .string();
    descriptor_ = mkostemp(temporary_.data(), O_CLOEXEC);
    if (descriptor_ < 0) {
      temporary_.clear();
      FailWithErrno();
    }
    // Another process may have taken it for left behind before it was locked.
    struct stat status = {};
    if (TryToLock(descriptor_) == eLock::kHeldByAnother ||
        (fstat(descriptor_, &status) == 0 && status.st_nlink == 0)) {
      close(descriptor_);
      descriptor_ = -1;
    }
  }
  fchmod(descriptor_, PermissionsFor(target_));
}

void PendingFile::Finish() {
  // On disk before it is in place: a crash must not leave an empty target.
  if (fsync(descriptor_) != 0) FailWithErrno();
  // Some file systems report a failed write only when the file is closed. A
  // second descriptor keeps the lock until the file is in its place.
  const int lock = fcntl(descriptor_, F_DUPFD_CLOEXEC, 0);
  if (lock < 0) FailWithErrno();
  const int written = descriptor_;
  descriptor_ = lock;
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
