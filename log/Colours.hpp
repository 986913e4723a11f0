#pragma once

#include <unistd.h>

namespace ZARN {

/// Terminal colours for text on standard output.
///
/// Every translation unit that includes this header has its own copies
/// (internal linkage), set when its statics are initialised: the escape
/// sequence if standard output is a terminal, otherwise the empty string.
/// isatty is called once per colour, in this order. Names with an extra B at
/// the start (BBLACK, BRED, ...) are the bold variants; CLR resets.
///
/// The system's own messages have no colour: their exact texts are compared,
/// logged and searched.
const char* const BLACK = isatty(1) ? "\033[30m" : "";
const char* const BBLACK = isatty(1) ? "\033[30;1m" : "";
const char* const RED = isatty(1) ? "\033[31m" : "";
const char* const BRED = isatty(1) ? "\033[31;1m" : "";
const char* const GREEN = isatty(1) ? "\033[32m" : "";
const char* const BGREEN = isatty(1) ? "\033[32;1m" : "";
const char* const YELLOW = isatty(1) ? "\033[33m" : "";
const char* const BYELLOW = isatty(1) ? "\033[33;1m" : "";
const char* const BLUE = isatty(1) ? "\033[34m" : "";
const char* const BBLUE = isatty(1) ? "\033[34;1m" : "";
const char* const MAGENTA = isatty(1) ? "\033[35m" : "";
const char* const BMAGENTA = isatty(1) ? "\033[35;1m" : "";
const char* const CYAN = isatty(1) ? "\033[36m" : "";
const char* const BCYAN = isatty(1) ? "\033[36;1m" : "";
const char* const WHITE = isatty(1) ? "\033[37m" : "";
const char* const BWHITE = isatty(1) ? "\033[37;1m" : "";
const char* const CLR = isatty(1) ? "\033[m" : "";

}  // namespace ZARN
