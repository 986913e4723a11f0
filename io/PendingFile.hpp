#pragma once

#include <string>

namespace ZARN::IO {

/// A temporary file beside its target, which takes the target's place when
/// Commit is called. Finish comes first: of several files, all are complete on
/// disk before the first takes its place.
///
/// Without Commit (an error, an interrupt) it is removed, and an existing
/// target is as it was. What a killed process left behind is removed by the
/// next one that writes the same target.
class PendingFile {
 public:
  /// Whether a file of this kind can be replaced: a regular one, or none.
  static bool CanReplace(const std::string& path);

  /// Where a file of this name will stand: a link stays, what it points to is
  /// replaced.
  static std::string TargetOf(const std::string& path);

  /// @throws OutputFailure if it cannot be made, or the target is protected
  explicit PendingFile(const std::string& path);
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;
  ~PendingFile();

  const std::string& TemporaryPath() const { return temporary_; }
  int Descriptor() const { return descriptor_; }

  /// Bring what was written to disk; nothing can be written after that.
  ///
  /// @throws OutputFailure
  void Finish();

  /// Put the finished file in the target's place.
  ///
  /// @throws OutputFailure
  void Commit();

 private:
  void Open();
  [[noreturn]] void FailWithErrno() const;

  std::string name_;       // in messages
  std::string target_;     // with links resolved
  std::string temporary_;  // empty once it is in place
  int descriptor_ = -1;
};

}  // namespace ZARN::IO
