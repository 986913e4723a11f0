#pragma once

#include <ROOT/RDF/RInterface.hxx>
#include <string>
#include <vector>

#include "lightpath/LightPath.hpp"

namespace ZARN::Testing {

/// What the columns of a frame are.
enum class eCoordinates { kDouble, kFloat, kVectors, kFloatVectors };
enum class eTypes { kNumbers, kBytes, kNames };
enum class eFormat { kTree, kNTuple };

/// Light paths as a frame, whose column "row" is the number of the path.
///
/// @param paths  must outlive the frame
::ROOT::RDF::RNode FrameOf(const std::vector<DU::LightPath>& paths,
                           eCoordinates coordinates = eCoordinates::kDouble,
                           eTypes types = eTypes::kNumbers);

/// The same light paths as they are after the loss of digits.
std::vector<DU::LightPath> InSinglePrecision(std::vector<DU::LightPath> paths);

/// Writes a frame to a file with clusters of some 1,000 rows, and gives the
/// frame of that file. Without threads, which would change the order.
::ROOT::RDF::RNode ThroughFile(::ROOT::RDF::RNode frame,
                               const std::string& file, eFormat format);

/// Use so many threads for all frames that are made from now on.
void UseThreads(unsigned int threads);

/// The values of a column by the column "row".
std::vector<int> ByRow(::ROOT::RDF::RNode frame, const std::string& column);

}  // namespace ZARN::Testing
