#pragma once

#include <string>
#include <vector>

#include "display/PageHardware.hpp"
#include "display/PageRows.hpp"
#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathCalculator.hpp"

namespace ZARN::Display {

/// What a page is about.
struct PageContent {
  std::string version;  ///< of the program
  std::string title;    ///< empty: the usual one
  std::string detector;
  std::string fingerprint;  ///< of the tables
  int run = 0;
  std::vector<std::string> pmtNames;
  std::vector<TVector3> pmts;  ///< mm
  std::vector<std::string> eventNames;
  std::vector<TVector3> events;  ///< mm
  bool withReflections = false;
};

/// The JSON text of a page, as display/web/src/data/page.ts describes it, safe
/// within a script element: without any "<". What is not UTF-8 in a name
/// becomes U+FFFD.
///
/// @param shadowing  BeginOfRun was called
/// @param lightPath  BeginOfRun was called
/// @param hasPaths   whether the page holds light paths
std::string PageTextOf(const PageContent& content,
                       const DU::ShadowingCalculator& shadowing,
                       const DU::LightPathCalculator& lightPath,
                       const PageItems& items, bool hasPaths,
                       const std::vector<StoredPath>& stored);

}  // namespace ZARN::Display
