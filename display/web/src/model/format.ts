import palette from '../../../palette.json';
import { Verdict } from '../data/page';
import { CLEAR_LAYER, layerOfVerdict, NO_PATH_LAYER } from './model';
import type { Choice, Model } from './model';

/** Stands where there is no number. */
const NONE = '–';

const MINUS = '−';

const componentNames = Object.values(palette.components).map(({ name }) => name);

/** With a true minus sign; an en dash for NaN. */
export function formatNumber(number: number, decimals: number): string {
  if (Number.isNaN(number)) return NONE;
  if (!Number.isFinite(number)) return number < 0 ? `${MINUS}∞` : '∞';
  const digits = Math.abs(number).toFixed(decimals);
  return number < 0 && Number(digits) !== 0 ? MINUS + digits : digits;
}

/** "3,154" */
export function formatCount(count: number): string {
  return String(count).replace(/\B(?=(\d{3})+$)/g, ',');
}

/** Counts above this are rounded where a column holds those of many events. */
const LONGEST_COUNT = 100_000;

/** "3,154", "561 k", "2.7 M" */
export function formatCompact(count: number): string {
  if (count <= LONGEST_COUNT) return formatCount(count);
  const thousands = Math.round(count / 1000);
  if (thousands < 1000) return `${thousands} k`;
  const millions = count / 1e6;
  const digits = millions.toFixed(1);
  return `${millions < 100 ? digits : formatCount(Math.round(millions))} M`;
}

/**
 * "39.4 %"; "< 0.1 %" for little and "> 99.9 %" for nearly all, as the program writes
 * shares; an en dash for NaN.
 *
 * @param share  0 to 1
 */
export function formatPercent(share: number): string {
  if (Number.isNaN(share)) return NONE;
  // The program divides last. This takes back the rounding of dividing first, which
  // would tip shares like 36 of 8,000 that end in half a digit.
  const percent = Number((100 * share).toPrecision(14));
  // The program rounds half a digit to the even one. Such ties are odd quarters; other
  // shares of as many pairs as a page can hold are further from them.
  const quarters = Math.round(4 * percent);
  const isTie = quarters % 2 === 1 && Math.abs(4 * percent - quarters) < 1e-10;
  const word = (isTie ? Math.round(percent * 5) / 5 : percent).toFixed(1);
  if (share > 0 && word === '0.0') return '< 0.1 %';
  if (share < 1 && word === '100.0') return '> 99.9 %';
  return `${word} %`;
}

/** In m, from mm: "9.19 m". */
export function formatMetres(length: number): string {
  return `${formatNumber(length / 1000, 2)} m`;
}

/** "68 mm" */
export function formatMillimetres(length: number): string {
  return `${formatNumber(length, 0)} mm`;
}

/** "48.1 ns" */
export function formatTime(time: number): string {
  return `${formatNumber(time, 1)} ns`;
}

/** "21.8°" */
export function formatAngle(degrees: number): string {
  return `${formatNumber(degrees, 1)}°`;
}

/** In whole mm: "−7460, 3474, −1080". */
export function formatPosition(position: Iterable<number>): string {
  return Array.from(position, (part) => formatNumber(part, 0)).join(', ');
}

/** "Hold-down ropes", "Clear", "No path". */
export function nameLayer(layer: number): string {
  if (layer === CLEAR_LAYER) return palette.clear;
  if (layer === NO_PATH_LAYER) return palette.noPath;
  return componentNames[layer] ?? '';
}

/** The name of a component within a sentence; "AV pipes" keeps its capitals. */
export function nameInside(component: number): string {
  const name = componentNames[component - 1] ?? '';
  return /^[A-Z][a-z]/.test(name) ? name.charAt(0).toLowerCase() + name.slice(1) : name;
}

const reasons: ReadonlyMap<Verdict, string> = new Map([
  [Verdict.TotalReflection, 'No path: total reflection'],
  [Verdict.PMTNotInWater, 'No path: not in the water'],
  [Verdict.EventAtPMT, 'No path: event at the PMT'],
  [Verdict.PositionNotFinite, 'No path: position not finite'],
  [Verdict.NoReflectedPath, 'No reflected path'],
]);

