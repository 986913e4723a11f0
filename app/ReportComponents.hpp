#pragma once

namespace ZARN {

class TableSet;

namespace DU {
class ShadowingCalculator;
}

namespace App {

struct RunOptions;

/// Print to standard error which components are off or have nothing to test,
/// one line each with the first thing that is missing in their tables; the last
/// line says which command tells more. The fixed messages of the calculator do
/// not name what is missing.
///
/// @param calculator  its run has begun with @p tables
void ReportComponents(const RunOptions& options,
                      const DU::ShadowingCalculator& calculator,
                      const TableSet& tables);

}  // namespace App
}  // namespace ZARN
