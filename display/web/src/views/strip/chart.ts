import { CLEAR_LAYER } from '../../model/model';
import { element, svgElement } from '../dom';
import { axisEnd, type Bar } from './bars';

/** The bars of the strip as a picture. */
export interface Chart {
  element: HTMLElement;
  /** What frames a bar. */
  framing: Element;
  /** The bar at a place on the screen, CSS pixels. */
  barAt(clientX: number): number;
  /** Pale the components that are not shown. */
  setLayers(layers: readonly boolean[]): void;
  /** Frame a bar, or none. */
  frame(bar: number | null): void;
  /** Say words over a bar, or nothing. */
  point(bar: number | null, words: string): void;
}

/** Between events, CSS pixels; groups are a distribution and touch each other. */
const WIDE_GAP = 2;
const NARROW_GAP = 1;
const NARROWEST_WITH_WIDE_GAP = 8;
const NARROWEST_WITH_GAP = 3;

function rectangle(left: number, top: number, width: number, height: number): string {
  return `M${left.toFixed(2)} ${top.toFixed(2)}h${width.toFixed(2)}v${height.toFixed(2)}h${(-width).toFixed(2)}z`;
}

/** Make the picture; it follows the size of its place. */
export function createChart(bars: readonly Bar[]): Chart {
  const end = axisEnd(bars);
  const layers = Array.from({ length: CLEAR_LAYER }, (_, layer) =>
    svgElement('path', { fill: `var(--component-${layer + 1})` }),
  );
  const lines = svgElement('path', { class: 'strip-lines' });
  const frame = svgElement('rect', { class: 'strip-frame', rx: 1 });
  const picture = svgElement(
    'svg',
    { 'aria-hidden': 'true', class: 'strip-picture' },
    lines,
    ...layers,
    frame,
  );
  const label = element('span', { class: 'strip-label', 'aria-hidden': 'true' });
  const ticks = [end, end / 2, 0].map((share) =>
    element('span', {}, `${Math.round(100 * share)} %`),
  );
  const chart = element(
    'div',
    { class: 'strip-chart' },
    element('div', { class: 'strip-axis', 'aria-hidden': 'true' }, ...ticks),
    element('div', { class: 'strip-bars' }, picture, label),
  );
  let width = 0;
  let height = 0;
  let framed: number | null = null;

  const pitch = (): number => width / bars.length;
  const areGroups = bars.some((bar) => bar.events.length > 1);
  const gap = (): number => {
    if (areGroups || pitch() < NARROWEST_WITH_GAP) return 0;
    return pitch() < NARROWEST_WITH_WIDE_GAP ? NARROW_GAP : WIDE_GAP;
  };
  const heightOf = (share: number): number => (share / end) * height;

  const drawFrame = (): void => {
    const bar = framed === null ? undefined : bars[framed];
    frame.toggleAttribute('hidden', bar === undefined);
    if (framed === null || bar === undefined) return;
    const top = height - heightOf(bar.shadowed);
    frame.setAttribute('x', String(framed * pitch() + gap() / 2 - 1));
    frame.setAttribute('y', String(top - 1));
    frame.setAttribute('width', String(Math.max(4, pitch() - gap() + 2)));
    frame.setAttribute('height', String(height - top + 1));
  };

  const draw = (): void => {
    const paths = layers.map((): string[] => []);
    bars.forEach((bar, at) => {
      let top = height;
      bar.shares.forEach((share, layer) => {
        const tall = heightOf(share);
        top -= tall;
        if (share > 0) {
          // Neighbours without a gap overlap a little: no seams.
          const wide = pitch() - gap() + (gap() === 0 ? 0.3 : 0);
          paths[layer]?.push(rectangle(at * pitch() + gap() / 2, top, wide, tall));
        }
      });
    });
    layers.forEach((path, layer) => {
      path.setAttribute('d', paths[layer]?.join('') ?? '');
    });
    const at = (share: number): string => `M0 ${height - heightOf(share)}H${width}`;
    lines.setAttribute('d', at(0) + at(end / 2) + at(end));
    drawFrame();
  };

  new ResizeObserver(() => {
    width = picture.clientWidth;
    height = picture.clientHeight;
    if (width > 0) draw();
  }).observe(picture);

  return {
    element: chart,
    framing: frame,
    barAt(clientX) {
      const box = picture.getBoundingClientRect();
      const at = Math.floor(((clientX - box.left) / box.width) * bars.length);
      return Math.max(0, Math.min(bars.length - 1, at));
    },
    setLayers(shown) {
      layers.forEach((path, layer) => {
        path.classList.toggle('pale', shown[layer] !== true);
      });
    },
    frame(bar) {
      framed = bar;
      drawFrame();
    },
    point(bar, words) {
      label.hidden = bar === null;
      if (bar === null) return;
      label.textContent = words;
      const middle = (bar + 0.5) * pitch();
      const half = label.offsetWidth / 2;
      const left = Math.max(0, Math.min(width - 2 * half, middle - half));
      label.style.left = `${left}px`;
    },
  };
}
