#include <endian.h>

#include <TBranch.h>
#include <TBufferFile.h>
#include <TClass.h>
#include <TDataType.h>
#include <TFile.h>
#include <TLeaf.h>
#include <TLeafC.h>
#include <TLeafElement.h>
#include <TROOT.h>
#include <TTree.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

#include "io/RootColumns.hpp"
#include "io/RootErrors.hpp"
#include "io/RootFile.hpp"

namespace ZARN::IO {
namespace {

/// Call a function with a value of the type that stands for one of ROOT's
/// numbers on disk; false for types that are no numbers.
template <class Use>
bool UseNumber(EDataType type, const Use& use) {
  switch (type) {
    case kDouble_t:
      return use(double{}), true;
    case kFloat_t:
      return use(float{}), true;
    case kChar_t:
      return use(std::int8_t{}), true;
    case kUChar_t:
      return use(std::uint8_t{}), true;
    case kShort_t:
      return use(std::int16_t{}), true;
    case kUShort_t:
      return use(std::uint16_t{}), true;
    case kInt_t:
      return use(std::int32_t{}), true;
    case kUInt_t:
      return use(std::uint32_t{}), true;
    case kLong_t:
    case kLong64_t:
      return use(std::int64_t{}), true;
    case kULong_t:
    case kULong64_t:
      return use(std::uint64_t{}), true;
    default:
      return false;
  }
}

/// A number as it is stored in a basket.
template <class Number>
Number FromBigEndian(const char* bytes) {
  Number number;
  if constexpr (sizeof number == 8) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, bytes, sizeof bits);
    bits = be64toh(bits);
    std::memcpy(&number, &bits, sizeof bits);
  } else if constexpr (sizeof number == 4) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, bytes, sizeof bits);
    bits = be32toh(bits);
    std::memcpy(&number, &bits, sizeof bits);
  } else if constexpr (sizeof number == 2) {
    std::uint16_t bits = 0;
    std::memcpy(&bits, bytes, sizeof bits);
    number = static_cast<Number>(be16toh(bits));
  } else {
    std::memcpy(&number, bytes, sizeof number);
  }
  return number;
}

/// The type of a leaf; kOther_t for objects.
EDataType TypeOf(TLeaf& leaf) {
  if (dynamic_cast<TLeafElement*>(&leaf) == nullptr) {
    const TDataType* const type = gROOT->GetType(leaf.GetTypeName());
    return type == nullptr ? kOther_t : static_cast<EDataType>(type->GetType());
  }
  TClass* itsClass = nullptr;
  EDataType type = kOther_t;
  leaf.GetBranch()->GetExpectedType(itsClass, type);
  return itsClass == nullptr ? type : kOther_t;
}

/// What a leaf holds, in ROOT's words.
std::string TypeNameOf(TLeaf& leaf) {
  std::string name = leaf.GetTypeName();
  if (name.empty()) name = leaf.GetBranch()->GetClassName();
  if (leaf.GetLeafCount() != nullptr) return name + "[]";
  const int length = leaf.GetLenStatic();
  return length == 1 ? name : name + "[" + std::to_string(length) + "]";
}

eRootValue ValueOf(TLeaf& leaf) {
  if (dynamic_cast<TLeafC*>(&leaf) != nullptr) return eRootValue::kText;
  if (leaf.GetLeafCount() != nullptr || leaf.GetLenStatic() != 1) {
    return eRootValue::kOther;
  }
  TBranch* const branch = leaf.GetBranch();
  if (std::string_view(branch->GetClassName()) == "string") {
    return branch->GetMother() == branch ? eRootValue::kText
                                         : eRootValue::kOther;
  }
  const EDataType type = TypeOf(leaf);
  // On disk these two may have fewer bits; only ROOT knows how many.
  if (type == kDouble32_t || type == kFloat16_t) return eRootValue::kNumber;
  eRootValue value = eRootValue::kOther;
  UseNumber(type, [&value](auto number) {
    value = std::is_integral_v<decltype(number)> ? eRootValue::kInteger
                                                 : eRootValue::kNumber;
  });
  return value;
}

