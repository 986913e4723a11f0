#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "du/hardware/ShadowingComponent.hpp"
#include "io/PendingFile.hpp"
#include "lightpath/LightPathType.hpp"

namespace ROOT {
class RNTupleWriter;
}

namespace ZARN::IO {

/// A ROOT file with an RNTuple of verdicts, which appears complete or not at
/// all.
///
/// The RNTuple is called "verdicts" and has the fields event, pmt, type, by
/// (strings) and shadowed (0, 1, or -1 for no path). Its description is a JSON
/// object with the Origin.
class VerdictNTuple {
 public:
  /// How the verdicts were made.
  struct Origin {
    std::string program;
    std::string version;
    int run;
    double tolerance;   ///< mm
    double wavelength;  ///< nm
  };

  /// @param path  a regular file, or a new name; ROOT needs to seek, which
  ///              pipes and devices cannot do
  /// @throws OutputFailure if the file cannot be created
  VerdictNTuple(const std::string& path, const Origin& origin);
  ~VerdictNTuple();

  /// Add the verdict on the light path from an event to a PMT.
  ///
  /// @param type  kUninitialised if there is no path
  /// @throws OutputFailure if writing fails
  void Fill(const std::string& event, const std::string& pmt,
            DU::eLightPathType type, DU::eShadowingComponent by);

  /// Write buffered data.
  ///
  /// @throws OutputFailure
  void Finish();

  /// Move the finished file to its final name.
  ///
  /// @throws OutputFailure
  void Commit() { file_.Commit(); }

 private:
  PendingFile file_;
  std::string name_;  // in messages
  std::shared_ptr<std::string> event_;
  std::shared_ptr<std::string> pmt_;
  std::shared_ptr<std::string> type_;
  std::shared_ptr<std::int32_t> shadowed_;
  std::shared_ptr<std::string> by_;
  std::unique_ptr<ROOT::RNTupleWriter> writer_;
};

}  // namespace ZARN::IO
