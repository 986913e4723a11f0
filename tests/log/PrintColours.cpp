#include <iostream>

#include "log/Log.hpp"

namespace ZARN {
namespace {

void PrintColours() {
  for (const char* const colour :
       {BLACK, BBLACK, RED, BRED, GREEN, BGREEN, YELLOW, BYELLOW, BLUE, BBLUE,
        MAGENTA, BMAGENTA, CYAN, BCYAN, WHITE, BWHITE, CLR}) {
    std::cout << colour << ",";
  }
}

}  // namespace
}  // namespace ZARN

/// Prints every colour, for the test that runs it with standard output on a
/// terminal and off it.
int main() { ZARN::PrintColours(); }
