#pragma once

#include "tests/property/Random.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::Testing {

/// Remove one of the fields that the calculator reads for a component, or give
/// it a value of another kind.
void DamageAField(Tables& tables, Random& random);

/// The same for a field of the vessel, without which a run cannot begin.
void DamageAVesselField(Tables& tables, Random& random);

/// Take whole components away, so that those after them in the order of the
/// tests are asked about every path; half of the time all but one, so that only
/// its limits are looked for.
void LeaveSomeOut(Tables& tables, Random& random);

}  // namespace ZARN::Testing
