#pragma once

#include <string>

namespace ZARN::IO {

/// A temporary file in the folder of its target. Commit renames it to the
/// target. Call Finish first: with several files, all must be complete on disk
/// before the first is renamed.
///
/// Without Commit (an error, an interrupt) it is removed, and an existing
/// target is unchanged. A killed process leaves it behind as
/// .<target>.zarn-tmp-<six characters>.
class PendingFile {
 public:
  /// @param path  a name for which CanReplace is true
  /// @throws OutputFailure if it cannot be created or the target is
  ///         write-protected
  explicit PendingFile(const std::string& path);
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;
  ~PendingFile();

  const std::string& TemporaryPath() const { return temporary_; }
  int Descriptor() const { return descriptor_; }

  /// Write everything to disk and close the file.
  ///
  /// @throws OutputFailure
  void Finish();

  /// Rename the finished file to the target.
  ///
  /// @throws OutputFailure
  void Commit();

 private:
  [[noreturn]] void FailWithErrno() const;

  std::string name_;       // in messages
  std::string target_;     // with links resolved
  std::string temporary_;  // empty after Commit
  int descriptor_ = -1;
};

}  // namespace ZARN::IO
