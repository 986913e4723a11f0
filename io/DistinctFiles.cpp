#include "io/DistinctFiles.hpp"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "io/Errors.hpp"
#include "io/FileNames.hpp"
#include "io/RootFile.hpp"

namespace ZARN::IO {
namespace {

namespace fs = std::filesystem;

bool AreSame(const std::string& a, const std::string& b) {
  if (a == "-" || b == "-") return a == b;
  // A terminal or /dev/null may be used more than once.
  if (!CanReplace(a)) return false;
  std::error_code error;
  if (fs::equivalent(a, b, error)) return true;
  const auto place = [&error](const std::string& path) {
    return fs::weakly_canonical(TargetOf(path), error);
  };
  // There is no place in a loop of links.
  return !place(a).empty() && place(a) == place(b);
}

/// The names, with "-" in place of each name of this standard stream.
std::vector<std::string> WithDashFor(int stream,
                                     std::vector<std::string> names) {
  std::replace_if(
      names.begin(), names.end(),
      [&](const std::string& name) { return DescriptorNamed(name) == stream; },
      "-");
  return names;
}

/// The name of the file, or both names if they differ.
std::string NamesOf(const std::string& a, const std::string& b) {
  if (a == "-") return "standard output";
  return a == b ? a : a + " (" + b + ")";
}

/// Two inputs may be different trees of one file.
void RequireDistinct(const std::string& a, const std::string& b) {
  if (a == "-" && b == "-") throw BadInput("standard input is used twice");
  const std::string fileA = FileOfInput(a);
  const std::string fileB = FileOfInput(b);
  if (a == "-" || b == "-" || !AreSame(fileA, fileB)) return;
  const std::string treeA = a.substr(fileA.size());
  const std::string treeB = b.substr(fileB.size());
  if (!treeA.empty() && !treeB.empty() && treeA != treeB) return;
  throw BadInput(NamesOf(a, b) + ": is used for two inputs");
}

}  // namespace

void RequireDistinctFiles(const std::vector<std::string>& inputFiles,
                          const std::vector<std::string>& outputFiles) {
  const auto inputs = WithDashFor(STDIN_FILENO, inputFiles);
  const auto outputs = WithDashFor(STDOUT_FILENO, outputFiles);
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    for (std::size_t k = 0; k < i; ++k) RequireDistinct(inputs[k], inputs[i]);
  }
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const std::string& output = outputs[i];
    for (std::size_t k = 0; k < i; ++k) {
      if (!AreSame(output, outputs[k])) continue;
      throw BadInput(NamesOf(outputs[k], output) + ": is used for two outputs");
    }
    for (const std::string& input : inputs) {
      const std::string file = FileOfInput(input);
      if (output != "-" && AreSame(output, file)) {
        throw BadInput(NamesOf(output, file) + ": is both read and written");
      }
    }
  }
}

}  // namespace ZARN::IO
