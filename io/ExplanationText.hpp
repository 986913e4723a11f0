#pragma once

#include <string>

#include "du/ShadowingExplanation.hpp"
#include "du/Verdict.hpp"
#include "lightpath/LightPathCalculator.hpp"

namespace ZARN::IO {

/// How all components judge a light path, in plain words and lines. Numbers
/// have up to nine digits.
///
/// @param light  holds the path that was explained; with a run (BeginOfRun) its
///               lengths, time and angle are written, too
std::string ExplanationText(const DU::LightPathCalculator& light,
                            const DU::ShadowingExplanation& explanation);

/// The same as a JSON object, with all digits; numbers that are not finite are
/// null. docs/verdicts.md lists the keys.
std::string ExplanationJson(const DU::LightPathCalculator& light,
                            const DU::ShadowingExplanation& explanation);

/// What is written if there is no light path: the reason, as a line or as a
/// JSON object.
///
/// @pre HasPath(verdict) is false
std::string NoPathText(DU::eVerdict verdict);
std::string NoPathJson(DU::eVerdict verdict);

}  // namespace ZARN::IO
