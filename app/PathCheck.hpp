#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "du/ShadowingCalculator.hpp"
#include "io/PathDetails.hpp"
#include "io/PathSource.hpp"
#include "scan/OrderedWork.hpp"

namespace ZARN::App {

/// Judges the light paths of an input block by block, on several threads.
class PathCheck {
 public:
  /// A path that was not judged here, because its verdict may write messages:
  /// the caller judges it, so that messages come in the order of the rows.
  struct PathWithMessages {
    std::size_t index;  ///< among the paths of its block
    std::string_view typeName;
    DU::LightPath path;
  };

  /// The results for a block of paths.
  struct CheckedBlock {
    std::unique_ptr<IO::PathBlock> paths;
    /// One for each path in order, up to an error; kNone for paths with
    /// messages.
    std::vector<DU::eShadowingComponent> verdicts;
    std::vector<PathWithMessages> withMessages;
    /// For each path, if any are needed.
    std::vector<IO::PathDetails> details;
    /// For each column of names the error for the first one that is not an
    /// integer, if integers are wanted.
    std::vector<std::optional<IO::TableError>> firstTexts;
    std::optional<IO::TableError> error;
  };

  struct Options {
    std::size_t threads = 1;
    bool refusesUnknownTypes = false;  ///< with an error of the block
    bool wantsIntegerNames = false;    ///< sets firstTexts
    std::vector<const IO::PairColumn*> columns = {};  ///< for the details
  };

  /// @param calculator  must outlive this; BeginOfRun was called
  /// @param source      must outlive this
  PathCheck(const DU::ShadowingCalculator& calculator, IO::PathSource& source,
            const Options& options);

  /// The results for the next block; null after the last. Valid until the next
  /// call.
  ///
  /// If reading would block waiting for input, the blocks read so far are
  /// judged first.
  ///
  /// @throws IO::BadInput if the file cannot be read, after all blocks that
  ///         could be read; Interrupted after a signal
  const CheckedBlock* Next();

 private:
  bool MayReadOn() const;
  bool Read(CheckedBlock& block);
  void FindVerdicts(CheckedBlock& checked) const;
  std::size_t NumberToJudge(CheckedBlock& checked) const;
  void FindUsual(std::size_t begin, std::size_t end,
                 CheckedBlock& checked) const;
  void FindDetails(std::size_t size, CheckedBlock& checked) const;
  void FindFirstTexts(std::size_t size, CheckedBlock& checked) const;

  const DU::ShadowingCalculator& calculator_;
  IO::PathSource& source_;
  Options options_;
  IO::DetailFinder details_;
  bool isAtEnd_ = false;
  std::exception_ptr failure_;  // why reading stopped
  std::size_t maxBlocks_;       // limit for blocks in work
  CheckedBlock current_;
  Scan::OrderedWork<CheckedBlock> work_;
};

}  // namespace ZARN::App
