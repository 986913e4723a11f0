#include "io/Origin.hpp"

#include <nlohmann/json.hpp>

namespace ZARN::IO {

std::string Describe(const Origin& origin) {
  nlohmann::ordered_json description = {
      {"program", origin.program},
      {"version", origin.version},
      {"run", origin.run},
  };
  if (origin.tolerances.empty()) {
    description["tolerance"] = origin.tolerance;
  } else {
    description["tolerances"] = origin.tolerances;
  }
  if (origin.wavelength.has_value()) {
    description["wavelength"] = *origin.wavelength;
  }
  if (origin.smearing.has_value()) {
    description["smearing"] = {{"sigma", origin.smearing->sigma},
                               {"samples", origin.smearing->samples},
                               {"seed", origin.smearing->seed}};
  }
  description["fingerprint"] = origin.fingerprint;
  return description.dump();
}

}  // namespace ZARN::IO
