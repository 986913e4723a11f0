#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "io/PendingFile.hpp"

namespace ZARN::IO {

/// A file that appears complete or not at all.
///
/// Text goes to a PendingFile, which replaces the target when Commit is called.
/// A target that is not a regular file (a pipe, a terminal, a device), or that
/// is already open (standard output, /dev/fd/3), is written directly.
class OutputFile {
 public:
  /// @param path  nullopt and "-" are standard output
  /// @throws BadInput for an empty name, OutputFailure if it cannot be opened,
  ///         and what the interrupt check throws while opening a pipe waits for
  ///         a reader
  explicit OutputFile(const std::optional<std::string>& path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  /// @throws OutputFailure if writing fails, ClosedPipe if standard output was
  ///         closed by its reader; what the interrupt check throws
  void Write(std::string_view text);

  /// Write buffered text. If a command writes several files, finish all before
  /// committing the first.
  ///
  /// @throws as Write
  void Finish();

  /// Move the finished file to its final name.
  ///
  /// @throws OutputFailure
  void Commit();

 private:
  void OpenDirectly(const std::string& path);
  void Duplicate(int descriptor);
  void Flush();
  void WriteNow(std::string_view text);
  [[noreturn]] void FailWithErrno() const;

  std::string name_;                    // in messages
  std::optional<PendingFile> pending_;  // none when written directly
  int descriptor_ = -1;
  std::string buffer_;
};

}  // namespace ZARN::IO
