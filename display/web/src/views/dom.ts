type Child = Node | string;
type Attributes = Readonly<Record<string, string | number | boolean>>;

const SVG = 'http://www.w3.org/2000/svg';

function fill(node: Element, attributes: Attributes, children: readonly Child[]): void {
  for (const [name, value] of Object.entries(attributes)) {
    if (value !== false) node.setAttribute(name, value === true ? '' : String(value));
  }
  node.append(...children);
}

/** Make an element; strings become text, never markup. */
export function element<K extends keyof HTMLElementTagNameMap>(
  tag: K,
  attributes: Attributes = {},
  ...children: Child[]
): HTMLElementTagNameMap[K] {
  const node = document.createElement(tag);
  fill(node, attributes, children);
  return node;
}

/** Make an element of a picture. */
export function svgElement<K extends keyof SVGElementTagNameMap>(
  tag: K,
  attributes: Attributes = {},
  ...children: Child[]
): SVGElementTagNameMap[K] {
  const node = document.createElementNS(SVG, tag);
  fill(node, attributes, children);
  return node;
}

/** Set text only where it differs, so that nothing is told or drawn again. */
export function setText(node: Element, text: string): void {
  if (node.textContent !== text) node.textContent = text;
}

/**
 * Make @p children the children of @p parent, in this order. Does not touch those
 * that are there already, and keeps the focus in a moved one.
 */
export function arrangeChildren(parent: Element, children: readonly Element[]): void {
  const focused = document.activeElement;
  for (const child of [...parent.children]) {
    if (!children.includes(child)) child.remove();
  }
  children.forEach((child, at) => {
    const here = parent.children[at];
    if (here !== child) parent.insertBefore(child, here ?? null);
  });
  if (focused instanceof HTMLElement && focused !== document.activeElement) {
    focused.focus({ preventScroll: true });
  }
}
