import type { Vec3 } from '../../data/page';
import { dot } from '../../data/vectors';
import type { Pose } from './pose';
import { addScaled } from './vectors';

/** Nothing is drawn closer to the eye, mm. */
export const NEAREST = 20;

/** A point in the picture, CSS pixels from its top left; depth in mm. */
export interface Projected {
  x: number;
  y: number;
  depth: number;
}

/** Where points of the detector are in the picture of a pose. */
export class Projector {
  readonly eye: Vec3;
  readonly right: Vec3;
  readonly up: Vec3;
  /** Against the direction of view. */
  readonly back: Vec3;
  /** Focal length, and the middle of the picture's perspective, CSS pixels. */
  readonly focal: number;
  readonly x: number;
  readonly y: number;

  constructor(
    pose: Pose,
    readonly width: number,
    readonly height: number,
  ) {
    const [ca, sa] = [Math.cos(pose.azimuth), Math.sin(pose.azimuth)];
    const [ce, se] = [Math.cos(pose.elevation), Math.sin(pose.elevation)];
    this.back = [ce * ca, ce * sa, se];
    this.right = [-sa, ca, 0];
    this.up = [-se * ca, -se * sa, ce];
    this.eye = addScaled(pose.pivot, this.back, pose.distance);
    const half = Math.min(width, height) / 2;
    this.focal = half * pose.focal * pose.zoom;
    this.x = width / 2 + half * pose.offset[0];
    this.y = height / 2 + half * pose.offset[1];
  }

  project(point: Vec3): Projected {
    const from = addScaled(point, this.eye, -1);
    const depth = -dot(from, this.back);
    return {
      x: this.x + (this.focal * dot(from, this.right)) / depth,
      y: this.y - (this.focal * dot(from, this.up)) / depth,
      depth,
    };
  }

  /** How far the plane through the centre, across the view, is from the eye. */
  centreDepth(): number {
    return dot(this.eye, this.back);
  }

  /**
   * Whether a PMT that faces the centre shows its face. One at the centre faces
   * every way.
   */
  showsFace(pmt: Vec3): boolean {
    return dot(addScaled(this.eye, pmt, -1), pmt) <= 0;
  }

  /** From the detector to the eye's coordinates, row by row. */
  viewMatrix(): Matrix {
    const { right, up, back, eye } = this;
    return [
      ...[...right, -dot(right, eye)],
      ...[...up, -dot(up, eye)],
      ...[...back, -dot(back, eye)],
      ...[0, 0, 0, 1],
    ] as unknown as Matrix;
  }

  /** From the eye's coordinates to those of the graphics, row by row. */
  projectionMatrix(): Matrix {
    const far = 1e7;
    const { width, height, focal, x, y } = this;
    const range = far - NEAREST;
    return [
      ...[(2 * focal) / width, 0, 1 - (2 * x) / width, 0],
      ...[0, (2 * focal) / height, (2 * y) / height - 1, 0],
      ...[0, 0, -(far + NEAREST) / range, (-2 * far * NEAREST) / range],
      ...[0, 0, -1, 0],
    ] as unknown as Matrix;
  }
}

type Row = [number, number, number, number];
export type Matrix = [...Row, ...Row, ...Row, ...Row];
