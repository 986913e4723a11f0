#include "display/MapWords.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "display/MapScene.hpp"
#include "display/Mollweide.hpp"
#include "display/Palette.hpp"
#include "log/Grouped.hpp"

namespace ZARN::Display {
namespace {

// The same in every locale.
std::string Write(double number, std::chars_format format, int precision) {
  std::array<char, 64> digits = {};
  const auto result = std::to_chars(
      digits.data(), digits.data() + digits.size(), number, format, precision);
  return {digits.data(), result.ptr};
}

std::string PositionOf(const TVector3& position) {
  return "(" + WordOf(position.X()) + ", " + WordOf(position.Y()) + ", " +
         WordOf(position.Z()) + ") mm";
}

std::string EventOf(const MapContent& content) {
  if (content.events.empty()) return "an event";
  const std::string at = " at " + PositionOf(content.events.front());
  return content.eventName.empty() ? "an event" + at
                                   : "event " + content.eventName + at;
}

bool HasPixels(const MapContent& content) { return content.pixels.has_value(); }

std::string Plural(std::uint64_t count, const std::string& one) {
  return WordOfCount(count) + " " + one + (count == 1 ? "" : "s");
}

std::size_t CountHidden(const MapContent& content) {
  return static_cast<std::size_t>(std::count_if(
      content.marks.begin(), content.marks.end(),
      [](const MapMark& mark) { return !HasDirection(mark.direction); }));
}

// "1 PMT", "2 PMTs".
std::string CountedUnit(const MapContent& content, std::uint64_t count) {
  std::string unit = UnitOf(content);
  if (count == 1) unit.pop_back();
  return WordOfCount(count) + " " + unit;
}

}  // namespace

std::string WordOf(double number) {
  constexpr int kDecimals = 3;
  constexpr double kLongest = 1e9;
  constexpr int kDigits = 6;
  std::string text =
      std::abs(number) < kLongest
          ? Write(std::abs(number), std::chars_format::fixed, kDecimals)
          : Write(std::abs(number), std::chars_format::general, kDigits);
  if (text.find('e') == std::string::npos &&
      text.find('.') != std::string::npos) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
  }
  return number < 0.0 && text != "0" ? "\u2212" + text : text;
}

std::string WordOfCount(std::uint64_t count) {
  constexpr std::uint64_t kLongest = 100000000;
  if (count < kLongest) return Grouped(count);
  constexpr std::array<const char*, 10> kRaised = {
      "\u2070", "\u00B9", "\u00B2", "\u00B3", "\u2074",
      "\u2075", "\u2076", "\u2077", "\u2078", "\u2079"};
  const std::string text =
      Write(static_cast<double>(count), std::chars_format::scientific, 2);
  std::string word = text.substr(0, 4) + "\u00D710";
  for (const char digit : std::to_string(std::stoi(text.substr(5)))) {
    word += kRaised[static_cast<std::size_t>(digit - '0')];
  }
  return word;
}

std::string WordOfShare(std::uint64_t count, std::uint64_t all) {
  if (all == 0) return "\u2013";
  const double percent =
      100.0 * static_cast<double>(count) / static_cast<double>(all);
  const std::string word = Write(percent, std::chars_format::fixed, 1);
  const bool isNearlyAll = count < all && word == "100.0";
  return (count > 0 && word == "0.0" ? "< 0.1"
          : isNearlyAll              ? "> 99.9"
                                     : word) +
         " %";
}

std::string UnitOf(const MapContent& content) {
  if (HasPixels(content)) return "directions";
  return content.HasSeveralEvents() ? "light paths" : "PMTs";
}

std::string TitleOf(const MapContent& content) {
  if (!content.title.empty()) return content.title;
  if (content.IsComparison()) return "What changes for " + EventOf(content);
  if (content.HasSeveralEvents()) {
    return "How often PMTs are hidden from " +
           Plural(content.events.size(), "event");
  }
  return (HasPixels(content) ? "Which directions are hidden from "
                             : "What hides the PMTs from ") +
         EventOf(content);
}

std::uint64_t ChangesIn(const MapContent& content) {
  std::uint64_t sum = 0;
  if (content.comparison) {
    for (const MapChange& change : content.comparison->changes) {
      sum += change.count;
    }
  }
  return sum;
}

std::uint64_t UnchangedIn(const MapContent& content) {
  const std::uint64_t all = content.counts.All();
  return all - std::min(all, ChangesIn(content));
}

