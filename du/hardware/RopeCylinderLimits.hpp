#pragma once

namespace ZARN::DU {

/// The cylinder around the z axis on which ropes stand, and their height.
struct RopeCylinderLimits {
  double radius;  ///< mm
  double height;  ///< above and below z = 0, mm
};

}  // namespace ZARN::DU
