#pragma once

namespace ZARN::DU {

/// Where ropes stand: a cylinder about the z axis, and up to which height.
struct RopeCylinderLimits {
  double radius;  ///< mm
  double height;  ///< up and down, mm
};

}  // namespace ZARN::DU
