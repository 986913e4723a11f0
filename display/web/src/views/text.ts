import { nameInside, nameLayer } from '../model/format';
import { CLEAR_LAYER } from '../model/model';
import { element } from './dom';

/** A name from a file, kept apart from the writing direction of what is around it. */
export function isolateName(name: string): HTMLElement {
  return element('bdi', {}, name);
}

/** Show a name that may be cut off, and all of it on hovering. */
export function setName(node: HTMLElement, name: string): void {
  if (node.textContent !== name) node.textContent = name;
  if (node.title !== name) node.title = name;
}

/** Make a button with a label. */
export function makeButton(
  className: string,
  label: string,
  onClick: () => void,
): HTMLButtonElement {
  const button = element('button', { type: 'button', class: className }, label);
  button.addEventListener('click', onClick);
  return button;
}

/** The name of a layer within a sentence: "hold-down ropes", "AV pipes", "no path". */
export function nameLayerInside(layer: number): string {
  return layer < CLEAR_LAYER ? nameInside(layer + 1) : nameLayer(layer).toLowerCase();
}
