#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace ZARN::IO {

/// A file, pipe or standard input, read once from the beginning.
class InputFile {
 public:
  /// @param path  "-" is standard input
  /// @throws BadInput if it cannot be opened, and what the interrupt check
  ///         throws while opening a pipe waits for a writer
  explicit InputFile(const std::string& path);
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  /// Name for messages.
  const std::string& Name() const { return name_; }

  int Descriptor() const { return descriptor_; }

  /// Read up to @p size bytes; 0 at the end of the file and from then on, also
  /// on a terminal.
  ///
  /// @throws BadInput if reading fails; what the interrupt check throws
  std::size_t Read(char* buffer, std::size_t size);

  /// Whether Read would block waiting for input.
  bool WouldWait() const;

  /// What share so many bytes are of a regular file; nullopt for others.
  std::optional<double> Share(std::uint64_t bytes) const {
    if (size_ == 0) return std::nullopt;
    return static_cast<double>(bytes) / static_cast<double>(size_);
  }

 private:
  std::string name_;
  int descriptor_;
  std::uint64_t size_ = 0;
  bool isAtEnd_ = false;
};

}  // namespace ZARN::IO
