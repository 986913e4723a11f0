#pragma once

namespace ZARN::Display {

/// The text of palette.json; the build makes its source from the file.
extern const char* const kPaletteJson;

}  // namespace ZARN::Display
