#include "io/VerdictNTuple.hpp"

#include <TError.h>
#include <ROOT/RError.hxx>
#include <ROOT/RNTupleFillContext.hxx>
#include <ROOT/RNTupleModel.hxx>
#include <ROOT/RNTupleParallelWriter.hxx>
#include <ROOT/RNTupleWriteOptions.hxx>
#include <ROOT/RRawPtrWriteEntry.hxx>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

#include "io/Errors.hpp"
#include "io/FileNames.hpp"
#include "io/IntegerName.hpp"
#include "io/VerdictText.hpp"

namespace ZARN::IO {
namespace {

/// Turn ROOT's exceptions into OutputFailure.
template <class Work>
void Writing(const std::string& name, const Work& work) {
  try {
    work();
  } catch (const ROOT::RException& error) {
    // The lines after the first say where in ROOT the error occurred.
    const std::string report = error.GetError().GetReport();
    throw OutputFailure(
        name + ": cannot be written: " + report.substr(0, report.find('\n')));
  }
}

const std::string& Replaceable(const std::string& path) {
  if (CanReplace(path)) return path;
  throw OutputFailure(
      path + ": cannot be written: ROOT output requires a regular file");
}

/// The integers of all names; empty if one is not an integer.
std::vector<std::int64_t> IntegersOf(const std::vector<NamedPosition>& items) {
  std::vector<std::int64_t> integers;
  for (const NamedPosition& item : items) {
    const std::optional<std::int64_t> integer = IntegerOf(item.name);
    if (!integer.has_value()) return {};
    integers.push_back(*integer);
  }
  return integers;
}

/// The texts of the fields type and by, by their numbers.
struct Texts {
  std::array<std::string, DU::kNumberOfLightPathTypes> types;
  std::array<std::string, DU::kNumberOfComponents + 1> components;
  std::string noPath = kNoPath;

  Texts() {
    // The type of a path that does not exist stays empty.
    for (std::size_t type = 1; type < types.size(); ++type) {
      types[type] = DU::kLightPathTypeNames[type];
    }
    for (const auto component : DU::kShadowingComponents) {
      components[static_cast<std::size_t>(component)] = DU::NameOf(component);
    }
  }
};

const Texts& AllTexts() {
  static const Texts texts;
  return texts;
}

}  // namespace

/// The fields point to their values, so that a row is not copied before it is
/// written.
struct VerdictNTuple::Block::Entry {
  std::shared_ptr<ROOT::RNTupleFillContext> context;
  std::unique_ptr<ROOT::Detail::RRawPtrWriteEntry> row;
  ROOT::RFieldToken event, pmt, type, shadowed, by;
  std::vector<ROOT::RFieldToken> columns;

  std::int64_t eventInteger = 0;
  std::int32_t shadowedValue = 0;
  std::vector<double> values;             // of the columns
  std::vector<std::int32_t> wholeValues;  // of those that are whole
};

VerdictNTuple::Block::Block(const VerdictNTuple& owner)
    : owner_(owner), entry_(std::make_unique<Entry>()) {
  Entry& entry = *entry_;
  entry.context = owner_.writer_->CreateFillContext();
  entry.context->EnableStagedClusterCommitting();
  entry.row = entry.context->CreateRawPtrWriteEntry();
  entry.event = entry.row->GetToken("event");
  entry.pmt = entry.row->GetToken("pmt");
  entry.type = entry.row->GetToken("type");
  entry.shadowed = entry.row->GetToken("shadowed");
  entry.by = entry.row->GetToken("by");
  entry.row->BindRawPtr(entry.shadowed, &entry.shadowedValue);
  const std::vector<const PairColumn*>& columns = owner_.fields_.columns;
  entry.values.resize(columns.size());
  entry.wholeValues.resize(columns.size());
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const ROOT::RFieldToken token = entry.row->GetToken(columns[i]->name);
    if (columns[i]->isWhole) {
      entry.row->BindRawPtr(token, &entry.wholeValues[i]);
    } else {
      entry.row->BindRawPtr(token, &entry.values[i]);
    }
  }
}

VerdictNTuple::Block::~Block() = default;

void VerdictNTuple::Block::SetEvent(const NamedPosition& event) {
  if (owner_.fields_.hasIntegerEvents) {
    entry_->eventInteger = IntegerOf(event.name).value();
    entry_->row->BindRawPtr(entry_->event, &entry_->eventInteger);
  } else {
    entry_->row->BindRawPtr(entry_->event, &event.name);
  }
}

