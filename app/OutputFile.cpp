#include "app/OutputFile.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "app/Failure.hpp"
#include "app/Signals.hpp"

namespace ZARN::App {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBufferSize = 64UL * 1024;
constexpr std::string_view kTemporaryMark = ".zarn-tmp-";
constexpr std::string_view kRandomPart = "XXXXXX";  // as mkostemp wants it

/// Where the file will stand: a link stays, what it points to is replaced.
fs::path ResolveTarget(const std::string& path) {
  constexpr int kMaxLinks = 40;  // as the kernel has it; more is a circle
  std::error_code error;
  fs::path target = fs::absolute(path, error);
  for (int links = 0; links < kMaxLinks; ++links) {
    const fs::path next = fs::read_symlink(target, error);
    if (error) break;  // no link (any more)
    target = target.parent_path() / next;
  }
  return target;
}

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

OutputFile::OutputFile(const std::optional<std::string>& path)
    : name_(path.value_or("standard output")) {
  buffer_.reserve(kBufferSize);
  if (!path.has_value() || *path == "-") {
    descriptor_ = STDOUT_FILENO;
    return;
  }
  if (path->empty()) throw BadInput("the output file has no name");
  std::error_code error;
  const fs::file_status status = fs::status(*path, error);
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    OpenDirectly(*path);
  } else {
    // Replacing it would go past its protection.
    if (fs::exists(status) && access(path->c_str(), W_OK) != 0) FailWithErrno();

    target_ = ResolveTarget(*path).string();
    OpenTemporary();
  }
}

OutputFile::~OutputFile() {
  if (!temporary_.empty()) unlink(temporary_.c_str());
  if (descriptor_ >= 0 && descriptor_ != STDOUT_FILENO) close(descriptor_);
}

void OutputFile::OpenDirectly(const std::string& path) {
  while (descriptor_ < 0) {
    descriptor_ = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    if (descriptor_ < 0 && errno != EINTR) FailWithErrno();
    ThrowIfInterrupted();
  }
}

void OutputFile::OpenTemporary() {
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

void OutputFile::Write(std::string_view text) {
  if (buffer_.size() + text.size() > kBufferSize) Flush();
  buffer_ += text;
}

void OutputFile::Flush() {
  std::size_t written = 0;
  while (written < buffer_.size()) {
    ThrowIfInterrupted();
    const ssize_t count =
        write(descriptor_, buffer_.data() + written, buffer_.size() - written);
    if (count >= 0) {
      written += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      FailWithErrno();
    }
  }
  buffer_.clear();
}

void OutputFile::Commit() {
  Flush();
  if (target_.empty()) {
    Close();
    return;
  }
  // On disk before it is in place: a crash must not leave an empty target.
  if (fsync(descriptor_) != 0) FailWithErrno();
  Close();
  ThrowIfInterrupted();
  if (rename(temporary_.c_str(), target_.c_str()) != 0) FailWithErrno();
  temporary_.clear();
  const fs::path folder = fs::path(target_).parent_path();
  const int descriptor = open(folder.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor >= 0) {
    fsync(descriptor);  // best effort: the file itself is complete already
    close(descriptor);
  }
}

void OutputFile::Close() {
  const int descriptor = descriptor_;
  descriptor_ = -1;
  // Some file systems report a failed write only here.
  if (close(descriptor) != 0 && errno != EINTR) FailWithErrno();
}

void OutputFile::FailWithErrno() const {
  throw OutputFailure(
      name_ + ": cannot be written: " + std::generic_category().message(errno));
}

}  // namespace ZARN::App
