#include "log/Log.hpp"

namespace {

/// This unit includes nothing that makes std::cerr, and is initialised before
/// those that do.
struct Warner {
  Warner() { ZARN::warn << "written before main\n"; }
};

const Warner kWarner;

}  // namespace

int main() {}
