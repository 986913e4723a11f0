import type { LightPath } from '../../data/lightPath';
import type { Medium, Vec3 } from '../../data/page';
import { formatMetres, formatMillimetres } from '../../model/format';
import { element } from '../dom';

/** A part of a light path in one medium. */
export interface PathSegment {
  medium: Medium;
  /** mm */
  length: number;
}

const MEDIUM_NAMES = ['Liquid', 'Wall', 'Water'] as const;
const MEDIUM_CLASSES = ['card-liquid', 'card-wall', 'card-water'] as const;

function distance(from: Vec3 | undefined, to: Vec3 | undefined): number {
  if (from === undefined || to === undefined) return 0;
  return Math.hypot(to[0] - from[0], to[1] - from[1], to[2] - from[2]);
}

/** The segments of a light path from the event on, joined within a medium. */
export function listSegments(path: LightPath): PathSegment[] {
  const segments: PathSegment[] = [];
  path.media.forEach((medium, i) => {
    const length = distance(path.points[i], path.points[i + 1]);
    const last = segments.at(-1);
    // A reflection is a bend within the water.
    if (last?.medium === medium) last.length += length;
    else segments.push({ medium, length });
  });
  return segments;
}

/** Name a segment and its length: "Liquid 6.40 m", "Wall 68 mm". */
export function tellSegment({ medium, length }: PathSegment): string {
  const amount = medium === 1 ? formatMillimetres(length) : formatMetres(length);
  return `${MEDIUM_NAMES[medium]} ${amount}`;
}

/** Draw a light path as a bar, in proportion, with the lengths under it. */
export function drawPathBar(path: LightPath): HTMLElement {
  const segments = listSegments(path);
  const bar = element('div', { class: 'card-bar', 'aria-hidden': 'true' });
  for (const { medium, length } of segments) {
    const part = element('div', { class: MEDIUM_CLASSES[medium] });
    part.style.flexGrow = String(length);
    bar.append(part);
  }
  const words = segments.map((segment) => element('li', {}, tellSegment(segment)));
  const list = element('ol', { class: 'card-lengths' }, ...words);
  return element('div', { class: 'card-path' }, bar, list);
}
