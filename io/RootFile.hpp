#pragma once

#include <memory>
#include <string>
#include <vector>

#include "io/InputFile.hpp"

class TFile;

namespace ZARN::IO {

/// Whether a name that is given for an input means a ROOT file, or a tree in
/// one. The content decides: a regular file that starts with "root".
bool IsRootInput(const std::string& input);

/// The file that is meant by the name of an input: "a.root" in "a.root:tree".
/// A file whose own name has a colon is that file.
std::string FileOfInput(const std::string& input);

/// The data of a ROOT file: its trees, which are TTrees or RNTuples.
class RootFile {
 public:
  /// @param input  the name of a file, followed by a colon and the name of a
  ///               tree if the file has several
  /// @throws BadInput if the file is cut short or damaged, or if there is no
  ///         such tree; the message names those that there are
  explicit RootFile(const std::string& input);
  ~RootFile();

  /// "a.root: tree "paths"", for messages.
  const std::string& Name() const { return name_; }
  TFile& File() { return *file_; }
  /// Its name, with the folder in the file.
  const std::string& Tree() const { return tree_; }
  bool IsNTuple() const { return isNTuple_; }

 private:
  InputFile input_;
  std::unique_ptr<TFile> file_;
  std::string name_;
  std::string tree_;
  bool isNTuple_ = false;
};

}  // namespace ZARN::IO
