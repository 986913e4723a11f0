#include "display/DisplayPage.hpp"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "display/Deflated.hpp"
#include "display/HtmlText.hpp"
#include "display/PageItems.hpp"
#include "display/PageProgram.hpp"
#include "display/PageRows.hpp"
#include "display/PageText.hpp"
#include "display/Palette.hpp"
#include "scan/RowScan.hpp"

namespace ZARN::Display {
namespace {

/// The blocks of direct or of reflected light.
class LightBlocks {
 public:
  LightBlocks(const std::string& prefix, bool hasPaths)
      : verdicts_(prefix + "verdicts") {
    if (!hasPaths) return;
    for (const char* name : {"angles", "items", "limits", "limit-by"}) {
      paths_.emplace_back(prefix + name);
    }
  }

  void Append(const std::vector<DU::eVerdict>& verdicts) {
    verdicts_.Append(verdicts);
  }
  void Append(const PathColumns& columns) {
    paths_[0].Append(columns.angles);
    paths_[1].Append(columns.items);
    paths_[2].Append(columns.limits);
    paths_[3].Append(columns.limitBy);
  }

  template <class Work>
  void ForEach(const Work& work) {
    work(verdicts_);
    for (DeflatedBlock& block : paths_) work(block);
  }

 private:
  DeflatedBlock verdicts_;
  std::vector<DeflatedBlock> paths_;
};

std::string ScriptElement(std::string_view type, std::string_view name,
                          std::string_view text) {
  std::string element = "<script type=\"";
  element.append(type).append("\" id=\"zarn-").append(name).append("\">");
  return element.append(text).append("</script>\n");
}

std::string ElementOf(DeflatedBlock& block) {
  return ScriptElement("text/plain", block.Name(), block.TakeBase64());
}

std::string PositionsElement(const std::string& name,
                             const std::vector<TVector3>& positions) {
  std::vector<double> numbers;
  numbers.reserve(3 * positions.size());
  for (const TVector3& position : positions) {
    numbers.insert(numbers.end(), {position.X(), position.Y(), position.Z()});
  }
  DeflatedBlock block(name);
  block.Append(numbers);
  return ElementOf(block);
}

/// The counts of each event, for readers without scripts.
class CountsTable {
 public:
  explicit CountsTable(const PageContent& content) : content_(content) {}

  void Add(const Scan::VerdictCounts& counts) {
    if (rows_++ >= kMostRows) return;
    html_ += "<tr><td>" + HtmlText(content_.eventNames[rows_ - 1]) + "</td>";
    AddCell(counts.Paths());
    AddCell(counts.Shadowed());
    for (const DU::eShadowingComponent component : DU::kShadowingComponents) {
      AddCell(counts.Of(component));
    }
    html_ += "</tr>\n";
  }

  std::string Html() const {
    std::string html =
        "<p>This page needs JavaScript. What blocks the light from each event, "
        "in light paths:</p>\n"
        "<table>\n<tr><th>event</th><th>paths</th><th>shadowed</th>";
    for (const DU::eShadowingComponent component : DU::kShadowingComponents) {
      html += "<th>" + HtmlText(GetPalette().Of(component).name) + "</th>";
    }
    html += "</tr>\n" + html_ + "</table>\n";
    if (rows_ > kMostRows) {
      html += "<p>and " + std::to_string(rows_ - kMostRows) + " more</p>\n";
    }
    return html;
  }

 private:
  static constexpr std::size_t kMostRows = 500;

  void AddCell(std::uint64_t count) {
    html_ += "<td>" + std::to_string(count) + "</td>";
  }

  const PageContent& content_;
  std::size_t rows_ = 0;
  std::string html_;
};

/// The page without data, with three texts at their places.
std::string Filled(const std::string& title, const std::string& counts,
                   const std::string& data) {
  std::string_view rest = PageProgram();
  std::string html;
  html.reserve(rest.size() + title.size() + counts.size() + data.size());
  const auto replace = [&](std::string_view place, std::string_view text) {
    const std::size_t at = rest.find(place);
    if (at == std::string_view::npos) {
      throw std::logic_error("the page has no place " + std::string(place));
    }
    html.append(rest.substr(0, at)).append(text);
    rest.remove_prefix(at + place.size());
  };
  replace("<title>Shadow display</title>", "<title>" + title + "</title>");
  replace("<!-- zarn-counts -->", counts);
  replace("<!-- zarn-data -->", data);
  return html.append(rest);
}

class PageWork {
 public:
  PageWork(const PageContent& content, const DU::ShadowingCalculator& shadowing,
           const DU::LightPathCalculator& lightPath,
           const PageSettings& settings)
      : content_(content),
        shadowing_(shadowing),
        lightPath_(lightPath),
        settings_(settings),
        items_(shadowing.GetHardware()),
        details_(shadowing, items_),
        counts_(content) {
    page_.hasPaths = HasRoomForPaths(content, lightPath);
    lights_.emplace_back("", page_.hasPaths);
    if (content.withReflections) {
      lights_.emplace_back("reflected-", page_.hasPaths);
    }
    slots_.resize(Scan::RowScan::SlotsFor(settings.threads));
    for (Slot& slot : slots_) slot.lightPath = lightPath;
  }

