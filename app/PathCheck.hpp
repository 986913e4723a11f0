#pragma once

#include <cstddef>
#include <exception>
#include <optional>
#include <string_view>
#include <vector>

#include "du/ShadowingCalculator.hpp"
#include "io/LightPathReader.hpp"
#include "scan/OrderedWork.hpp"

namespace ZARN::App {

/// Judges the light paths of a table block by block, on several threads.
class PathCheck {
 public:
  /// A path that was not judged because messages may come with its verdict:
  /// they belong in the order of the rows.
  struct PathWithMessages {
    std::size_t index;  ///< among the paths of its block
    std::string_view typeName;
    DU::LightPath path;
  };

  /// What was found for a block of rows.
  struct CheckedBlock {
    IO::CsvBlock text;
    /// Of its paths in their order, up to an error; kNone for those with
    /// messages.
    std::vector<DU::eShadowingComponent> verdicts;
    std::vector<PathWithMessages> withMessages;
    IO::CsvExtent extent;
    std::optional<IO::CsvError> error;
  };

  /// @param calculator  must outlive this; its run has begun
  /// @param reader      must outlive this
  PathCheck(const DU::ShadowingCalculator& calculator,
            IO::LightPathReader& reader, std::size_t threads);

  /// What was found for the next block; null after the last. Valid until the
  /// next call.
  ///
  /// Where more of the file would have to be waited for, what has come is
  /// judged first.
  ///
  /// @throws IO::BadInput if the file cannot be read, behind all blocks that
  /// could;
  ///         Interrupted if a signal came
  const CheckedBlock* Next();

 private:
  bool MayReadOn() const;
  bool Read(IO::CsvBlock& block);
  void FindVerdicts(CheckedBlock& checked,
                    std::vector<DU::LightPath>& batch) const;

  const DU::ShadowingCalculator& calculator_;
  IO::LightPathReader& reader_;
  bool isAtEnd_ = false;
  std::exception_ptr failure_;  // why the file ended there
  std::size_t maxBlocks_;       // that are worked on at once
  CheckedBlock current_;
  std::vector<std::vector<DU::LightPath>> batches_;  // one for each thread
  Scan::OrderedWork<CheckedBlock> work_;
};

}  // namespace ZARN::App
