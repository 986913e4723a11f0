#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace ZARN::IO {

/// A file, pipe or standard input, read once from the beginning.
class InputFile {
 public:
  /// @param path  "-" is standard input
  /// @throws BadInput if it cannot be opened, and what the interrupt check
  ///         throws while a pipe waits for its other end
  explicit InputFile(const std::string& path);
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  /// What to call it in messages.
  const std::string& Name() const { return name_; }

  /// Read up to @p size bytes; 0 at the end of the file and ever
  /// after (a terminal would wait for more).
  ///
  /// @throws BadInput if reading fails; what the interrupt check throws
  std::size_t Read(char* buffer, std::size_t size);

  /// Whether Read would have to wait for something to come.
  bool WouldWait() const;

  /// Size of a regular file; 0 where it is not known.
  std::uint64_t Size() const { return size_; }

 private:
  std::string name_;
  int descriptor_;
  std::uint64_t size_ = 0;
  bool isAtEnd_ = false;
};

}  // namespace ZARN::IO
