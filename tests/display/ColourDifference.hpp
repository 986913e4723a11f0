#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include "display/Drawing.hpp"

namespace ZARN::Display {

/// How eyes tell colours apart: for the test of the palette.

using Triple = std::array<double, 3>;
using Matrix = std::array<Triple, 3>;

inline Triple Times(const Matrix& matrix, const Triple& vector) {
  Triple product = {};
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) {
      product[row] += matrix[row][column] * vector[column];
    }
  }
  return product;
}

/// Red, green and blue from 0 to 1, proportional to light (sRGB, IEC
/// 61966-2-1).
inline Triple LinearOf(const Colour& colour) {
  const auto linear = [](double part) {
    const double value = part / 255.0;
    return value <= 0.04045 ? value / 12.92
                            : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return {linear(colour.red), linear(colour.green), linear(colour.blue)};
}

/// Contrast of two colours, 1 to 21 (WCAG 2.2).
inline double ContrastOf(const Colour& one, const Colour& other) {
  const auto luminance = [](const Colour& colour) {
    const Triple part = LinearOf(colour);
    return 0.2126 * part[0] + 0.7152 * part[1] + 0.0722 * part[2];
  };
  const double a = luminance(one) + 0.05;
  const double b = luminance(other) + 0.05;
  return std::max(a, b) / std::min(a, b);
}

/// Full-strength colour blindness, of linear colours: G. M. Machado et al.
/// (2009), IEEE Trans. Vis. Comput. Graph. 15, 1291.
inline constexpr Matrix kNormalVision = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
inline constexpr Matrix kProtanopia = {{{0.152286, 1.052583, -0.204868},
                                        {0.114503, 0.786281, 0.099216},
                                        {-0.003882, -0.048116, 1.051998}}};
inline constexpr Matrix kDeuteranopia = {{{0.367322, 0.860646, -0.227968},
                                          {0.280085, 0.672501, 0.047413},
                                          {-0.011820, 0.042940, 0.968881}}};
inline constexpr Matrix kTritanopia = {{{1.255528, -0.076749, -0.178779},
                                        {-0.078411, 0.930809, 0.147602},
                                        {0.004733, 0.691367, 0.303900}}};

/// L*, a*, b* (CIE 1976, D65) of a colour as such eyes see it.
inline Triple LabOf(const Colour& colour, const Matrix& vision) {
  constexpr Matrix kToXyz = {{{0.4124564, 0.3575761, 0.1804375},
                              {0.2126729, 0.7151522, 0.0721750},
                              {0.0193339, 0.1191920, 0.9503041}}};
  Triple seen = Times(vision, LinearOf(colour));
  for (double& part : seen) part = std::clamp(part, 0.0, 1.0);
  const Triple xyz = Times(kToXyz, seen);
  const auto f = [](double t) {
    return t > 216.0 / 24389.0 ? std::cbrt(t)
                               : (24389.0 / 27.0 * t + 16.0) / 116.0;
  };
  const double x = f(xyz[0] / 0.95047);
  const double y = f(xyz[1]);
  const double z = f(xyz[2] / 1.08883);
  return {116.0 * y - 16.0, 500.0 * (x - y), 200.0 * (y - z)};
}

/// CIEDE2000, the difference of two colours: G. Sharma, W. Wu, E. N. Dalal
/// (2005), Color Res. Appl. 30, 21, equations 2 to 22.
inline double DifferenceOf(const Triple& one, const Triple& other) {
  constexpr double kPi = 3.14159265358979323846;
  constexpr double kDegree = kPi / 180.0;
  const double seventh = std::pow(25.0, 7.0);
  const double mean =
      0.5 * (std::hypot(one[1], one[2]) + std::hypot(other[1], other[2]));
  const double g =
      0.5 *
      (1.0 - std::sqrt(std::pow(mean, 7.0) / (std::pow(mean, 7.0) + seventh)));
  const double a1 = (1.0 + g) * one[1];
  const double a2 = (1.0 + g) * other[1];
  const double c1 = std::hypot(a1, one[2]);
  const double c2 = std::hypot(a2, other[2]);
  const auto hue = [&](double a, double b) {
    if (a == 0.0 && b == 0.0) return 0.0;
    const double angle = std::atan2(b, a) / kDegree;
    return angle < 0.0 ? angle + 360.0 : angle;
  };
  const double h1 = hue(a1, one[2]);
  const double h2 = hue(a2, other[2]);
  const bool hasHues = c1 * c2 != 0.0;
  double step = hasHues ? h2 - h1 : 0.0;
  if (step > 180.0) step -= 360.0;
  if (step < -180.0) step += 360.0;
  double h = h1 + h2;
  if (hasHues) {
    if (std::abs(h1 - h2) > 180.0) h += h < 360.0 ? 360.0 : -360.0;
    h *= 0.5;
  }
  const double deltaL = other[0] - one[0];
  const double deltaC = c2 - c1;
  const double deltaH =
      2.0 * std::sqrt(c1 * c2) * std::sin(0.5 * step * kDegree);
  const double l = 0.5 * (one[0] + other[0]) - 50.0;
  const double c = 0.5 * (c1 + c2);
  const double t = 1.0 - 0.17 * std::cos((h - 30.0) * kDegree) +
                   0.24 * std::cos(2.0 * h * kDegree) +
                   0.32 * std::cos((3.0 * h + 6.0) * kDegree) -
                   0.20 * std::cos((4.0 * h - 63.0) * kDegree);
  const double turn = 30.0 * std::exp(-std::pow((h - 275.0) / 25.0, 2.0));
  const double rotation =
      -2.0 * std::sqrt(std::pow(c, 7.0) / (std::pow(c, 7.0) + seventh)) *
      std::sin(2.0 * turn * kDegree);
  const double byL = deltaL / (1.0 + 0.015 * l * l / std::sqrt(20.0 + l * l));
  const double byC = deltaC / (1.0 + 0.045 * c);
  const double byH = deltaH / (1.0 + 0.015 * c * t);
  return std::sqrt(byL * byL + byC * byC + byH * byH + rotation * byC * byH);
}

}  // namespace ZARN::Display
