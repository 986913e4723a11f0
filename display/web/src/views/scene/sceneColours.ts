import palette from '../../../../palette.json';
import { LAYERS } from '../../model/model';
import { type Colours, readColours } from '../canvas';
import { SHARE_STEPS } from '../mark';

/** Red, green, blue, 0 to 1. */
export type Colour = readonly [number, number, number];
export type Outline = readonly (readonly number[])[];

/** By component: its outline, x right and y down, about one across. */
export const OUTLINES: readonly Outline[] = Object.values(palette.components).map(
  ({ shape }) => palette.shapes[shape as keyof typeof palette.shapes],
);

/** The colours of a theme, as style sheets write them. */
export interface SceneColours extends Colours {
  panel: string;
  controlEdge: string;
  vessel: string;
}

/** Read the colours that hold for an element. */
export function readSceneColours(element: Element): SceneColours {
  const style = getComputedStyle(element);
  const read = (property: string): string => style.getPropertyValue(property).trim();
  return {
    ...readColours(element),
    panel: read('--panel'),
    controlEdge: read('--control-edge'),
    vessel: read('--vessel'),
  };
}

/** The numbers of a colour "#rrggbb"; others are black. */
export function parseColour(text: string): Colour {
  const value = /^#[0-9a-f]{6}$/i.test(text) ? Number.parseInt(text.slice(1), 16) : 0;
  return [(value >> 16) / 255, ((value >> 8) & 255) / 255, (value & 255) / 255];
}

/** How a PMT is drawn: as its layer, faded, or by the step of its share. */
export const FADED_KIND = LAYERS;
export const FIRST_SHARE_KIND = LAYERS + 1;
export const KINDS = FIRST_SHARE_KIND + SHARE_STEPS;
