import type { Choice, Model } from '../../model/model';
import { formatCount, formatPercent } from '../../model/format';

import { element } from '../dom';
import { SHARE_STEPS, shareProperty } from '../mark';
import { isolateName, makeButton, nameLayerInside } from '../text';
import type { MapLayout } from './layout';

/** The elements of the map. */
export interface MapFrame {
  element: HTMLElement;
  /** What has the size of the canvases and gets the focus. */
  picture: HTMLElement;
  /** The graticule and the PMTs. */
  ground: HTMLCanvasElement;
  /** What is chosen, over them. */
  choices: HTMLCanvasElement;
  /** Follow the state. */
  update(isLarge: boolean, hasEdge: boolean): void;
  /** Show a PMT's name beside its place, or nothing. */
  showName(
    choice: Choice | null,
    place: [number, number] | null,
    layout: MapLayout,
  ): void;
}

/** Say for screen readers what the map shows. */
function describeMap(model: Model): string {
  const { event } = model.state;
  const { eventNames } = model.page.text;
  if (event === 'all') {
    return `Sky map: share of ${formatCount(eventNames.length)} events hidden from each PMT`;
  }
  const { shadowed, withPath } = model.counts();
  const counts = `${formatCount(shadowed)} of ${formatCount(withPath)} PMTs shadowed`;
  return `Sky map of event ${eventNames[event] ?? ''}: ${counts}`;
}

function tellShare(share: number): string {
  return Number.isNaN(share) ? 'no path' : `${formatPercent(share)} of events`;
}

/** The scale of shares, under the map of all events. */
function createShareLegend(): HTMLElement {
  const steps = Array.from({ length: SHARE_STEPS }, (_, step) => {
    const box = element('span', { class: 'map-share-step' });
    box.style.background = `var(${shareProperty(step)})`;
    return box;
  });
  const scale = element('span', { class: 'map-share-scale' }, '0', ...steps, '100 %');
  return element(
    'p',
    { class: 'map-caption map-shares' },
    'Share of events hidden from a PMT',
    scale,
  );
}

function createCanvas(): HTMLCanvasElement {
  const canvas = element('canvas', { class: 'map-canvas' });
  canvas.setAttribute('aria-hidden', 'true');
  return canvas;
}

const EDGE_CAPTION = 'Dashed: the part that the 3D view leaves out.';
/** Of the button: after its key, and without it. */
const SWAP = ['enlarges', 'Enlarge'] as const;
const SWAP_BACK = ['back to 3D', 'Back to 3D'] as const;
const LARGE_CAPTION = [
  'Each mark is one PMT, at its direction from the detector centre.',
  'Seen from inside: azimuth grows to the left. Equal areas.',
];

class Frame implements MapFrame {
  readonly ground = createCanvas();
  readonly choices = createCanvas();
  readonly picture = element(
    'div',
    { class: 'map-picture' },
    this.ground,
    this.choices,
  );
  readonly element: HTMLElement;
  private readonly name = element('div', { class: 'map-name' });
  private readonly heading = element('h2', { class: 'map-title' }, 'Map');
  private readonly key = element('kbd', { class: 'map-key' }, 'M');
  private readonly swapText = element('span');
  private readonly swap: HTMLButtonElement;
  private readonly header: HTMLElement;
  private readonly edge = element('p', { class: 'map-caption map-edge' }, EDGE_CAPTION);
  private readonly shares = createShareLegend();
  private readonly caption: HTMLElement;

  constructor(private readonly model: Model) {
    this.picture.tabIndex = 0;
    this.picture.setAttribute('role', 'group');
    this.name.hidden = true;
    this.picture.append(this.name);
    this.swap = makeButton('map-swap', '', () => {
      const isMain = this.model.state.mainView === 'map';
      this.model.change({ mainView: isMain ? '3d' : 'map' });
    });
    this.swap.append(this.key, this.swapText);
    const note = element(
      'span',
      { class: 'map-note' },
      'from the centre, seen from inside',
    );
    this.header = element(
      'div',
      { class: 'map-header' },
      this.heading,
      note,
      this.swap,
    );
    const lines = LARGE_CAPTION.map((line) => element('span', {}, line));
    this.caption = element('p', { class: 'map-caption map-explanation' }, ...lines);
    this.element = element(
      'section',
      { class: 'map' },
      this.header,
      this.picture,
      this.caption,
      this.edge,
      this.shares,
    );
  }

  update(isLarge: boolean, hasEdge: boolean): void {
    const { event, has3D, hasShortcuts } = this.model.state;
    this.element.classList.toggle('map-large', isLarge);
    this.header.hidden = isLarge && !has3D;
    this.key.hidden = !hasShortcuts;
    const [afterKey, alone] = isLarge ? SWAP_BACK : SWAP;
    this.swapText.textContent = hasShortcuts ? afterKey : alone;
    this.edge.hidden = !hasEdge || (event === 'all' && !isLarge);
    this.shares.hidden = event !== 'all';
    this.caption.hidden = !isLarge;
    this.picture.setAttribute('aria-label', describeMap(this.model));
  }

  showName(
    choice: Choice | null,
    place: [number, number] | null,
    layout: MapLayout,
  ): void {
    this.name.hidden = choice === null || place === null;
    if (choice === null || place === null) return;
    const { pmt, reflected } = choice;
    const name = isolateName(this.model.page.text.pmtNames[pmt] ?? '');
    const light = reflected ? ', reflected light' : '';
    const what =
      this.model.state.event === 'all'
        ? tellShare(this.model.shares()[pmt] ?? NaN)
        : nameLayerInside(this.model.layerOf(choice));
    this.name.replaceChildren('PMT ', name, `${light} · ${what}`);
    const isLeft = place[0] > layout.width / 2;
    const isLow = place[1] > layout.height / 2;
    this.name.classList.toggle('map-name-left', isLeft);
    this.name.classList.toggle('map-name-above', isLow);
    this.name.style.left = `${place[0]}px`;
    this.name.style.top = `${place[1]}px`;
  }
}

/** Create the elements of the map. */
export function createMapFrame(model: Model): MapFrame {
  return new Frame(model);
}
