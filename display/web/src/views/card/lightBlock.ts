import type { LightPath } from '../../data/lightPath';
import { Verdict } from '../../data/page';
import {
  explainNoPath,
  formatAngle,
  formatMetres,
  formatPosition,
  formatTime,
  tellItem,
  tellLimit,
  tellVerdict,
} from '../../model/format';
import { type Choice, type Model, NO_PATH_LAYER } from '../../model/model';
import { element } from '../dom';
import { createMark } from '../mark';
import { makeButton } from '../text';
import { drawPathBar } from './pathBar';

/** A verdict in words, with its mark: "Blocked by hold-down ropes". */
function drawVerdict(model: Model, choice: Choice): HTMLElement {
  return element(
    'p',
    { class: 'card-verdict' },
    createMark(model.layerOf(choice)),
    element('span', {}, tellVerdict(model.verdictOf(choice))),
  );
}

function drawFact(name: string, value: string): HTMLElement {
  return element(
    'div',
    { class: 'card-fact' },
    element('dt', {}, name),
    element('dd', {}, value),
  );
}

function drawFacts(model: Model, { pmt }: Choice, path: LightPath | null): HTMLElement {
  const facts =
    path === null
      ? []
      : [
          drawFact('Path', formatMetres(path.length)),
          drawFact('Time', formatTime(path.time)),
          drawFact('Angle at PMT', formatAngle(path.angle)),
        ];
  const position = model.page.pmtPositions.slice(3 * pmt, 3 * pmt + 3);
  const place = drawFact('Position, mm', formatPosition(position));
  return element('dl', { class: 'card-facts' }, ...facts, place);
}

function drawNote(text: string): HTMLElement {
  return element('p', { class: 'card-note' }, text);
}

const NO_PATHS_KEPT = 'This page keeps no light paths because of its size.';

/** What blocks, and how near the path is to the limit. */
function drawDetails(model: Model, choice: Choice): HTMLElement[] {
  return [tellItem(model, choice), tellLimit(model, choice)]
    .filter((text) => text !== '')
    .map(drawNote);
}

/** Draw what there is to say of the chosen light to a PMT. */
export function drawLightBlock(model: Model, choice: Choice): HTMLElement {
  const block = element('div', { class: 'card-light' }, drawVerdict(model, choice));
  if (hasOtherLight(model, choice)) block.prepend(drawKind(choice));
  if (model.layerOf(choice) === NO_PATH_LAYER) {
    block.append(drawNote(explainNoPath(model.verdictOf(choice))));
    return block;
  }
  const path = model.pathOf(choice);
  block.append(...drawDetails(model, choice), drawFacts(model, choice, path));
  block.append(path === null ? drawNote(NO_PATHS_KEPT) : drawPathBar(path));
  return block;
}

function kindOf({ reflected }: Choice): string {
  return reflected ? 'Reflected light' : 'Direct light';
}

function drawKind(choice: Choice): HTMLElement {
  return element('h3', { class: 'card-kind' }, kindOf(choice));
}

/** The direct light of a row of reflected light, and the other way round. */
function otherLight({ pmt, reflected }: Choice): Choice {
  return { pmt, reflected: !reflected };
}

/** Whether there is a row of the PMT's other light. */
function hasOtherLight(model: Model, choice: Choice): boolean {
  return (
    model.page.text.hasReflections &&
    model.verdictOf(otherLight(choice)) !== Verdict.NoReflectedPath
  );
}

/**
 * Draw the light that is not chosen in short, as a button that chooses it; null if
 * there is none.
 */
export function drawOtherLight(model: Model, choice: Choice): HTMLElement | null {
  if (!hasOtherLight(model, choice)) return null;
  const other = otherLight(choice);
  const { length } = model.numbersOf(other);
  const words = Number.isNaN(length) ? '' : ` · ${formatMetres(length)}`;
  const button = makeButton('card-other', '', () => {
    model.select(other);
  });
  button.append(
    element('span', { class: 'card-kind' }, kindOf(other)),
    createMark(model.layerOf(other)),
    element('span', {}, `${tellVerdict(model.verdictOf(other))}${words}`),
  );
  return button;
}
