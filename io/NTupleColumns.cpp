#include <TFile.h>

#include <ROOT/RError.hxx>
#include <ROOT/RField.hxx>
#include <ROOT/RNTuple.hxx>
#include <ROOT/RNTupleModel.hxx>
#include <ROOT/RNTupleReader.hxx>
#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <variant>

#include "io/RootColumns.hpp"
#include "io/RootFile.hpp"

namespace ZARN::IO {
namespace {

std::string ReasonOf(const ROOT::RException& error) {
  // The lines after the first say where in ROOT the error occurred.
  const std::string report = error.GetError().GetReport();
  return report.substr(0, report.find('\n'));
}

eRootValue ValueOf(const std::string& type) {
  static const std::set<std::string> kIntegers = {
      "std::int8_t",  "std::int16_t",  "std::int32_t",  "std::int64_t",
      "std::uint8_t", "std::uint16_t", "std::uint32_t", "std::uint64_t"};
  if (type == "double" || type == "float") return eRootValue::kNumber;
  if (type == "std::string") return eRootValue::kText;
  return kIntegers.count(type) > 0 ? eRootValue::kInteger : eRootValue::kOther;
}

/// The type in which values are read: their own, where numbers are wanted,
/// which is faster than letting ROOT convert them.
enum class eFieldType { kDouble, kFloat, kInteger, kText };

eFieldType FieldTypeOf(const RootColumn& column) {
  if (column.value == eRootValue::kText) return eFieldType::kText;
  if (column.value == eRootValue::kInteger) return eFieldType::kInteger;
  return column.type == "float" ? eFieldType::kFloat : eFieldType::kDouble;
}

/// Reads one field. Values of a field of its own are read in bulk. Text and
/// fields inside others are read value by value, which ROOT offers for them.
class NTupleColumn {
 public:
  using Bulk = ROOT::RFieldBase::RBulkValues;
  template <class Value>
  using View = ROOT::RNTupleView<Value>;

  template <class Reader>
  NTupleColumn(Reader reader, eFieldType type)
      : reader_(std::move(reader)), type_(type) {}

  /// Read entries of one cluster.
  void Read(ROOT::RNTupleLocalIndex begin, std::uint64_t first,
            std::size_t count, double* values) {
    if (type_ == eFieldType::kFloat) {
      ReadAndConvert(begin, first, count, floats_, values);
    } else if (type_ == eFieldType::kInteger) {
      ReadAndConvert(begin, first, count, integers_, values);
    } else {
      ReadAs<double>(begin, first, count, values);
    }
  }
  void Read(ROOT::RNTupleLocalIndex begin, std::uint64_t first,
            std::size_t count, std::int64_t* values) {
    ReadAs<std::int64_t>(begin, first, count, values);
  }
  void Read(ROOT::RNTupleLocalIndex /*begin*/, std::uint64_t first,
            std::size_t count, std::string* values) {
    auto& view = std::get<View<std::string>>(reader_);
    for (std::size_t i = 0; i < count; ++i) values[i] = view(first + i);
  }

 private:
  template <class Value>
  void ReadAndConvert(ROOT::RNTupleLocalIndex begin, std::uint64_t first,
                      std::size_t count, std::vector<Value>& buffer,
                      double* values) {
    buffer.resize(count);
    ReadAs<Value>(begin, first, count, buffer.data());
    std::transform(buffer.begin(), buffer.end(), values,
                   [](Value value) { return static_cast<double>(value); });
  }

  template <class Value>
  void ReadAs(ROOT::RNTupleLocalIndex begin, std::uint64_t first,
              std::size_t count, Value* values) {
    if (auto* const bulk = std::get_if<Bulk>(&reader_)) {
      bulk->AdoptBuffer(values, count);
      bulk->ReadBulk(begin, nullptr, count);
      return;
    }
    auto& view = std::get<View<Value>>(reader_);
    for (std::size_t i = 0; i < count; ++i) values[i] = view(first + i);
  }

  std::variant<Bulk, View<double>, View<float>, View<std::int64_t>,
               View<std::string>>
      reader_;
  eFieldType type_;
  std::vector<float> floats_;
  std::vector<std::int64_t> integers_;
};

class NTupleColumns : public RootColumns {
 public:
  explicit NTupleColumns(RootFile& file) {
    anchor_.reset(file.File().Get<ROOT::RNTuple>(file.Tree().c_str()));
    if (anchor_ == nullptr) throw RootReadError(0, "its header is damaged");
    // Several files, or parts of one, may be read at once by their callers.
    options_.SetUseImplicitMT(ROOT::RNTupleReadOptions::EImplicitMT::kOff);
    Reading(0, [&] { Describe(); });
  }

  void Select(const std::vector<std::size_t>& columns,
              const std::vector<eRootValue>& types) override {
    selected_.clear();
    Reading(0, [&] { SelectNow(columns, types); });
  }

