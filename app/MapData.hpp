#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TVector3.h"
#include "display/MapPoints.hpp"
#include "display/MapScan.hpp"
#include "io/Origin.hpp"
#include "io/OutputFile.hpp"
#include "io/PositionReader.hpp"
#include "io/Sidecar.hpp"

namespace ZARN::App {

/// What the rows of MapData tell.
enum class eMapData {
  kVerdicts,    ///< on one event
  kComparison,  ///< those with the first tables, too
  kShares       ///< counts over several events
};

/// The numbers behind a map: CSV with one row for each PMT or pixel.
class MapData {
 public:
  /// @throws as IO::OutputFile
  MapData(const std::string& path, const IO::Origin& origin, eMapData kind);

  /// @param from      the point of view, mm
  /// @param verdicts  on these PMTs
  /// @throws as IO::OutputFile::Write
  void WritePMTs(const std::vector<IO::NamedPosition>& pmts,
                 const TVector3& from, const Display::MapVerdicts& verdicts);

  /// @param pixels    numbers of the pixels that were judged
  /// @param columns   of the map, pixels
  /// @param ends      where their directions end, mm
  /// @param verdicts  on these pixels, for one event
  void WritePixels(const std::vector<std::uint32_t>& pixels,
                   std::size_t columns, const Display::MapPoints& ends,
                   const TVector3& from, const Display::MapVerdicts& verdicts);

  /// As in IO::OutputFile.
  void Finish();
  void Commit();

 private:
  /// @param names  the first columns
  void WriteHeader(const std::string& names);
  /// Write a row, whose first cells are in line_.
  void WriteRow(const TVector3& position, const TVector3& from,
                const Display::MapVerdicts& verdicts, std::size_t number);

  eMapData kind_;
  IO::OutputFile csv_;
  IO::Sidecar sidecar_;
  std::string line_;
};

}  // namespace ZARN::App
