#include "db/JsonTree.hpp"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string_view>

#include "db/DBErrors.hpp"

namespace ZARN::Json {
namespace {

/// Where in the text the parser is.
struct ReadingPlace {
  /// The last character read, except that a newline is counted when the
  /// character after it is read. The parser reads one character past a number
  /// to find its end; the number must not move to the next line because of
  /// that.
  TextPlace last = {1, 0};
  /// Where the last key or value begins.
  TextPlace token = {1, 1};
};

/// Feeds the text to the parser and follows its place in it. The parser copies
/// its iterators, so the place is stored outside.
class PlacingIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  PlacingIterator(const char* at, ReadingPlace* place)
      : at_(at), place_(place) {}

  reference operator*() const { return *at_; }
  PlacingIterator& operator++() {
    if (previousWasNewline_) {
      ++place_->last.line;
      place_->last.column = 0;
    }
    previousWasNewline_ = *at_ == '\n';
    ++place_->last.column;
    if (BeginsToken(*at_)) place_->token = place_->last;
    ++at_;
    return *this;
  }
  bool operator==(const PlacingIterator& other) const {
    return at_ == other.at_;
  }
  bool operator!=(const PlacingIterator& other) const {
    return at_ != other.at_;
  }

 private:
  /// What the next character may belong to.
  enum class eInside { kNothing, kString, kEscape, kWord };

  /// Whether a key or value begins with this character. Where it does not
  /// matter, text that is not JSON may give any answer.
  bool BeginsToken(char c) {
    switch (inside_) {
      case eInside::kEscape:
        inside_ = eInside::kString;
        return false;
      case eInside::kString:
        if (c == '\\') inside_ = eInside::kEscape;
        if (c == '"') inside_ = eInside::kNothing;
        return false;
      case eInside::kWord:  // a number, true, false or null
      case eInside::kNothing:
        break;
    }
    if (std::string_view(" \t\r\n,:]}").find(c) != std::string_view::npos) {
      inside_ = eInside::kNothing;
      return false;
    }
    if (c == '[' || c == '{') return true;
    if (c == '"') {
      inside_ = eInside::kString;
      return true;
    }
    const bool begins = inside_ == eInside::kNothing;
    inside_ = eInside::kWord;
    return begins;
  }

  const char* at_;
  ReadingPlace* place_;
  bool previousWasNewline_ = false;
  eInside inside_ = eInside::kNothing;
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

  TreeBuilder(const std::string& name, const ReadingPlace* place)
      : name_(name), place_(place) {}

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
        Refuse(name_, place_->last.line, object.path,
               "the key \"" + name + "\" is given twice");
      }
    }
    object.members.emplace_back(name, Node{}).second.keyPlace = place_->token;
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
    Refuse(name_, place_->last.line, PathOfNext(), reason);
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
    node->place = place_->token;
    node->path = std::move(path);
    return *node;
  }

  bool Open(Node::eKind kind) {
    Node& node = Place(kind);
    if (open_.size() == kMaxDepth) {
      Refuse(name_, place_->last.line, node.path,
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
  const ReadingPlace* place_;
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
  ReadingPlace place;
  TreeBuilder builder(name, &place);
  const char* const begin = text.data();
  nlohmann::json::sax_parse(PlacingIterator(begin, &place),
                            PlacingIterator(begin + text.size(), &place),
                            &builder);
  return builder.TakeTree();
}

}  // namespace ZARN::Json
