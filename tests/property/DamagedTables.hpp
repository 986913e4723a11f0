#pragma once

#include "tests/property/Random.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::Testing {

/// Remove one of the fields that the calculator reads for a component, or
/// replace its value by one of another type.
void DamageAField(Tables& tables, Random& random);

/// The same for a field of the vessel, without which a run cannot begin.
void DamageAVesselField(Tables& tables, Random& random);

/// Remove whole components, so that every path reaches those after them in the
/// order of the tests; half of the time all but one, so that only its limits
/// are searched.
void LeaveSomeOut(Tables& tables, Random& random);

}  // namespace ZARN::Testing
