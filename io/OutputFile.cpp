#include "io/OutputFile.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "io/Errors.hpp"
#include "io/FileNames.hpp"
#include "io/InterruptCheck.hpp"

namespace ZARN::IO {
namespace {

constexpr std::size_t kBufferSize = 64UL * 1024;

}  // namespace

OutputFile::OutputFile(const std::optional<std::string>& path)
    : name_(path.value_or("-")) {
  buffer_.reserve(kBufferSize);
  if (name_.empty()) throw BadInput("the output file has no name");
  const std::optional<int> open =
      name_ == "-" ? STDOUT_FILENO : DescriptorNamed(name_);
  if (open == STDOUT_FILENO) {
    name_ = "standard output";
    descriptor_ = STDOUT_FILENO;
  } else if (open.has_value()) {
    Duplicate(*open);
  } else if (CanReplace(name_)) {
    descriptor_ = pending_.emplace(name_).Descriptor();
  } else {
    OpenDirectly(name_);
  }
}

OutputFile::~OutputFile() {
  const bool isOwn = !pending_.has_value() && descriptor_ != STDOUT_FILENO;
  if (isOwn && descriptor_ >= 0) close(descriptor_);
}

void OutputFile::Duplicate(int descriptor) {
  descriptor_ = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
  if (descriptor_ < 0) FailWithErrno();
}

void OutputFile::OpenDirectly(const std::string& path) {
  while (descriptor_ < 0) {
    descriptor_ = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    if (descriptor_ < 0 && errno != EINTR) FailWithErrno();
    CheckForInterrupt();
  }
}

void OutputFile::Write(std::string_view text) {
  if (buffer_.size() + text.size() > kBufferSize) Flush();
  if (text.size() > kBufferSize) {
    WriteNow(text);
  } else {
    buffer_ += text;
  }
}

void OutputFile::Flush() {
  WriteNow(buffer_);
  buffer_.clear();
}

void OutputFile::WriteNow(std::string_view text) {
  while (!text.empty()) {
    CheckForInterrupt();
    const ssize_t count = write(descriptor_, text.data(), text.size());
    if (count >= 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      FailWithErrno();
    }
  }
}

void OutputFile::Finish() {
  Flush();
  const int descriptor = descriptor_;
  descriptor_ = -1;
  if (pending_.has_value()) {
    pending_->Finish();
  } else if (close(descriptor) != 0 && errno != EINTR) {
    FailWithErrno();
  }
}

void OutputFile::Commit() {
  if (pending_.has_value()) pending_->Commit();
}

void OutputFile::FailWithErrno() const {
  if (errno == EPIPE && descriptor_ == STDOUT_FILENO) {
    throw ClosedPipe(name_ + " was closed by its reader");
  }
  throw OutputFailure(
      name_ + ": cannot be written: " + std::generic_category().message(errno));
}

}  // namespace ZARN::IO
