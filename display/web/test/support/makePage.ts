import type {
  Hardware,
  Light,
  LightDetails,
  Page,
  PageText,
} from '../../src/data/page';

const nothing: Hardware = { state: 'on', tubes: [], patches: [], spots: [], rings: [] };

/** The text of a page without events and PMTs, changed as told. */
export function makeText(part: Partial<PageText> = {}): PageText {
  return {
    format: 1,
    version: '0.1.0',
    title: '',
    detector: 'test',
    fingerprint: '00',
    run: 0,
    tolerance: 150,
    wavelength: 400,
    vessel: { innerRadius: 5800, outerRadius: 5860, neckRadius: 700, neckTop: 7800 },
    refractiveIndices: [1.5, 1.5, 1.35],
    groupIndices: [1.6, 1.55, 1.4],
    hardware: Array.from({ length: 6 }, () => nothing),
    pmtNames: [],
    eventNames: [],
    itemNames: [''],
    content: 'paths',
    hasReflections: false,
    storedPaths: [],
    ...part,
  };
}

/** The details of @p pairs without any path, changed as told. */
export function makeDetails(
  pairs: number,
  part: Partial<LightDetails> = {},
): LightDetails {
  return {
    angles: new Float32Array(pairs).fill(NaN),
    items: new Uint16Array(pairs),
    limits: new Float32Array(pairs).fill(NaN),
    limitBy: new Uint8Array(pairs),
    ...part,
  };
}

/** What a made page holds; verdicts are by event and PMT. */
export interface Parts {
  text?: Partial<PageText>;
  /** By PMT. */
  pmts?: readonly (readonly [number, number, number])[];
  /** By event. */
  events?: readonly (readonly [number, number, number])[];
  verdicts?: readonly number[];
  details?: Partial<LightDetails>;
  reflected?: Light;
}

/** A page of a few pairs, named 0, 1, … where no names are told. */
export function makePage(parts: Parts): Page {
  const { pmts = [], events = [] } = parts;
  const pairs = pmts.length * events.length;
  const names = (list: readonly unknown[]): string[] => list.map((_, i) => String(i));
  const text = makeText({
    pmtNames: names(pmts),
    eventNames: names(events),
    hasReflections: parts.reflected !== undefined,
    ...parts.text,
  });
  return {
    text,
    pmtPositions: Float64Array.from(pmts.flat()),
    eventPositions: Float64Array.from(events.flat()),
    direct: {
      verdicts: Uint8Array.from({ length: pairs }, (_, i) => parts.verdicts?.[i] ?? 0),
      paths: text.content === 'paths' ? makeDetails(pairs, parts.details) : null,
    },
    reflected: parts.reflected ?? null,
  };
}
