#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "du/hardware/ShadowingComponent.hpp"
#include "io/Origin.hpp"

namespace ZARN::IO {

/// Which columns counts have.
enum class eCounts { kPlain, kSmeared, kAtTolerances };

/// A ROOT file with the counts of CountsFile, which appears complete or not at
/// all.
///
/// The RNTuple is called "counts" and has the fields of the CSV columns: the
/// name (integer or string), paths and shadowed (std::uint64_t), fraction
/// (double, NaN if there are no paths) and by (string); and smeared_fraction
/// for smeared counts (double, NaN if there is none), tolerance (double) for
/// counts at several tolerances.
class CountsNTuple {
 public:
  /// @param path        as for VerdictNTuple
  /// @param nameColumn  name of the field of names
  /// @throws OutputFailure if the file cannot be created
  CountsNTuple(const std::string& path, const std::string& nameColumn,
               Origin origin, eCounts counts);
  ~CountsNTuple();

  /// Define the fields, before the first row. Finish does it if there are no
  /// rows.
  ///
  /// @param hasIntegerNames  whether IntegerOf has a value for every name
  /// @throws OutputFailure
  void Begin(bool hasIntegerNames);

  /// As CountsFile::Write.
  ///
  /// @throws OutputFailure
  void Write(const std::string& name, std::uint64_t paths,
             std::uint64_t shadowed, DU::eShadowingComponent by,
             std::optional<double> smearedFraction, double tolerance);

  /// Write buffered data, then move the finished file to its final name.
  ///
  /// @throws OutputFailure
  void Finish();
  void Commit();

 private:
  struct Fields;  // in ROOT's terms

  std::string nameColumn_;
  Origin origin_;
  eCounts counts_;
  std::unique_ptr<Fields> fields_;
};

}  // namespace ZARN::IO
