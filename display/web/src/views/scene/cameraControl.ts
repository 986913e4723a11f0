import type { Vec3 } from '../../data/page';
import { Flight } from './flight';
import { firstPose, type Pose, poseAlong, turnPose, zoomPose } from './pose';
import { Projector } from './projector';

const KEY_STEP = (5 * Math.PI) / 180;
const ZOOM_STEP = 1.3;

/** Turns and zooms the view: at once as the pointer moves, else in a flight. */
export class CameraControl {
  private pose: Pose;
  private readonly flight = new Flight();
  private width = 0;
  private height = 0;

  /**
   * @param radius    of the PMTs around the centre, mm
   * @param onChange  is called when the view must be drawn again
   */
  constructor(
    private readonly radius: number,
    private readonly onChange: () => void,
  ) {
    this.pose = firstPose(radius);
  }

  setSize(width: number, height: number): void {
    [this.width, this.height] = [width, height];
  }

  projector(): Projector {
    return new Projector(this.pose, this.width, this.height);
  }

  /** Go on with a flight; true if it goes on after this. */
  advance(now: number): boolean {
    this.pose = this.flight.step(now) ?? this.pose;
    return this.flight.target !== null;
  }

  flyFirst(): void {
    this.fly(firstPose(this.radius));
  }

  flyAlong(from: Vec3, to: Vec3): void {
    this.fly(poseAlong(from, to));
  }

  /** @param steps  as of a button; negative: zoom out */
  flyZoom(steps: number): void {
    this.fly(zoomPose(this.target(), ZOOM_STEP ** steps, [0, 0]));
  }

  /** In steps as of an arrow key. */
  flyTurn(right: number, up: number): void {
    this.fly(turnPose(this.target(), right * KEY_STEP, -up * KEY_STEP));
  }

  /** Turn with the pointer: what is seen beyond the pivot moves as far, pixels. */
  drag(right: number, down: number): void {
    const { distance } = this.pose;
    const lever = distance > 0 ? (distance + this.radius) / this.radius : 1;
    const scale = lever / this.projector().focal;
    this.show(turnPose(this.pose, right * scale, down * scale));
  }

  /** Zoom around a place in the view, pixels. */
  zoomAround(factor: number, x: number, y: number): void {
    const half = Math.min(this.width, this.height) / 2 || 1;
    const around = [(x - this.width / 2) / half, (y - this.height / 2) / half] as const;
    this.show(zoomPose(this.pose, factor, around));
  }

  private target(): Pose {
    return this.flight.target ?? this.pose;
  }

  private show(pose: Pose): void {
    this.flight.stop();
    this.pose = pose;
    this.onChange();
  }

  private fly(pose: Pose): void {
    if (matchMedia('(prefers-reduced-motion: reduce)').matches) {
      this.show(pose);
      return;
    }
    this.flight.begin(this.pose, pose, performance.now());
    this.onChange();
  }
}
