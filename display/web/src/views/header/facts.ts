import { formatCount, formatPosition } from '../../model/format';
import type { Model } from '../../model/model';

/** "event 6 of 50", "one event", or nothing for all events. */
export function describeChosenEvent(model: Model): string {
  const { event } = model.state;
  const { length } = model.page.text.eventNames;
  if (event === 'all') return '';
  if (length === 1) return 'one event';
  return `event ${formatCount(event + 1)} of ${formatCount(length)}`;
}

/** The place of the chosen event among all, and its position. */
export function describeEvent(model: Model): string {
  const { event } = model.state;
  if (event === 'all') return '';
  const [x = NaN, y = NaN, z = NaN] = model.page.eventPositions.slice(3 * event);
  return `${describeChosenEvent(model)} · (${formatPosition([x, y, z])}) mm`;
}

/** Under what the verdicts were found. */
export function describeSettings(model: Model): string {
  const { run, tolerance, wavelength } = model.page.text;
  return `run ${run} · tolerance ${tolerance} mm · ${wavelength} nm`;
}
