import type { Page } from '../../data/page';

/** Words under a stretch of neighbouring bars. */
export interface Caption {
  /** The first bar that it is about, and the one after the last. */
  first: number;
  end: number;
  words: string;
  /** Left out where there is little room. */
  more: string;
}

type Place = 'axis' | 'inside' | 'water';

const WORDS: Readonly<Record<Place, [words: string, more: string]>> = {
  axis: ['on the axis', ''],
  inside: ['off the axis', ', inside the vessel'],
  water: ['in the water', ''],
};

/** More stretches than these have no order that words could tell. */
const MOST_STRETCHES = 3;

/** mm: nearer to the axis than what positions are given to. */
const ON_AXIS = 0.5;

function findPlace(page: Page, event: number): Place {
  const [x = 0, y = 0, z = 0] = page.eventPositions.slice(3 * event, 3 * event + 3);
  if (Math.hypot(x, y) < ON_AXIS) return 'axis';
  const isInside = Math.hypot(x, y, z) <= page.text.vessel.outerRadius;
  return isInside ? 'inside' : 'water';
}

/** "top to bottom" or the like, if the events of a stretch follow each other so. */
function findOrder(page: Page, first: number, end: number): string {
  const steps = Array.from({ length: end - first - 1 }, (_, at) => {
    const event = first + at;
    const here = page.eventPositions[3 * event + 2] ?? 0;
    return (page.eventPositions[3 * event + 5] ?? 0) - here;
  });
  if (steps.length === 0) return '';
  if (steps.every((step) => step < 0)) return ', top to bottom';
  return steps.every((step) => step > 0) ? ', bottom to top' : '';
}

/** What the events have in common, from left to right; names where nothing is. */
export function captionEvents(page: Page): Caption[] {
  const names = page.text.eventNames;
  const captions: Caption[] = [];
  let place: Place | null = null;
  for (let event = 0; event < names.length; event += 1) {
    const here = findPlace(page, event);
    const last = captions.at(-1);
    if (here === place && last !== undefined) {
      last.end = event + 1;
      continue;
    }
    place = here;
    const [words, more] = WORDS[here];
    captions.push({ first: event, end: event + 1, words, more });
  }
  if (captions.length > MOST_STRETCHES) {
    const last = names.length - 1;
    return [
      { first: 0, end: 1, words: names[0] ?? '', more: '' },
      { first: last, end: last + 1, words: names[last] ?? '', more: '' },
    ];
  }
  for (const caption of captions) {
    if (caption.words !== WORDS.axis[0]) continue;
    caption.more = findOrder(page, caption.first, caption.end);
  }
  return captions;
}