  DisplayPage Make() {
    Judge();
    const std::string text = PageTextOf(content_, shadowing_, lightPath_,
                                        items_, page_.hasPaths, stored_);
    std::string data = ScriptElement("application/json", "page", text);
    data += PositionsElement("pmt-positions", content_.pmts);
    data += PositionsElement("event-positions", content_.events);
    for (LightBlocks& light : lights_) {
      light.ForEach([&](DeflatedBlock& block) { data += ElementOf(block); });
    }
    page_.html = Filled(
        HtmlText(content_.title.empty() ? "Shadow display" : content_.title),
        counts_.Html(), data);
    page_.storedPaths = stored_.size();
    return std::move(page_);
  }

 private:
  /// What is kept with a block of rows.
  struct Slot {
    DU::LightPathCalculator lightPath;
    PathColumns direct;
    PathColumns reflected;
    std::vector<StoredPath> stored;
  };

  void Judge() {
    Scan::RowScan::Settings scan;
    scan.threads = settings_.threads;
    scan.withReflections = content_.withReflections;
    scan.checkForStop = settings_.checkForStop;
    if (page_.hasPaths) {
      // Paths take so long that each thread should get some of few pairs.
      scan.pairsPerBlock = 1UL << 10U;
      scan.onBlock = [this](const Scan::RowBlock& rows) { FindDetails(rows); };
    }
    Scan::RowScan(shadowing_, lightPath_, DU::PMTArray(content_.pmts), scan)
        .Run(content_.events,
             [this](const Scan::RowBlock& rows) { Take(rows); });
  }

  void FindDetails(const Scan::RowBlock& rows) {
    Slot& slot = slots_[rows.slot];
    slot.direct.Clear();
    slot.reflected.Clear();
    slot.stored.clear();
    for (std::size_t event = 0; event < rows.events.size(); ++event) {
      const auto append = [&](const DU::eVerdict* verdicts, DU::eLight kind,
                              PathColumns& columns) {
        details_.AppendRow(slot.lightPath, rows.firstEvent + event,
                           rows.events[event], content_.pmts, verdicts, kind,
                           settings_.checkForStop, columns, slot.stored);
      };
      append(rows.Direct(event), DU::eLight::kDirect, slot.direct);
      if (!content_.withReflections) continue;
      append(rows.Reflected(event), DU::eLight::kReflected, slot.reflected);
    }
  }

  /// Add what was found, in order.
  void Take(const Scan::RowBlock& rows) {
    Slot& slot = slots_[rows.slot];
    lights_[0].Append(rows.direct);
    if (page_.hasPaths) lights_[0].Append(slot.direct);
    for (const DU::eVerdict verdict : rows.direct) page_.direct.Add(verdict);
    if (content_.withReflections) {
      lights_[1].Append(rows.reflected);
      if (page_.hasPaths) lights_[1].Append(slot.reflected);
      page_.reflected.AddRow(rows.reflected.data(), rows.reflected.size());
    }
    stored_.insert(stored_.end(), slot.stored.begin(), slot.stored.end());
    slot.stored.clear();
    for (const Scan::VerdictCounts& counts : rows.counts) counts_.Add(counts);
    pairs_ += rows.direct.size();
    if (settings_.onProgress) settings_.onProgress(pairs_);
  }

  const PageContent& content_;
  const DU::ShadowingCalculator& shadowing_;
  const DU::LightPathCalculator& lightPath_;
  const PageSettings& settings_;
  PageItems items_;
  PathDetailsForPage details_;
  std::vector<Slot> slots_;
  std::vector<LightBlocks> lights_;  // direct and then reflected
  CountsTable counts_;
  std::vector<StoredPath> stored_;
  std::uint64_t pairs_ = 0;
  DisplayPage page_;
};

}  // namespace

bool CanMakePages() { return !PageProgram().empty(); }

bool HasRoomForPaths(const PageContent& content,
                     const DU::LightPathCalculator& lightPath) {
  constexpr std::uint64_t kLargestPage = 20'000'000;  // bytes
  // With the reference detector it is 10: angle and limit hardly compress.
  constexpr std::uint64_t kBytesOfPath = 11;
  constexpr std::uint64_t kBytesOfPosition = 32;
  std::uint64_t bytes =
      PageProgram().size() +
      kBytesOfPosition * (content.pmts.size() + content.events.size());
  for (const auto* names : {&content.pmtNames, &content.eventNames}) {
    for (const std::string& name : *names) bytes += name.size();
  }
  std::uint64_t rows = content.events.size();
  if (content.withReflections) {
    // Reflected light comes from events in the water.
    const DU::ConcentricMedia& media = lightPath.GetMedia();
    rows += static_cast<std::uint64_t>(
        std::count_if(content.events.begin(), content.events.end(),
                      [&](const TVector3& event) {
                        return media.At(event.Mag()) == DU::eMedium::kWater;
                      }));
  }
  bytes += kBytesOfPath * rows * content.pmts.size();
  return bytes <= kLargestPage;
}

DisplayPage MakePage(const PageContent& content,
                     const DU::ShadowingCalculator& shadowing,
                     const DU::LightPathCalculator& lightPath,
                     const PageSettings& settings) {
  if (!CanMakePages()) {
    throw std::logic_error("MakePage: this build has no page");
  }
  return PageWork(content, shadowing, lightPath, settings).Make();
}

}  // namespace ZARN::Display