/// The name of its branch, followed by its own if the branch has several.
std::string NameOf(TLeaf& leaf) {
  TBranch& branch = *leaf.GetBranch();
  std::string name = branch.GetFullName().Data();
  // A branch of an object may be called "event." so that those in it are
  // called "event.x".
  if (!name.empty() && name.back() == '.') name.pop_back();
  if (branch.GetNleaves() == 1) return name;
  return name + "." + leaf.GetName();
}

/// Reads one leaf: basket by basket where ROOT offers it, else value by value.
class TreeColumn {
 public:
  TreeColumn(TLeaf& leaf, eRootValue type)
      : leaf_(&leaf),
        branch_(leaf.GetBranch()),
        type_(TypeOf(leaf)),
        isInBulk_(type != eRootValue::kText && type_ != kDouble32_t &&
                  type_ != kFloat16_t &&
                  branch_->GetBulkRead().SupportsBulkRead()) {
    if (type == eRootValue::kText && dynamic_cast<TLeafC*>(leaf_) == nullptr) {
      text_ = std::make_unique<std::string>();
      target_ = std::make_unique<std::string*>(text_.get());
    }
  }
  TreeColumn(const TreeColumn&) = delete;
  TreeColumn& operator=(const TreeColumn&) = delete;
  ~TreeColumn() {
    if (text_ != nullptr) branch_->ResetAddress();
  }

  template <class Value>
  void Read(std::uint64_t first, std::size_t count, Value* values) {
    const RootErrors errors;
    if (!isInBulk_) {
      for (std::size_t i = 0; i < count; ++i) {
        Load(first + i, errors);
        Get(first + i, values[i]);
      }
      return;
    }
    const std::uint64_t stop = first + count;
    while (first < stop) {
      ReadBasketOf(first, errors);
      const auto size = static_cast<std::size_t>(std::min(stop, end_) - first);
      UseNumber(type_, [&](auto number) {
        Convert<decltype(number)>(first, size, values);
      });
      values += size;
      first += size;
    }
  }

  void Read(std::uint64_t first, std::size_t count, std::string* values) {
    // Another column may have read the same branch meanwhile.
    if (text_ != nullptr) {
      branch_->SetAddress(static_cast<void*>(target_.get()));
    }
    const RootErrors errors;
    for (std::size_t i = 0; i < count; ++i) {
      Load(first + i, errors);
      values[i] = text_ != nullptr
                      ? *text_
                      : static_cast<const char*>(leaf_->GetValuePointer());
    }
  }

 private:
  /// Bring the basket with an entry into the buffer.
  void ReadBasketOf(std::uint64_t entry, const RootErrors& errors) {
    if (begin_ <= entry && entry < end_) return;
    // ROOT reads whole baskets.
    const Long64_t* const starts = branch_->GetBasketEntry();
    const Long64_t* const next =
        std::upper_bound(starts, starts + branch_->GetWriteBasket() + 1,
                         static_cast<Long64_t>(entry));
    const Long64_t begin = next == starts ? 0 : next[-1];
    begin_ = end_ = 0;
    const Int_t count =
        branch_->GetBulkRead().GetEntriesSerialized(begin, buffer_);
    if (count <= 0 || begin + count <= static_cast<Long64_t>(entry)) {
      throw RootReadError(entry,
                          errors.FirstOr("its basket is missing or damaged"));
    }
    begin_ = static_cast<std::uint64_t>(begin);
    end_ = begin_ + static_cast<std::uint64_t>(count);
  }

