import { blendPoses, type Pose } from './pose';

const DURATION = 300;

/** Moves of the camera: one at a time, slowing down towards the end. */
export class Flight {
  private from: Pose | null = null;
  private to: Pose | null = null;
  private start = 0;

  /** Where the flight ends, or null. */
  get target(): Pose | null {
    return this.to;
  }

  begin(from: Pose, to: Pose, now: number): void {
    [this.from, this.to, this.start] = [from, to, now];
  }

  stop(): void {
    this.from = this.to = null;
  }

  /** The pose at time @p now, ms; the last one ends the flight. */
  step(now: number): Pose | null {
    if (!this.from || !this.to) return null;
    const part = Math.min(Math.max((now - this.start) / DURATION, 0), 1);
    const pose = blendPoses(this.from, this.to, 1 - (1 - part) ** 3);
    if (part < 1) return pose;
    const end = this.to;
    this.stop();
    return end;
  }
}
