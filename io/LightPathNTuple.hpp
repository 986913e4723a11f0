#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "io/Origin.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::IO {

class NTupleFile;

/// A ROOT file with an RNTuple of light paths, which appears complete or not at
/// all.
///
/// The RNTuple is called "paths" and has the fields event and pmt (integers or
/// strings), type (string) and the 24 coordinates as LightPathHeader names them
/// (double, NaN for points that the type does not use). Its description is a
/// JSON object with the Origin.
class LightPathNTuple {
 public:
  /// Consecutive rows. Several blocks can be filled at the same time.
  class Block {
   public:
    ~Block();

    /// Add a path of one of the named types from an event to a PMT.
    ///
    /// @throws OutputFailure
    void Fill(const std::string& event, const std::string& pmt,
              const DU::LightPath& path);

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
    friend class LightPathNTuple;
    struct Fields;  // in ROOT's terms
    explicit Block(std::unique_ptr<Fields> fields);
    std::unique_ptr<Fields> fields_;
  };

  /// What the fields depend on.
  struct Names {
    bool areEventsIntegers = false;  ///< IntegerOf has a value for every name
    bool arePMTsIntegers = false;
  };

  /// @param path  as for VerdictNTuple
  /// @throws OutputFailure if the file cannot be created
  LightPathNTuple(const std::string& path, Origin origin);
  ~LightPathNTuple();

  /// Define the fields. Finish does it if there are no rows.
  ///
  /// @param blocks  number of blocks to be filled at the same time
  /// @throws OutputFailure
  void Begin(const Names& names, std::size_t blocks);

  /// One of the blocks, after Begin.
  Block& BlockAt(std::size_t number) { return *blocks_[number]; }

  /// Write buffered data, after the last Commit of a block; then move the
  /// finished file to its final name.
  ///
  /// @throws OutputFailure
  void Finish();
  void Commit();

 private:
  Origin origin_;
  std::unique_ptr<NTupleFile> file_;
  std::vector<std::unique_ptr<Block>> blocks_;
};

}  // namespace ZARN::IO
