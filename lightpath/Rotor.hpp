#pragma once

namespace ZARN::DU {

/// A turn in a plane as (cosine, sine): angles add as rotors multiply, which
/// spares the arc functions. (The library's complex product checks for
/// infinities.)
struct Rotor {
  double Cosine = 1.0;
  double Sine = 0.0;

  /// The turn the other way.
  Rotor Back() const { return {Cosine, -Sine}; }

  friend Rotor operator*(const Rotor& a, const Rotor& b) {
    return {a.Cosine * b.Cosine - a.Sine * b.Sine,
            a.Sine * b.Cosine + a.Cosine * b.Sine};
  }
};

}  // namespace ZARN::DU