void VerdictNTuple::Block::Fill(std::size_t pmt, DU::eLightPathType type,
                                const JudgedPair& pair) {
  Entry& entry = *entry_;
  if (owner_.pmtIntegers_.empty()) {
    entry.row->BindRawPtr(entry.pmt, &owner_.pmts_[pmt].name);
  } else {
    entry.row->BindRawPtr(entry.pmt, &owner_.pmtIntegers_[pmt]);
  }
  const Texts& texts = AllTexts();
  if (DU::HasPath(pair.verdict)) {
    const auto by = static_cast<std::size_t>(DU::ComponentOf(pair.verdict));
    entry.row->BindRawPtr(entry.type, &texts.types[type]);
    entry.row->BindRawPtr(entry.by, &texts.components[by]);
    entry.shadowedValue = DU::IsShadowed(pair.verdict) ? 1 : 0;
  } else {
    entry.row->BindRawPtr(entry.type, &texts.types[DU::kUninitialised]);
    entry.row->BindRawPtr(entry.by, &texts.noPath);
    entry.shadowedValue = -1;
  }
  const std::vector<const PairColumn*>& columns = owner_.fields_.columns;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const std::optional<double> value = columns[i]->value(pair);
    if (columns[i]->isWhole) {
      entry.wholeValues[i] = static_cast<std::int32_t>(value.value());
    } else {
      entry.values[i] = value.value_or(std::nan(""));
    }
  }
  Writing(owner_.name_, [&] { entry.context->Fill(*entry.row); });
}

void VerdictNTuple::Block::Flush() {
  Writing(owner_.name_, [&] { entry_->context->FlushCluster(); });
}

void VerdictNTuple::Block::Commit() {
  Writing(owner_.name_, [&] { entry_->context->CommitStagedClusters(); });
}

VerdictNTuple::VerdictNTuple(const std::string& path, const Origin& origin,
                             const std::vector<NamedPosition>& pmts)
    : file_(Replaceable(path)),
      name_(path),
      description_(Describe(origin)),
      pmts_(pmts),
      pmtIntegers_(IntegersOf(pmts)) {}

void VerdictNTuple::Begin(const Fields& fields, std::size_t blocks) {
  fields_ = fields;
  Writing(name_, [&] {
    auto model = ROOT::RNTupleModel::Create();
    model->SetDescription(description_);
    const auto addName = [&](const char* name, const char* description,
                             bool isInteger) {
      if (isInteger) {
        model->MakeField<std::int64_t>(name, description);
      } else {
        model->MakeField<std::string>(name, description);
      }
    };
    addName("event", "name of the event", fields.hasIntegerEvents);
    addName("pmt", "name of the PMT", !pmtIntegers_.empty());
    model->MakeField<std::string>("type",
                                  "type of the light path; empty for no path");
    model->MakeField<std::int32_t>("shadowed",
                                   "1 shadowed, 0 not, -1 for no path");
    model->MakeField<std::string>(
        "by", "the component that shadows it, if any; or no path");
    for (const PairColumn* const column : fields.columns) {
      if (column->isWhole) {
        model->MakeField<std::int32_t>(column->name, column->description);
      } else {
        model->MakeField<double>(column->name, column->description);
      }
    }
    writer_ = ROOT::RNTupleParallelWriter::Recreate(
        std::move(model), "verdicts", file_.TemporaryPath());
    for (std::size_t i = 0; i < blocks; ++i) {
      blocks_.push_back(std::unique_ptr<Block>(new Block(*this)));
    }
  });
}

VerdictNTuple::~VerdictNTuple() {
  // An unfinished writer writes what it has buffered, and prints an error if
  // that fails. Keep it silent: this file is discarded.
  const int level = gErrorIgnoreLevel;
  gErrorIgnoreLevel = kFatal;
  blocks_.clear();
  writer_.reset();
  gErrorIgnoreLevel = level;
}

void VerdictNTuple::Finish() {
  if (!HasBegun()) Begin({}, 0);
  Writing(name_, [&] {
    blocks_.clear();
    writer_->CommitDataset();
    writer_.reset();
  });
  file_.Finish();
}

}  // namespace ZARN::IO
