#pragma once

#include <string>

namespace ZARN::IO {

/// A temporary file beside its target, which takes the target's place when
/// Commit is called. Finish comes first: of several files, all are complete on
/// disk before the first takes its place.
///
/// Without Commit (an error, an interrupt) it is removed, and an existing
/// target is as it was. A killed process leaves it behind, named
/// .<target>.zarn-tmp-<six characters>.
class PendingFile {
 public:
  /// @param path  CanReplace(path)
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
  [[noreturn]] void FailWithErrno() const;

  std::string name_;       // in messages
  std::string target_;     // with links resolved
  std::string temporary_;  // empty once it is in place
  int descriptor_ = -1;
};

}  // namespace ZARN::IO
