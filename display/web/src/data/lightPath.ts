import { Verdict } from './page';
import type { Medium, Page, PageText, StoredPath, Vec3 } from './page';
import { traceSites } from './traceSites';
import { cross, dot, lengthOf, pointAt, subtract } from './vectors';

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

/** mm/ns, by definition. */
const SPEED_OF_LIGHT = 299.792458;

/** The light path of a pair; null if there is none or the page does not keep it. */
export function tracePath(
  page: Page,
  event: number,
  pmt: number,
  reflected: boolean,
): LightPath | null {
  const light = reflected ? page.reflected : page.direct;
  if (!light?.paths) return null;
  const pair = event * page.text.pmtNames.length + pmt;
  const verdict = light.verdicts[pair] ?? Verdict.NoReflectedPath;
  if (verdict >= Verdict.TotalReflection) return null;
  const stored = storedPathOf(page.text, pair, reflected);
  if (stored) {
    const points = Array.from({ length: stored.media.length + 1 }, (_, i) =>
      pointAt(stored.points, i),
    );
    return measure(page.text, points, stored.media);
  }
  const angle = light.paths.angles[pair] ?? NaN;
  if (!Number.isFinite(angle)) return null;
  const sites = traceSites(
    page.text,
    pointAt(page.eventPositions, event),
    pointAt(page.pmtPositions, pmt),
    angle,
    reflected,
  );
  return measure(page.text, sites.points, sites.media);
}

/** Of a page: the stored paths by number of pair, direct and reflected. */
const storedPaths = new WeakMap<
  PageText,
  [Map<number, StoredPath>, Map<number, StoredPath>]
>();

function storedPathOf(
  text: PageText,
  pair: number,
  reflected: boolean,
): StoredPath | undefined {
  let found = storedPaths.get(text);
  if (!found) {
    found = [new Map(), new Map()];
    for (const path of text.storedPaths) {
      const key = path.event * text.pmtNames.length + path.pmt;
      found[path.reflected ? 1 : 0].set(key, path);
    }
    storedPaths.set(text, found);
  }
  return found[reflected ? 1 : 0].get(pair);
}

function measure(text: PageText, points: Vec3[], media: Medium[]): LightPath {
  const lengths: [number, number, number] = [0, 0, 0];
  let longest = 0;
  /** Radius times sine of the angle to it, times index: the same all along. */
  let invariant = 0;
  let from = points[0] ?? ([NaN, NaN, NaN] as const);
  let direction = from;
  for (const [i, medium] of media.entries()) {
    const to = points[i + 1] ?? from;
    direction = subtract(to, from);
    const length = lengthOf(direction);
    lengths[medium] += length;
    if (length > longest) {
      // The longest segment gives the invariant best.
      longest = length;
      const lever = lengthOf(cross(from, direction)) / length;
      invariant = text.refractiveIndices[medium] * lever;
    }
    from = to;
  }
  const groups = text.groupIndices;
  const opticalLength =
    lengths[0] * groups[0] + lengths[1] * groups[1] + lengths[2] * groups[2];
  const sine = Math.min(1, invariant / (text.refractiveIndices[2] * lengthOf(from)));
  const cosine = Math.sqrt((1 - sine) * (1 + sine));
  // Only light that meets no surface can come from outside to the PMT.
  const isFromOutside = media.length === 1 && dot(direction, from) < 0;
  return {
    points,
    media,
    lengths,
    length: lengths[0] + lengths[1] + lengths[2],
    time: opticalLength / SPEED_OF_LIGHT,
    angle: (180 / Math.PI) * Math.atan2(sine, isFromOutside ? -cosine : cosine),
  };
}
