import type { Medium, Page, Vec3 } from './page';

/** A light path as the program computes it, to 0.1 mm and 0.001 ns. */
export interface LightPath {
  /** From the event over the vessel's surfaces to the PMT, mm. */
  points: Vec3[];
  /** The medium of each segment: one fewer than points. */
  media: Medium[];
  /** By medium, mm. */
  lengths: [number, number, number];
  /** mm */
  length: number;
  /** Time of flight, ns. */
  time: number;
  /** Angle of incidence on a PMT that faces the centre, degrees. */
  angle: number;
}

/** The light path of a pair; null if there is none or the page does not keep it. */
export declare function tracePath(
  page: Page,
  event: number,
  pmt: number,
  reflected: boolean,
): LightPath | null;
