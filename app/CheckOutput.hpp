#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/CheckOptions.hpp"
#include "app/PathCheck.hpp"
#include "du/hardware/ShadowingComponent.hpp"
#include "io/OutputFile.hpp"
#include "io/PairColumns.hpp"
#include "io/PathDetails.hpp"
#include "io/PathSource.hpp"
#include "io/PathVerdictNTuple.hpp"
#include "io/PathVerdictText.hpp"
#include "io/PieceText.hpp"
#include "io/Sidecar.hpp"

namespace ZARN::App {

/// The verdicts of a check: CSV and its sidecar, or an RNTuple.
class CheckOutput {
 public:
  /// @param nameColumns  the columns that are copied from the input
  /// @throws as IO::OutputFile and IO::PathVerdictNTuple
  CheckOutput(const CheckOptions& options, const IO::Origin& origin,
              std::vector<std::string> nameColumns);

  /// Prepare for the rows of a block. In an RNTuple, names are stored as
  /// integers if those of the first block are, and then all others must be,
  /// too.
  ///
  /// @param source  of the block, for messages
  /// @throws IO::BadInput naming the row of a name that cannot be stored
  void BeginBlock(const PathCheck::CheckedBlock& block,
                  const IO::PathSource& source);

  /// Write the verdict on the next path.
  ///
  /// @param names    one for each column of names
  /// @param details  those that the columns need
  void Write(const std::string_view* names, DU::eShadowingComponent by,
             const IO::PathDetails& details);

  std::uint64_t Rows() const { return rows_; }

  /// Finish all files, then move all to their final names.
  void Commit();

 private:
  void BeginNTuple(const std::vector<bool>& areIntegers);

  std::vector<std::string> nameColumns_;
  std::uint64_t rows_ = 0;

  std::optional<IO::PathVerdictNTuple> ntuple_;
  std::vector<bool> areIntegers_;  // which columns of the RNTuple

  std::optional<IO::OutputFile> csv_;
  std::optional<IO::Sidecar> sidecar_;
  IO::PathVerdictText rowText_;
  IO::PieceText text_;  // of a row
};

}  // namespace ZARN::App
