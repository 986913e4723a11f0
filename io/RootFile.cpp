#include "io/RootFile.hpp"

#include <TFile.h>
#include <TKey.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>

#include "io/Errors.hpp"
#include "io/Quoted.hpp"
#include "io/RootErrors.hpp"

namespace ZARN::IO {
namespace {

namespace fs = std::filesystem;

bool IsRegular(const std::string& name) {
  std::error_code error;
  return fs::is_regular_file(name, error);
}

bool StartsAsRootFile(const std::string& name) {
  constexpr std::string_view kStart = "root";
  std::array<char, kStart.size()> start = {};
  if (!IsRegular(name)) return false;
  std::ifstream(name, std::ios::binary).read(start.data(), start.size());
  return std::string_view(start.data(), start.size()) == kStart;
}

/// The length of the name of the file in the name of an input.
std::size_t LengthOfFile(const std::string& input) {
  std::error_code error;
  if (fs::exists(input, error)) return input.size();
  std::size_t colon = input.size();
  while (colon > 0 && (colon = input.rfind(':', colon - 1)) < input.size()) {
    if (IsRegular(input.substr(0, colon))) return colon;
  }
  return input.size();
}

struct Found {
  std::string name;
  bool isNTuple;
};

/// Add the trees of a folder of the file and of the folders in it.
void FindTrees(TDirectory& folder, const std::string& prefix,
               std::vector<Found>& trees) {
  for (TObject* const item : *folder.GetListOfKeys()) {
    auto& key = static_cast<TKey&>(*item);
    const std::string_view kind = key.GetClassName();
    const std::string name = prefix + key.GetName();
    if (kind == "TDirectoryFile") {
      auto* const inner = folder.GetDirectory(key.GetName());
      if (inner != nullptr) FindTrees(*inner, name + "/", trees);
      continue;
    }
    const bool isNTuple = kind == "ROOT::RNTuple";
    if (!isNTuple && kind != "TTree" && kind != "TNtuple" &&
        kind != "TNtupleD") {
      continue;
    }
    // A key for each cycle, that is for each time the tree was saved.
    const bool isKnown =
        std::any_of(trees.begin(), trees.end(),
                    [&](const Found& tree) { return tree.name == name; });
    if (!isKnown) trees.push_back({name, isNTuple});
  }
}

std::vector<std::string> NamesOf(const std::vector<Found>& trees) {
  std::vector<std::string> names;
  names.reserve(trees.size());
  for (const Found& tree : trees) names.push_back(Printable(tree.name));
  return names;
}

std::string List(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    text += (text.empty() ? "" : ", ") + name;
  }
  return text;
}

/// The tree with this name, or the only one.
Found Choose(const std::vector<Found>& trees, const std::string& file,
             const std::optional<std::string>& wanted) {
  if (trees.empty()) {
    throw BadInput(file + ": there is no TTree and no RNTuple in the file");
  }
  const std::vector<std::string> names = NamesOf(trees);
  if (!wanted.has_value()) {
    if (trees.size() == 1) return trees.front();
    throw BadInput(file + ": which tree? Name one as in " + file + ":" +
                   names.front() + "; there are " + List(names));
  }
  const auto found =
      std::find_if(trees.begin(), trees.end(),
                   [&](const Found& tree) { return tree.name == *wanted; });
  if (found != trees.end()) return *found;
  throw BadInput(file + ": there is no tree " + Quoted(*wanted) +
                 (names.size() == 1 ? "; there is " : "; there are ") +
                 List(names));
}

std::unique_ptr<TFile> Open(const InputFile& input) {
  const TDirectory::TContext folder;  // restores the current one
  // In a name, ROOT gives #, ? and $ a meaning.
  const std::string name =
      "/proc/self/fd/" + std::to_string(input.Descriptor());
  auto file = std::make_unique<TFile>(name.c_str(), "READ");
  if (file->IsZombie() || file->TestBit(TFile::kRecovered)) return nullptr;
  return file;
}

}  // namespace

bool IsRootInput(const std::string& input) {
  return input != "-" && StartsAsRootFile(FileOfInput(input));
}

std::string FileOfInput(const std::string& input) {
  return input.substr(0, LengthOfFile(input));
}

RootFile::RootFile(const std::string& input) : input_(FileOfInput(input)) {
  const std::string file = FileOfInput(input);
  std::optional<std::string> wanted;
  if (file.size() < input.size()) wanted = input.substr(file.size() + 1);
  const RootErrors errors;
  file_ = Open(input_);
  if (file_ == nullptr) {
    throw BadInput(file + ": the ROOT file is damaged or cut short");
  }
  std::vector<Found> trees;
  FindTrees(*file_, "", trees);
  const Found tree = Choose(trees, file, wanted);
  tree_ = tree.name;
  isNTuple_ = tree.isNTuple;
  name_ = file + ": tree " + Quoted(tree_);
}

RootFile::~RootFile() = default;

}  // namespace ZARN::IO
