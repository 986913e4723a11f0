import { LAYERS } from '../model/model';
import { colourProperty, SHARE_STEPS, shareProperty } from './mark';

/** The colours that a canvas draws with, as the theme sets them. */
export interface Colours {
  /** Behind the canvas: the custom property --ground, else that of views. */
  ground: string;
  text: string;
  secondText: string;
  hairline: string;
  selection: string;
  noPath: string;
  clear: string;
  /** By layer. */
  layers: readonly string[];
  /** By step, from the least share of events. */
  shares: readonly string[];
}

/** Read the colours that hold for an element. */
export function readColours(element: Element): Colours {
  const style = getComputedStyle(element);
  const read = (property: string): string => style.getPropertyValue(property).trim();
  return {
    ground: read('--ground') || read('--view'),
    text: read('--text'),
    secondText: read('--second-text'),
    hairline: read('--hairline'),
    selection: read('--selection'),
    noPath: read('--no-path'),
    clear: read('--clear'),
    layers: Array.from({ length: LAYERS }, (_, layer) => read(colourProperty(layer))),
    shares: Array.from({ length: SHARE_STEPS }, (_, step) => read(shareProperty(step))),
  };
}

/** Call @p listener after each change of colours: of the theme or of the contrast. */
export function watchColours(listener: () => void): void {
  new MutationObserver(listener).observe(document.documentElement, {
    attributeFilter: ['data-theme'],
  });
  matchMedia('(prefers-contrast: more)').addEventListener('change', listener);
}

/** More pixels cost time and show nothing more. */
const MOST_PIXELS_PER_CSS_PIXEL = 2;

/**
 * Empty a canvas for drawing in CSS pixels, with as many pixels as the screen has.
 *
 * @returns null where canvases have been switched off
 */
export function startDrawing(
  canvas: HTMLCanvasElement,
  width: number,
  height: number,
): CanvasRenderingContext2D | null {
  const ratio = Math.min(window.devicePixelRatio, MOST_PIXELS_PER_CSS_PIXEL);
  const columns = Math.round(width * ratio);
  const rows = Math.round(height * ratio);
  // Setting a size, even the same, makes the browser allocate again.
  if (canvas.width !== columns) canvas.width = columns;
  if (canvas.height !== rows) canvas.height = rows;
  const context = canvas.getContext('2d');
  if (context === null) return null;
  context.setTransform(ratio, 0, 0, ratio, 0, 0);
  context.clearRect(0, 0, width, height);
  return context;
}

/** Make a function that calls @p draw before the next frame, at most once a frame. */
export function onNextFrame(draw: () => void): () => void {
  let isWaiting = false;
  return () => {
    if (isWaiting) return;
    isWaiting = true;
    requestAnimationFrame(() => {
      isWaiting = false;
      draw();
    });
  };
}
