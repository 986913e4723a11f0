#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ZARN::App {

/// A file that appears whole or not at all.
///
/// Text goes to a temporary file beside the target, which replaces the target
/// when Commit is called. Without it (an error, an interrupt) the temporary
/// file is removed, and an existing target is as it was. What a killed process
/// left behind is removed by the next one that writes the same target. A target
/// that is no regular file (a pipe, a terminal, a device) is written directly.
class OutputFile {
 public:
  /// @param path  nullopt and "-" are standard output
  /// @throws BadInput for an empty name, OutputFailure if it cannot be opened,
  /// Interrupted if a signal came
  ///         while a pipe waited for its other end
  explicit OutputFile(const std::optional<std::string>& path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  /// @throws OutputFailure if writing fails, Interrupted if a signal came
  void Write(std::string_view text);

  /// Write what is left and put the file in its place.
  ///
  /// @throws as Write
  void Commit();

 private:
  void OpenDirectly(const std::string& path);
  void OpenTemporary();
  void Flush();
  void Close();
  [[noreturn]] void FailWithErrno() const;

  std::string name_;       // in messages
  std::string target_;     // empty when written directly
  std::string temporary_;  // empty when there is none (any more)
  int descriptor_ = -1;
  std::string buffer_;
};

}  // namespace ZARN::App