  void Read(std::size_t column, std::uint64_t first, std::size_t count,
            double* values) override {
    ReadClusters(column, first, count, values);
  }
  void Read(std::size_t column, std::uint64_t first, std::size_t count,
            std::int64_t* values) override {
    ReadClusters(column, first, count, values);
  }
  void Read(std::size_t column, std::uint64_t first, std::size_t count,
            std::string* values) override {
    ReadClusters(column, first, count, values);
  }

 private:
  template <class Work>
  static void Reading(std::uint64_t entry, const Work& work) {
    try {
      work();
    } catch (const ROOT::RException& error) {
      throw RootReadError(entry, ReasonOf(error));
    }
  }

  void Describe() {
    reader_ = ROOT::RNTupleReader::Open(*anchor_, options_);
    const ROOT::RNTupleDescriptor& descriptor = reader_->GetDescriptor();
    entries_ = reader_->GetNEntries();
    std::map<std::uint64_t, ROOT::DescriptorId_t> clusters;
    for (const auto& cluster : descriptor.GetClusterIterable()) {
      clusters[cluster.GetFirstEntryIndex()] = cluster.GetId();
    }
    for (const auto& [start, cluster] : clusters) {
      starts_.push_back(start);
      clusters_.push_back(cluster);
    }
    AddFields(descriptor, descriptor.GetFieldZeroId(), "");
  }

  void AddFields(const ROOT::RNTupleDescriptor& descriptor,
                 ROOT::DescriptorId_t parent, const std::string& prefix) {
    for (const auto& field : descriptor.GetFieldIterable(parent)) {
      const std::string name = prefix + field.GetFieldName();
      const std::string& type = field.GetTypeName();
      columns_.push_back({name, ValueOf(type), type.empty() ? "record" : type});
      if (field.GetStructure() == ROOT::ENTupleStructure::kRecord) {
        AddFields(descriptor, field.GetId(), name + ".");
      }
    }
  }

  void SelectNow(const std::vector<std::size_t>& columns,
                 const std::vector<eRootValue>& types) {
    const auto isInBulk = [&](std::size_t i) {
      return types[i] != eRootValue::kText &&
             columns_[columns[i]].name.find('.') == std::string::npos;
    };
    auto model = ROOT::RNTupleModel::CreateBare();
    std::set<std::string> added;
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const RootColumn& column = columns_[columns[i]];
      if (!isInBulk(i) || !added.insert(column.name).second) continue;
      switch (FieldTypeOf(column)) {
        case eFieldType::kFloat:
          model->MakeField<float>(column.name);
          break;
        case eFieldType::kInteger:
          model->MakeField<std::int64_t>(column.name);
          break;
        default:
          model->MakeField<double>(column.name);
      }
    }
    bulkReader_ =
        ROOT::RNTupleReader::Open(std::move(model), *anchor_, options_);
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const RootColumn& column = columns_[columns[i]];
      if (isInBulk(i)) {
        selected_.emplace_back(bulkReader_->GetModel().CreateBulk(column.name),
                               FieldTypeOf(column));
      } else {
        SelectView(column, types[i]);
      }
    }
  }

  void SelectView(const RootColumn& column, eRootValue as) {
    const eFieldType type =
        as == eRootValue::kText ? eFieldType::kText : FieldTypeOf(column);
    const auto add = [&](auto view) {
      selected_.emplace_back(std::move(view), type);
    };
    switch (type) {
      case eFieldType::kText:
        return add(reader_->GetView<std::string>(column.name));
      case eFieldType::kInteger:
        return add(reader_->GetView<std::int64_t>(column.name));
      case eFieldType::kFloat:
        return add(reader_->GetView<float>(column.name));
      case eFieldType::kDouble:
        return add(reader_->GetView<double>(column.name));
    }
  }

  template <class Value>
  void ReadClusters(std::size_t column, std::uint64_t first, std::size_t count,
                    Value* values) {
    const std::uint64_t end = first + count;
    while (first < end) {
      const auto next = std::upper_bound(starts_.begin(), starts_.end(), first);
      const auto cluster = static_cast<std::size_t>(next - starts_.begin()) - 1;
      const std::uint64_t stop =
          next == starts_.end() ? end : std::min(end, *next);
      const auto size = static_cast<std::size_t>(stop - first);
      Reading(first, [&] {
        selected_[column].Read({clusters_[cluster], first - starts_[cluster]},
                               first, size, values);
      });
      values += size;
      first = stop;
    }
  }

  std::unique_ptr<ROOT::RNTuple> anchor_;
  ROOT::RNTupleReadOptions options_;
  std::unique_ptr<ROOT::RNTupleReader> reader_;      // of views
  std::unique_ptr<ROOT::RNTupleReader> bulkReader_;  // of bulks
  std::vector<ROOT::DescriptorId_t> clusters_;
  std::vector<NTupleColumn> selected_;
};

}  // namespace

std::unique_ptr<RootColumns> MakeNTupleColumns(RootFile& file) {
  return std::make_unique<NTupleColumns>(file);
}

}  // namespace ZARN::IO
