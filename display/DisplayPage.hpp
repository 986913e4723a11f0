#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "display/MapContent.hpp"
#include "display/PageContent.hpp"
#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "scan/VerdictCounts.hpp"

namespace ZARN::Display {

/// The most pairs of event and PMT on a page.
inline constexpr std::uint64_t kMostPagePairs = 40'000'000;

struct PageSettings {
  std::size_t threads = 1;  ///< at least one; does not change the page
  /// Called often, on every thread; may throw to end the work.
  std::function<void()> checkForStop = nullptr;
  /// Called from time to time on the caller's thread, with the number of pairs
  /// judged so far.
  std::function<void(std::uint64_t pairs)> onProgress = nullptr;
};

/// A three-dimensional view of a detector and of the light from events to PMTs,
/// as one HTML file that needs no other.
struct DisplayPage {
  std::string html;
  bool hasPaths = false;          ///< else only verdicts
  std::size_t storedPaths = 0;    ///< those that an angle does not give
  MapCounts direct;               ///< of direct light
  Scan::VerdictCounts reflected;  ///< of light paths with a reflection
};

/// Whether this build has the program of the page.
bool CanMakePages();

/// Whether a page with light paths is at most 20 MB, which a browser opens in
/// an instant.
bool HasRoomForPaths(const PageContent& content,
                     const DU::LightPathCalculator& lightPath);

/// Judge the light from each event to each PMT, and make the page.
///
/// A page without room for light paths holds only the verdicts. Uses memory for
/// the compressed page, about twice.
///
/// @param shadowing  BeginOfRun was called
/// @param lightPath  BeginOfRun was called
/// @throws std::logic_error unless CanMakePages; what a callback throws
/// @pre at least one event and one PMT, at most kMostPagePairs pairs
DisplayPage MakePage(const PageContent& content,
                     const DU::ShadowingCalculator& shadowing,
                     const DU::LightPathCalculator& lightPath,
                     const PageSettings& settings);

}  // namespace ZARN::Display
