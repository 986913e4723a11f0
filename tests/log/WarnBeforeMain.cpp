#include "log/Log.hpp"

namespace {

/// Writes before main. This unit includes nothing that creates std::cerr, and
/// is initialised before units that do.
struct Warner {
  Warner() { ZARN::warn << "written before main\n"; }
};

const Warner kWarner;

}  // namespace

int main() {}
