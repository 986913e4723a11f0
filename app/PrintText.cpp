#include "app/PrintText.hpp"

#include <optional>

#include "io/OutputFile.hpp"

namespace ZARN::App {

void PrintText(const std::string& text) {
  IO::OutputFile output(std::nullopt);
  output.Write(text);
  output.Finish();
}

}  // namespace ZARN::App
