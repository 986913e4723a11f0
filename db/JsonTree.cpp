#include "db/JsonTree.hpp"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <nlohmann/json.hpp>

#include "db/DBErrors.hpp"

namespace ZARN::Json {
namespace {

/// Feeds the text to the parser and counts its lines. The parser copies its
/// iterators, so the count is stored outside.
class LineCountingIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  LineCountingIterator(const char* at, int* line) : at_(at), line_(line) {}

  reference operator*() const { return *at_; }
  /// A newline is counted when the character after it is read. The parser reads
  /// one character past a number to find its end; the number must not move to
  /// the next line because of that.
  LineCountingIterator& operator++() {
    if (previousWasNewline_) ++*line_;
    previousWasNewline_ = *at_ == '\n';
    ++at_;
    return *this;
  }
  bool operator==(const LineCountingIterator& other) const {
    return at_ == other.at_;
  }
  bool operator!=(const LineCountingIterator& other) const {
    return at_ != other.at_;
  }

 private:
  const char* at_;
  int* line_;
  bool previousWasNewline_ = false;
};

/// A member in a JSON path: .name, or ["a name"] if the name has other than
/// letters, digits, _ and -.
std::string MemberStep(const std::string& name) {
  const bool plain =
      !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               (c >= '0' && c <= '9') || c == '_' || c == '-';
      });
  return plain ? "." + name : "[\"" + name + "\"]";
}

/// Builds the tree from the parser's events.
class TreeBuilder {
 public:
  using number_integer_t = nlohmann::json::number_integer_t;
  using number_unsigned_t = nlohmann::json::number_unsigned_t;
  using number_float_t = nlohmann::json::number_float_t;
  using string_t = nlohmann::json::string_t;
  using binary_t = nlohmann::json::binary_t;

  TreeBuilder(const std::string& name, const int* line)
      : name_(name), line_(line) {}

  Node TakeTree() { return std::move(root_); }

  bool null() {
    Place(Node::eKind::kNull);
    return true;
  }
  bool boolean(bool /*value*/) {
    Place(Node::eKind::kBoolean);
    return true;
  }
  bool number_integer(number_integer_t value) {
    Node& node = Place(Node::eKind::kNumber);
    node.number = static_cast<double>(value);
    node.integer = value;
    return true;
  }
  bool number_unsigned(number_unsigned_t value) {
    Node& node = Place(Node::eKind::kNumber);
    node.number = static_cast<double>(value);
    // Larger values get no integer; no field here needs one.
    if (value <=
        static_cast<number_unsigned_t>(std::numeric_limits<long long>::max())) {
      node.integer = static_cast<long long>(value);
    }
    return true;
  }
  bool number_float(number_float_t value, const string_t& /*text*/) {
    Place(Node::eKind::kNumber).number = value;
    return true;
  }
  bool string(string_t& value) {
    Place(Node::eKind::kString).text = value;
    return true;
  }
  static bool binary(binary_t& /*value*/) { return false; }  // not in JSON text

  bool start_array(std::size_t /*size*/) { return Open(Node::eKind::kArray); }
  bool end_array() { return Close(); }
  bool start_object(std::size_t /*size*/) { return Open(Node::eKind::kObject); }
  bool end_object() { return Close(); }

  bool key(string_t& name) {
    Node& object = *open_.back();
    for (const auto& member : object.members) {
      if (member.first == name) {
        Refuse(name_, *line_, object.path,
               "the key \"" + name + "\" is given twice");
      }
    }
    object.members.emplace_back(name, Node{});
    return true;
  }

  bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                   const nlohmann::json::exception& error) {
    // The library's text starts with its own name in brackets and, for a syntax
    // error, the place, which our message already has.
    std::string reason = error.what();
    reason.erase(0, reason.find("] ") + 2);
    if (reason.rfind("parse error at line ", 0) == 0) {
      reason.erase(0, reason.find(": ") + 2);
    }
    Refuse(name_, *line_, PathOfNext(), reason);
  }

 private:
  /// Tables need four levels: array of entries, entry, fields, array of
  /// numbers. The limit rejects deep nesting before it uses much memory.
  static constexpr std::size_t kMaxDepth = 8;

  /// The path of the next value, or of the object whose key comes next.
  std::string PathOfNext() const {
    if (open_.empty()) return "$";
    const Node& parent = *open_.back();
    if (parent.kind == Node::eKind::kArray) {
      return parent.path + "[" + std::to_string(parent.items.size()) + "]";
    }
    const bool waitsForValue =
        !parent.members.empty() && parent.members.back().second.path.empty();
    return waitsForValue ? parent.path + MemberStep(parent.members.back().first)
                         : parent.path;
  }

  Node& Place(Node::eKind kind) {
    std::string path = PathOfNext();
    Node* node = &root_;
    if (!open_.empty()) {
      Node& parent = *open_.back();
      node = parent.kind == Node::eKind::kArray ? &parent.items.emplace_back()
                                                : &parent.members.back().second;
    }
    node->kind = kind;
    node->line = *line_;
    node->path = std::move(path);
    return *node;
  }

  bool Open(Node::eKind kind) {
    Node& node = Place(kind);
    if (open_.size() == kMaxDepth) {
      Refuse(name_, *line_, node.path,
             "nesting too deep (limit " + std::to_string(kMaxDepth) + ")");
    }
    open_.push_back(&node);
    return true;
  }

  bool Close() {
    open_.pop_back();
    return true;
  }

  const std::string& name_;
  const int* line_;
  Node root_;
  // A parent gets no new child while a child is open, so pointers stay valid.
  std::vector<Node*> open_;
};

}  // namespace

void Refuse(const std::string& name, int line, const std::string& path,
            const std::string& reason) {
  throw TableFileError(name + ":" + std::to_string(line) + ": " + path + ": " +
                       reason);
}

Node ParseTree(const std::string& text, const std::string& name) {
  int line = 1;
  TreeBuilder builder(name, &line);
  const char* const begin = text.data();
  nlohmann::json::sax_parse(LineCountingIterator(begin, &line),
                            LineCountingIterator(begin + text.size(), &line),
                            &builder);
  return builder.TakeTree();
}

}  // namespace ZARN::Json
