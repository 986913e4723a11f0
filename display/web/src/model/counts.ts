import { Verdict } from '../data/page';
import type { Page } from '../data/page';
import { CLEAR_LAYER, LAYERS, layerOfVerdict, NO_PATH_LAYER } from './model';
import type { Counts } from './model';

/** Verdicts, counted by event and by PMT. */
export interface Tally {
  events: Counts[];
  /** By PMT and layer. */
  pmts: Uint32Array;
  all: Counts;
}

const VERDICTS = Verdict.NoReflectedPath + 1;

/** From the number of each layer. */
export function countLayers(layers: number[]): Counts {
  const all = layers.reduce((sum, count) => sum + count, 0);
  const withPath = all - (layers[NO_PATH_LAYER] ?? 0);
  return { layers, shadowed: withPath - (layers[CLEAR_LAYER] ?? 0), withPath, all };
}

/** Count the verdicts of the direct light of all pairs. */
export function tally(page: Page): Tally {
  const pmts = page.text.pmtNames.length;
  const { verdicts } = page.direct;
  const layers = Uint8Array.from({ length: VERDICTS }, (_, i) => layerOfVerdict(i));
  const byPMT = new Uint32Array(pmts * LAYERS);
  const ofEvent = new Uint32Array(LAYERS);
  const sum = new Array<number>(LAYERS).fill(0);
  const events = page.text.eventNames.map((_, event) => {
    ofEvent.fill(0);
    const start = event * pmts;
    for (let pmt = 0; pmt < pmts; ++pmt) {
      const layer = layers[verdicts[start + pmt] ?? 0] ?? 0;
      ofEvent[layer] = (ofEvent[layer] ?? 0) + 1;
      const cell = pmt * LAYERS + layer;
      byPMT[cell] = (byPMT[cell] ?? 0) + 1;
    }
    ofEvent.forEach((count, layer) => {
      sum[layer] = (sum[layer] ?? 0) + count;
    });
    return countLayers(Array.from(ofEvent));
  });
  return { events, pmts: byPMT, all: countLayers(sum) };
}

/**
 * By PMT: the part of its light paths that the components of @p shown hide; NaN
 * without light paths.
 */
export function computeShares(
  counts: Uint32Array,
  shown: readonly boolean[],
): Float64Array {
  const shares = new Float64Array(counts.length / LAYERS);
  for (let pmt = 0; pmt < shares.length; ++pmt) {
    let hidden = 0;
    let paths = 0;
    for (let layer = 0; layer < NO_PATH_LAYER; ++layer) {
      const count = counts[pmt * LAYERS + layer] ?? 0;
      paths += count;
      if (layer < CLEAR_LAYER && shown[layer]) hidden += count;
    }
    shares[pmt] = hidden / paths;
  }
  return shares;
}
