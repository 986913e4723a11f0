#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "io/Origin.hpp"
#include "io/PairColumns.hpp"
#include "io/PositionReader.hpp"
#include "lightpath/LightPathType.hpp"

namespace ZARN::IO {

class NTupleFile;

/// A ROOT file with an RNTuple of verdicts, which appears complete or not at
/// all.
///
/// The RNTuple is called "verdicts" and has the fields event and pmt (integers
/// or strings), type, by (strings), shadowed (0, 1, or -1 for no path), and
/// those of a list of columns (NaN where there is no value). Its description is
/// a JSON object with the Origin.
class VerdictNTuple {
 public:
  /// What the fields of an RNTuple depend on.
  struct Fields {
    bool hasIntegerEvents = false;  ///< all names of events are integers
    std::vector<const PairColumn*> columns = {};  ///< after the usual fields
  };

  /// Fills in consecutive rows, which Commit appends to the RNTuple. Several
  /// blocks can be filled at the same time.
  class Block {
   public:
    ~Block();

    /// Begin the rows of an event.
    ///
    /// @param event  must exist until the next call
    void SetEvent(const NamedPosition& event);

    /// Add the verdict on a light path.
    ///
    /// @param pmt   number of the PMT
    /// @param type  of the path; ignored if there is none
    /// @throws OutputFailure if writing fails
    void Fill(std::size_t pmt, DU::eLightPathType type, const JudgedPair& pair);

    /// Compress and write the rows.
    ///
    /// @throws OutputFailure
    void Flush();

    /// Append the flushed rows to those of the blocks committed before. One
    /// thread commits, while others may fill.
    ///
    /// @throws OutputFailure
    void Commit();

   private:
    friend class VerdictNTuple;
    explicit Block(const VerdictNTuple& owner);

    struct Entry;  // in ROOT's terms
    const VerdictNTuple& owner_;
    std::unique_ptr<Entry> entry_;
  };

  /// @param path  a regular file, or a new name; ROOT needs to seek, which
  ///              pipes and devices cannot do
  /// @param pmts  must outlive this
  /// @throws OutputFailure if the file cannot be created
  VerdictNTuple(const std::string& path, Origin origin,
                const std::vector<NamedPosition>& pmts);
  ~VerdictNTuple();

  /// Define the fields. Finish does it if there are no rows.
  ///
  /// @param blocks  number of blocks to be filled at the same time
  /// @throws OutputFailure
  void Begin(const Fields& fields, std::size_t blocks);

  /// One of the blocks, after Begin.
  Block& BlockAt(std::size_t number) { return *blocks_[number]; }

  /// Write buffered data, after the last Commit of a block.
  ///
  /// @throws OutputFailure
  void Finish();

  /// Move the finished file to its final name.
  ///
  /// @throws OutputFailure
  void Commit();

 private:
  std::unique_ptr<NTupleFile> file_;
  Origin origin_;
  const std::vector<NamedPosition>& pmts_;
  std::vector<std::int64_t>
      pmtIntegers_;  // empty unless all names are integers
  Fields fields_;
  std::vector<std::unique_ptr<Block>> blocks_;
};

}  // namespace ZARN::IO