std::string SummaryOf(const MapContent& content) {
  const std::uint64_t paths = content.counts.paths.Paths();
  const std::uint64_t shadowed = content.counts.paths.Shadowed();
  const std::uint64_t all = content.counts.All();
  const std::string unit = UnitOf(content);
  if (all == 0) return "No " + unit;
  if (content.IsComparison()) {
    const std::uint64_t changes = ChangesIn(content);
    if (changes == 0) return "No verdict changed";
    if (HasPixels(content)) {
      return WordOfShare(changes, all) + " of the directions changed";
    }
    return WordOfCount(changes) + " of " + CountedUnit(content, all) +
           " changed (" + WordOfShare(changes, all) + ")";
  }
  if (paths == 0) return "No light path to any of the " + unit;
  if (HasPixels(content)) {
    return WordOfShare(shadowed, paths) +
           " of the directions with a light path are shadowed";
  }
  const bool isPart = paths != all && !content.HasSeveralEvents();
  return WordOfCount(shadowed) + " of " + CountedUnit(content, paths) +
         (isPart ? " with a light path" : "") + " shadowed (" +
         WordOfShare(shadowed, paths) + ")";
}

std::string ConditionsOf(const MapContent& content) {
  return "run " + WordOf(content.run) + kSeparator + "tolerance " +
         WordOf(content.tolerance) + " mm" + kSeparator +
         WordOf(content.wavelength) + " nm";
}

std::string TablesOf(const MapContent& content) {
  if (!content.comparison) return content.detector;
  return content.comparison->before + " \u2192 " + content.comparison->after;
}

std::string CaptionOf(const MapContent& content) {
  const std::string from = content.view == eMapView::kEvent
                               ? "from the event"
                               : "from the detector centre";
  std::string text;
  if (HasPixels(content)) {
    text = "Every direction " + from + ", as if a PMT stood there. ";
  } else if (content.marks.size() > kMostShapes) {
    text = "Each pixel shows the nearest PMT, by directions " + from + ". ";
  } else if (content.marks.empty()) {
    text = "There are no PMTs. ";
  } else if (CountHidden(content) == content.marks.size()) {
    text = "No PMT has a direction. ";
  } else {
    text = "Each mark is one PMT, at its direction " + from + ". ";
  }
  return text +
         "Seen from inside: azimuth grows to the left. Equal areas "
         "(Mollweide).";
}

std::string FootnoteOf(const MapContent& content) {
  const std::uint64_t paths = content.counts.paths.Paths();
  const std::uint64_t all = content.counts.All();
  const std::string unit = UnitOf(content);
  const bool hasPixels = HasPixels(content);
  std::string text;
  if (content.IsComparison()) {
    text = "Percent of " +
           (hasPixels ? "all directions."
                      : "the " + CountedUnit(content, all) + ".") +
           " No path: " + ReasonsOf(content) + ".";
  } else {
    text = "Percent of the " + (hasPixels ? unit : CountedUnit(content, paths));
    if (paths != all && !content.HasSeveralEvents()) {
      text += " with a light path";
    }
    if (paths != all) {
      text += "; no path: of all " +
              (hasPixels ? unit
               : content.HasSeveralEvents()
                   ? WordOfCount(all) + " pairs of event and PMT"
                   : CountedUnit(content, all));
    }
    text += '.';
  }
  const std::size_t hidden = CountHidden(content);
  if (hidden > 0) {
    text +=
        " Not drawn, because without a direction: " + Plural(hidden, "PMT") +
        ".";
  }
  return text;
}

std::string ReasonsOf(const MapContent& content) {
  const auto& counts = content.counts.withoutPath;
  std::string text;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    if (counts[i] == 0) continue;
    const auto reason = static_cast<DU::eVerdict>(
        i + static_cast<std::size_t>(DU::eVerdict::kTotalReflection));
    text += text.empty() ? "" : ", ";
    text += DU::NameOf(reason);
  }
  return text.empty() ? "total reflection" : text;
}

std::string DescriptionOf(const MapContent& content) {
  const Palette& palette = GetPalette();
  const auto& paths = content.counts.paths;
  std::string text = SummaryOf(content) + "; " + ConditionsOf(content) + "; " +
                     TablesOf(content) + ". " + CaptionOf(content);
  if (content.IsComparison()) return text;
  for (const auto component : DU::kShadowingComponents) {
    text += " " + palette.Of(component).name + ": ";
    const auto state =
        content.components[static_cast<std::size_t>(component) - 1];
    text += state == eComponentState::kNotLoaded ? "not loaded"
            : state == eComponentState::kNothingToTest
                ? "nothing to test"
                : WordOfShare(paths.Of(component), paths.Paths());
    text += '.';
  }
  text += " " + palette.clear + ": " +
          WordOfShare(paths.Of(DU::eShadowingComponent::kNone), paths.Paths()) +
          ". " + palette.noPath + ": " +
          WordOfShare(content.counts.WithoutPath(), content.counts.All()) + ".";
  return text;
}

}  // namespace ZARN::Display
