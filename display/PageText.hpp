#pragma once

#include <string>
#include <vector>

#include "display/PageContent.hpp"
#include "display/PageItems.hpp"
#include "display/PageRows.hpp"
#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathCalculator.hpp"

namespace ZARN::Display {

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
