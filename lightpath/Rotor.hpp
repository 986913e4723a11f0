#pragma once

namespace ZARN::DU {

/// A rotation in a plane as (cosine, sine). Multiplying rotors adds angles
/// without arc functions. (std::complex is slower: it checks for infinities.)
struct Rotor {
  double Cosine = 1.0;
  double Sine = 0.0;

  /// The inverse rotation.
  Rotor Back() const { return {Cosine, -Sine}; }

  friend Rotor operator*(const Rotor& a, const Rotor& b) {
    return {a.Cosine * b.Cosine - a.Sine * b.Sine,
            a.Sine * b.Cosine + a.Cosine * b.Sine};
  }
};

}  // namespace ZARN::DU
