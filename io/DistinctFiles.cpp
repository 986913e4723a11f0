#include "io/DistinctFiles.hpp"

#include <filesystem>
#include <system_error>

#include "io/Errors.hpp"
#include "io/PendingFile.hpp"

namespace ZARN::IO {
namespace {

namespace fs = std::filesystem;

bool AreSame(const std::string& a, const std::string& b) {
  if (a == "-" || b == "-") return a == b;
  // A terminal or /dev/null takes more than one.
  if (!PendingFile::CanReplace(a)) return false;
  std::error_code error;
  if (fs::equivalent(a, b, error)) return true;
  const auto place = [&error](const std::string& path) {
    return fs::weakly_canonical(PendingFile::TargetOf(path), error);
  };
  return place(a) == place(b);
}

/// Both names, where one file has two.
std::string NamesOf(const std::string& a, const std::string& b) {
  if (a == "-") return "standard output";
  return a == b ? a : a + " (" + b + ")";
}

}  // namespace

void RequireDistinctFiles(const std::vector<std::string>& inputs,
                          const std::vector<std::string>& outputs) {
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    for (std::size_t k = 0; k < i; ++k) {
      if (inputs[i] == "-" && inputs[k] == "-") {
        throw BadInput("standard input is named twice");
      }
    }
  }
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const std::string& output = outputs[i];
    for (std::size_t k = 0; k < i; ++k) {
      if (!AreSame(output, outputs[k])) continue;
      throw BadInput(NamesOf(outputs[k], output) +
                     ": is named for two outputs");
    }
    for (const std::string& input : inputs) {
      if (output != "-" && AreSame(output, input)) {
        throw BadInput(NamesOf(output, input) + ": is both read and written");
      }
    }
  }
}

}  // namespace ZARN::IO
