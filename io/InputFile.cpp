#include "io/InputFile.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "io/Errors.hpp"
#include "io/InterruptCheck.hpp"

namespace ZARN::IO {
namespace {

[[noreturn]] void FailWithErrno(const std::string& name) {
  throw BadInput(name +
                 ": cannot be read: " + std::generic_category().message(errno));
}

int Open(const std::string& path) {
  if (path == "-") return STDIN_FILENO;
  while (true) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor >= 0) return descriptor;
    if (errno != EINTR) FailWithErrno(path);
    CheckForInterrupt();
  }
}

}  // namespace

InputFile::InputFile(const std::string& path)
    : name_(path == "-" ? "standard input" : path), descriptor_(Open(path)) {
  struct stat status = {};
  if (fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode)) {
    size_ = static_cast<std::uint64_t>(status.st_size);
  }
}

InputFile::~InputFile() {
  if (descriptor_ != STDIN_FILENO) close(descriptor_);
}

std::size_t InputFile::Read(char* buffer, std::size_t size) {
  while (!isAtEnd_) {
    CheckForInterrupt();
    const ssize_t count = read(descriptor_, buffer, size);
    if (count >= 0) {
      isAtEnd_ = count == 0;
      return static_cast<std::size_t>(count);
    }
    if (errno != EINTR) FailWithErrno(name_);
  }
  return 0;
}

bool InputFile::WouldWait() const {
  struct pollfd input = {descriptor_, POLLIN, 0};
  return !isAtEnd_ && poll(&input, 1, 0) == 0;
}

}  // namespace ZARN::IO
