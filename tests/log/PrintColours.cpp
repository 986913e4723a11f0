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

/// Prints every colour; the test runs it with and without a terminal as
/// standard output.
int main() { ZARN::PrintColours(); }
