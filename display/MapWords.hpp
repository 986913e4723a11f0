#pragma once

#include <cstdint>
#include <string>

#include "display/MapContent.hpp"

namespace ZARN::Display {

/// A number with a true minus sign and at most three decimals; from 10^9 on
/// with an exponent.
std::string WordOf(double number);

/// A count with thousands separators; from 100 million on in powers of ten.
std::string WordOfCount(std::uint64_t count);

/// "39.4 %"; "< 0.1 %" for little and "> 99.9 %" for nearly all; an en dash if
/// there is nothing to take a share of.
std::string WordOfShare(std::uint64_t count, std::uint64_t all);

/// "PMTs", "directions" or "light paths": what a map counts.
std::string UnitOf(const MapContent& content);

/// The title given, or one made from the content.
std::string TitleOf(const MapContent& content);

/// How much is shadowed, or has changed: the first part of the subtitle.
std::string SummaryOf(const MapContent& content);

/// Run, tolerance and wavelength: "run 0", "tolerance 150 mm", "400 nm",
/// separated as in a subtitle; the tables follow.
std::string ConditionsOf(const MapContent& content);

/// The tables, or the two that are compared.
std::string TablesOf(const MapContent& content);

/// How to look at the map.
std::string CaptionOf(const MapContent& content);

/// What the percents of the legend are of, on a comparison why there is no
/// path, and which PMTs are not drawn.
std::string FootnoteOf(const MapContent& content);

/// The reasons why something has no path: "total reflection".
std::string ReasonsOf(const MapContent& content);

/// How many verdicts have changed.
std::uint64_t ChangesIn(const MapContent& content);

/// How many verdicts a comparison has left as they were.
std::uint64_t UnchangedIn(const MapContent& content);

/// The whole map in words, for those who cannot see it.
std::string DescriptionOf(const MapContent& content);

/// Between parts of a subtitle. No-break spaces: SVG would join others.
inline constexpr char kSeparator[] = "\u00A0\u00A0 \u00B7\u00A0\u00A0 ";

}  // namespace ZARN::Display
