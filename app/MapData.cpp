#include "app/MapData.hpp"

#include <algorithm>
#include <cmath>

#include "display/Mollweide.hpp"
#include "io/CsvText.hpp"
#include "io/VerdictText.hpp"

namespace ZARN::App {
namespace {

/// Append the cells shadowed and by, as scan writes them.
void AppendVerdict(std::string& line, DU::eVerdict verdict) {
  line += ',';
  if (DU::HasPath(verdict)) {
    IO::AppendVerdict(line, DU::ComponentOf(verdict));
    return;
  }
  line += ',';
  line += IO::kNoPath;
}

void AppendCounts(std::string& line, std::uint64_t paths,
                  std::uint64_t shadowed) {
  line += ',';
  IO::AppendNumber(line, paths);
  line += ',';
  IO::AppendNumber(line, shadowed);
  line += ',';
  if (paths == 0) return;
  IO::AppendNumber(line,
                   static_cast<double>(shadowed) / static_cast<double>(paths));
}

}  // namespace

MapData::MapData(const std::string& path, const IO::Origin& origin,
                 eMapData kind)
    : kind_(kind), csv_(path), sidecar_(path, origin) {}

void MapData::WritePMTs(const std::vector<IO::NamedPosition>& pmts,
                        const TVector3& from,
                        const Display::MapVerdicts& verdicts) {
  WriteHeader("pmt");
  for (std::size_t i = 0; i < pmts.size(); ++i) {
    line_ = pmts[i].cell;
    WriteRow(pmts[i].position, from, verdicts, i);
  }
}

void MapData::WritePixels(const std::vector<std::uint32_t>& pixels,
                          std::size_t columns, const Display::MapPoints& ends,
                          const TVector3& from,
                          const Display::MapVerdicts& verdicts) {
  WriteHeader("column,row");
  constexpr std::size_t kPiece = 4096;
  for (std::size_t begin = 0; begin < pixels.size(); begin += kPiece) {
    const std::vector<TVector3> positions =
        ends.make(begin, std::min(begin + kPiece, pixels.size()));
    for (std::size_t i = 0; i < positions.size(); ++i) {
      const std::size_t pixel = pixels[begin + i];
      line_.clear();
      IO::AppendNumber(line_, std::uint64_t{pixel % columns});
      line_ += ',';
      IO::AppendNumber(line_, std::uint64_t{pixel / columns});
      WriteRow(positions[i], from, verdicts, begin + i);
    }
  }
}

void MapData::WriteHeader(const std::string& names) {
  std::string header = names + ",x,y,z,azimuth,polar_angle";
  if (kind_ == eMapData::kComparison) header += ",shadowed_before,by_before";
  header +=
      kind_ == eMapData::kShares ? ",paths,shadowed,fraction" : ",shadowed,by";
  csv_.Write(header + "\n");
}

void MapData::WriteRow(const TVector3& position, const TVector3& from,
                       const Display::MapVerdicts& verdicts,
                       std::size_t number) {
  for (const double coordinate : {position.X(), position.Y(), position.Z()}) {
    line_ += ',';
    IO::AppendNumber(line_, coordinate);
  }
  const TVector3 direction = position - from;
  const bool hasDirection = Display::HasDirection(direction);
  line_ += ',';
  if (hasDirection) IO::AppendNumber(line_, direction.Phi());
  line_ += ',';
  if (hasDirection) {
    // Theta() squares the coordinates, which fails for very far and near ones.
    const double across = std::hypot(direction.X(), direction.Y());
    IO::AppendNumber(line_, std::atan2(across, direction.Z()));
  }
  if (kind_ == eMapData::kShares) {
    AppendCounts(line_, verdicts.paths[number], verdicts.shadowed[number]);
  } else {
    if (kind_ == eMapData::kComparison) {
      AppendVerdict(line_, verdicts.before[number]);
    }
    AppendVerdict(line_, verdicts.verdicts[number]);
  }
  line_ += '\n';
  csv_.Write(line_);
}

void MapData::Finish() {
  csv_.Finish();
  sidecar_.Finish();
}

void MapData::Commit() {
  csv_.Commit();
  sidecar_.Commit();
}

}  // namespace ZARN::App
