#include "io/VerdictNTuple.hpp"

#include <TError.h>
#include <ROOT/RError.hxx>
#include <ROOT/RNTupleModel.hxx>
#include <ROOT/RNTupleWriteOptions.hxx>
#include <ROOT/RNTupleWriter.hxx>
#include <nlohmann/json.hpp>

#include "io/Errors.hpp"
#include "io/FileNames.hpp"
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

std::string Describe(const VerdictNTuple::Origin& origin) {
  const nlohmann::ordered_json description = {
      {"program", origin.program},
      {"version", origin.version},
      {"run", origin.run},
      {"tolerance", origin.tolerance},
      {"wavelength", origin.wavelength},
  };
  return description.dump();
}

}  // namespace

VerdictNTuple::VerdictNTuple(const std::string& path, const Origin& origin)
    : file_(Replaceable(path)), name_(path) {
  Writing(name_, [&] {
    auto model = ROOT::RNTupleModel::Create();
    model->SetDescription(Describe(origin));
    event_ = model->MakeField<std::string>("event", "name of the event");
    pmt_ = model->MakeField<std::string>("pmt", "name of the PMT");
    type_ = model->MakeField<std::string>(
        "type", "type of the light path; empty for no path");
    shadowed_ = model->MakeField<std::int32_t>(
        "shadowed", "1 shadowed, 0 not, -1 for no path");
    by_ = model->MakeField<std::string>(
        "by", "the component that shadows it, if any; or no path");
    writer_ = ROOT::RNTupleWriter::Recreate(std::move(model), "verdicts",
                                            file_.TemporaryPath());
  });
}

VerdictNTuple::~VerdictNTuple() {
  // An unfinished writer writes what it has buffered, and prints an error if
  // that fails. Keep it silent: this file is discarded.
  const int level = gErrorIgnoreLevel;
  gErrorIgnoreLevel = kFatal;
  writer_.reset();
  gErrorIgnoreLevel = level;
}

void VerdictNTuple::Fill(const std::string& event, const std::string& pmt,
                         DU::eLightPathType type, DU::eShadowingComponent by) {
  *event_ = event;
  *pmt_ = pmt;
  if (type == DU::kUninitialised) {
    type_->clear();
    *shadowed_ = -1;
    *by_ = kNoPath;
  } else {
    *type_ = DU::kLightPathTypeNames[type];
    *shadowed_ = by == DU::eShadowingComponent::kNone ? 0 : 1;
    *by_ = DU::NameOf(by);
  }
  Writing(name_, [&] { writer_->Fill(); });
}

void VerdictNTuple::Finish() {
  Writing(name_, [&] {
    writer_->CommitDataset();
    writer_.reset();
  });
  file_.Finish();
}

}  // namespace ZARN::IO
