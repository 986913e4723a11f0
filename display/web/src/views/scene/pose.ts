import type { Vec3 } from '../../data/page';
import { lengthOf } from '../../data/vectors';
import { addScaled } from './vectors';

/**
 * Where the view is seen from: an eye at a distance from a pivot, which stays in
 * the middle of the picture. With distance 0 the eye is at the pivot and looks
 * around.
 */
export interface Pose {
  pivot: Vec3;
  /** mm */
  distance: number;
  /** Of the eye as seen from the pivot, rad. */
  azimuth: number;
  elevation: number;
  /** Focal length without zoom, in halves of the picture's smaller side. */
  focal: number;
  zoom: number;
  /** Of the pivot from the middle of the picture, right and down; as focal. */
  offset: readonly [number, number];
}

/** A little above the middle: below it is the caption. */
const HOME_OFFSET = [0, -0.02] as const;
/** In radii of the PMTs. */
const FIRST_DISTANCE = 3.9;
/** Part of the picture's smaller side that the PMTs fill. */
const FILLED = 0.89;
const LARGEST_ELEVATION = Math.PI / 2;
const SMALLEST_ZOOM = 0.5;
const LARGEST_ZOOM = 40;

/** The first view: all PMTs, from a little above. @p radius in mm */
export function firstPose(radius: number): Pose {
  return {
    pivot: [0, 0, 0],
    distance: FIRST_DISTANCE * radius,
    azimuth: (-57 * Math.PI) / 180,
    elevation: (16 * Math.PI) / 180,
    // The silhouette of a sphere has the sine of its half angle R / distance.
    focal: FILLED * Math.sqrt(FIRST_DISTANCE ** 2 - 1),
    zoom: 1,
    offset: HOME_OFFSET,
  };
}

/** An eye at @p from that looks at @p to, with 60 degrees of view. */
export function poseAlong(from: Vec3, to: Vec3): Pose {
  const back = addScaled(from, to, -1);
  return {
    pivot: from,
    distance: 0,
    azimuth: Math.atan2(back[1], back[0]),
    elevation: Math.asin(back[2] / (lengthOf(back) || 1)),
    focal: Math.sqrt(3),
    zoom: 1,
    offset: [0, 0],
  };
}

/** Turn so that what is behind the pivot moves right and down by these angles. */
export function turnPose(pose: Pose, right: number, down: number): Pose {
  const elevation = pose.elevation - down;
  return {
    ...pose,
    azimuth: pose.azimuth + right,
    elevation: Math.min(Math.max(elevation, -LARGEST_ELEVATION), LARGEST_ELEVATION),
  };
}

/**
 * Zoom by @p factor around a point of the picture, in the unit of the offset from
 * the middle. Zooming out brings the pivot back.
 */
export function zoomPose(
  pose: Pose,
  factor: number,
  around: readonly [number, number],
): Pose {
  const zoom = Math.min(Math.max(pose.zoom * factor, SMALLEST_ZOOM), LARGEST_ZOOM);
  const scale = zoom / pose.zoom;
  const home = pose.distance > 0 ? HOME_OFFSET : ([0, 0] as const);
  const away = [0, 1].map((axis) => {
    const point = around[axis] ?? 0;
    return point - (point - (pose.offset[axis] ?? 0)) * scale - (home[axis] ?? 0);
  });
  // As far as zooming in around the edge of the picture carries the pivot.
  const limit = Math.max(zoom - 1, 0);
  const length = Math.hypot(...away);
  const keep = length > limit ? limit / length : 1;
  return {
    ...pose,
    zoom,
    offset: [home[0] + (away[0] ?? 0) * keep, home[1] + (away[1] ?? 0) * keep],
  };
}

/** The pose at a part of the way, 0 to 1, turning the shorter way around. */
export function blendPoses(a: Pose, b: Pose, part: number): Pose {
  const mix = (from: number, to: number): number => from + (to - from) * part;
  const half = Math.PI;
  const turn = b.azimuth - a.azimuth;
  const shortest = turn - 2 * half * Math.round(turn / (2 * half));
  return {
    pivot: addScaled(a.pivot, addScaled(b.pivot, a.pivot, -1), part),
    distance: mix(a.distance, b.distance),
    azimuth: a.azimuth + shortest * part,
    elevation: mix(a.elevation, b.elevation),
    focal: Math.exp(mix(Math.log(a.focal), Math.log(b.focal))),
    zoom: Math.exp(mix(Math.log(a.zoom), Math.log(b.zoom))),
    offset: [mix(a.offset[0], b.offset[0]), mix(a.offset[1], b.offset[1])],
  };
}