/** "Hold-down ropes", "Clear", "No path". */
export function nameVerdict(verdict: Verdict): string {
  return nameLayer(layerOfVerdict(verdict));
}

/** "Blocked by hold-down ropes", "Clear", "No path: total reflection". */
export function tellVerdict(verdict: Verdict): string {
  if (verdict === Verdict.Clear) return palette.clear;
  return reasons.get(verdict) ?? `Blocked by ${nameInside(verdict)}`;
}

const explanations: ReadonlyMap<Verdict, string> = new Map([
  [
    Verdict.TotalReflection,
    'Light towards this PMT would meet the vessel too flatly and is totally reflected.',
  ],
  [Verdict.PMTNotInWater, 'This PMT lies inside the vessel or in its wall.'],
  [Verdict.EventAtPMT, 'The event is where the PMT is.'],
  [Verdict.PositionNotFinite, 'A coordinate of the event or of the PMT is no number.'],
  [
    Verdict.NoReflectedPath,
    'No light reflected at the outside of the vessel reaches this PMT.',
  ],
]);

/** Why there is no light path; empty if there is one. */
export function explainNoPath(verdict: Verdict): string {
  const why = explanations.get(verdict);
  return why === undefined ? '' : `${why} No light path, so no verdict.`;
}

/** The components whose tests use the tolerance. */
const LAST_WITH_TOLERANCE = Verdict.NCDAnchor;

/**
 * How far the tolerance is from changing the verdict; empty without a light path.
 *
 * @param limit      as in LightDetails, mm
 * @param limitBy    the component that it belongs to
 * @param tolerance  that of the verdict, mm
 */
export function describeLimit(
  verdict: Verdict,
  limit: number,
  limitBy: Verdict,
  tolerance: number,
): string {
  if (verdict >= Verdict.TotalReflection || Number.isNaN(limit)) return '';
  const from = `${formatNumber(limit, 1)} mm`;
  if (verdict === Verdict.Clear) {
    return limit === Infinity
      ? 'Not blocked at any tolerance'
      : `Blocked by ${nameInside(limitBy)} from ${from}`;
  }
  if (verdict > LAST_WITH_TOLERANCE) {
    return `Blocked at every tolerance: ${nameInside(verdict)} ${
      verdict === Verdict.NeckBoss ? 'does' : 'do'
    } not use it`;
  }
  if (limit === -Infinity) return 'Blocked at every tolerance';
  // The hardware itself is in the way.
  if (limit <= 0) return `Blocked even at 0 mm; set: ${tolerance} mm`;
  return `Blocked at tolerances from ${from}; set: ${tolerance} mm`;
}

/** As describeLimit, of a row; empty where the page does not keep it. */
export function tellLimit(model: Model, choice: Choice): string {
  const blocking = model.blockingOf(choice);
  if (!blocking) return '';
  const { tolerance } = model.page.text;
  const { limit, limitBy } = blocking;
  return describeLimit(model.verdictOf(choice), limit, limitBy, tolerance);
}

/** What blocks the light of a row: "rope 7, leg P1"; empty if that is not known. */
export function tellItem(model: Model, choice: Choice): string {
  return model.blockingOf(choice)?.item ?? '';
}

/** A row in words that can be spoken: "PMT 4512, blocked by support ropes, 9.19 metres". */
export function describeChoice(model: Model, choice: Choice): string {
  const name = model.page.text.pmtNames[choice.pmt] ?? '';
  const parts = [`PMT ${name}`];
  if (model.state.event === 'all') {
    const share = model.shares()[choice.pmt] ?? NaN;
    parts.push(
      Number.isNaN(share)
        ? 'no light path from any event'
        : `hidden from ${formatPercent(share)} of the events`,
    );
    return parts.join(', ');
  }
  if (choice.reflected) parts.push('reflected light');
  const verdict = tellVerdict(model.verdictOf(choice));
  parts.push(verdict.charAt(0).toLowerCase() + verdict.slice(1));
  const path = model.pathOf(choice);
  if (path) parts.push(`${formatNumber(path.length / 1000, 2)} metres`);
  return parts.join(', ');
}
