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

/// A ROOT file with an RNTuple of verdicts, which appears whole or not at all.
///
/// The RNTuple is called "verdicts" and has the fields event, pmt, type, by
/// (strings) and shadowed (0, 1, or -1 for no path). Its description is a JSON
/// object that tells its Origin.
class VerdictNTuple {
 public:
  /// What the verdicts were made with.
  struct Origin {
    std::string program;
    std::string version;
    int run;
    double tolerance;   ///< mm
    double wavelength;  ///< nm
  };

  /// @param path  a regular file, or none: a pipe or a device cannot take a
  /// ROOT
  ///              file, in which positions matter
  /// @throws OutputFailure if the file cannot be made
  VerdictNTuple(const std::string& path, const Origin& origin);
  ~VerdictNTuple();

  /// Add the verdict on the light path from an event to a PMT.
  ///
  /// @param type  kUninitialised where there is no path
  /// @throws OutputFailure if writing fails
  void Fill(const std::string& event, const std::string& pmt,
            DU::eLightPathType type, DU::eShadowingComponent by);

  /// Write what is left.
  ///
  /// @throws OutputFailure
  void Finish();

  /// Put the finished file in its place.
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