  template <class Stored, class Value>
  void Convert(std::uint64_t first, std::size_t count, Value* values) const {
    const char* const at =
        buffer_.GetCurrent() + (first - begin_) * sizeof(Stored);
    for (std::size_t i = 0; i < count; ++i) {
      const auto stored = FromBigEndian<Stored>(at + i * sizeof(Stored));
      CheckRange<Value>(first + i, stored);
      // A signed char is a number here, not a character.
      // NOLINTNEXTLINE(bugprone-signed-char-misuse)
      values[i] = static_cast<Value>(stored);
    }
  }

  template <class Value, class Stored>
  static void CheckRange(std::uint64_t entry, Stored stored) {
    if constexpr (std::is_same_v<Value, std::int64_t> &&
                  std::is_same_v<Stored, std::uint64_t>) {
      constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
      if (stored <= static_cast<std::uint64_t>(kMost)) return;
      throw RootReadError(entry, std::to_string(stored) + " is too large");
    }
  }

  void Load(std::uint64_t entry, const RootErrors& errors) {
    if (branch_->GetEntry(static_cast<Long64_t>(entry), 1) > 0) return;
    throw RootReadError(entry,
                        errors.FirstOr("its basket is missing or damaged"));
  }

  /// The value in an entry that was loaded.
  void Get(std::uint64_t /*entry*/, double& value) {
    value = leaf_->GetValue();
  }

  void Get(std::uint64_t entry, std::int64_t& value) {
    value = leaf_->GetValueLong64();
    if (type_ == kULong_t || type_ == kULong64_t) {
      CheckRange<std::int64_t>(entry, static_cast<std::uint64_t>(value));
    }
  }

  TLeaf* leaf_;
  TBranch* branch_;
  EDataType type_;
  bool isInBulk_;
  TBufferFile buffer_{TBuffer::kWrite, 32 * 1024};  // one basket
  std::uint64_t begin_ = 0;                         // the entries in it
  std::uint64_t end_ = 0;
  std::unique_ptr<std::string> text_;     // where ROOT puts a std::string,
  std::unique_ptr<std::string*> target_;  // which it finds here
};

class TreeColumns : public RootColumns {
 public:
  explicit TreeColumns(RootFile& file)
      : tree_(file.File().Get<TTree>(file.Tree().c_str())) {
    if (tree_ == nullptr) throw RootReadError(0, "its header is damaged");
    entries_ = static_cast<std::uint64_t>(tree_->GetEntries());
    auto clusters = tree_->GetClusterIterator(0);
    for (Long64_t start = clusters(); start < tree_->GetEntries();
         start = clusters()) {
      starts_.push_back(static_cast<std::uint64_t>(start));
    }
    for (TObject* const item : *tree_->GetListOfLeaves()) {
      auto& leaf = static_cast<TLeaf&>(*item);
      leaves_.push_back(&leaf);
      columns_.push_back({NameOf(leaf), ValueOf(leaf), TypeNameOf(leaf)});
    }
  }

  void Select(const std::vector<std::size_t>& columns,
              const std::vector<eRootValue>& types) override {
    selected_.clear();
    for (std::size_t i = 0; i < columns.size(); ++i) {
      selected_.push_back(
          std::make_unique<TreeColumn>(*leaves_[columns[i]], types[i]));
    }
  }

  void Read(std::size_t column, std::uint64_t first, std::size_t count,
            double* values) override {
    selected_[column]->Read(first, count, values);
  }
  void Read(std::size_t column, std::uint64_t first, std::size_t count,
            std::int64_t* values) override {
    selected_[column]->Read(first, count, values);
  }
  void Read(std::size_t column, std::uint64_t first, std::size_t count,
            std::string* values) override {
    selected_[column]->Read(first, count, values);
  }

 private:
  TTree* tree_;  // of the file
  std::vector<TLeaf*> leaves_;
  std::vector<std::unique_ptr<TreeColumn>> selected_;
};

}  // namespace

std::unique_ptr<RootColumns> MakeTreeColumns(RootFile& file) {
  return std::make_unique<TreeColumns>(file);
}

}  // namespace ZARN::IO
