import { svgElement } from './dom';

/** Lines of each icon in a square of 16. */
const ICONS = {
  previous: 'M9.5 4.5 6 8l3.5 3.5',
  next: 'M6.5 4.5 10 8l-3.5 3.5',
  plus: 'M8 3.5v9M3.5 8h9',
  minus: 'M3.5 8h9',
  home: 'M2.5 8 8 3l5.5 5M4 6.8V13h8V6.8M6.7 13V9.6h2.6V13',
  down: 'M4.5 6.5 8 10l3.5-3.5',
  close: 'M4 4l8 8M12 4l-8 8',
  search: 'M11.8 7a4.8 4.8 0 1 1-9.6 0 4.8 4.8 0 0 1 9.6 0ZM10.6 10.6 14 14',
  more: 'M3 8h.01M8 8h.01M13 8h.01',
  moon: 'M13 9.8A5.6 5.6 0 0 1 6.2 3a5.6 5.6 0 1 0 6.8 6.8Z',
  sun: 'M8 5.2a2.8 2.8 0 1 1 0 5.6 2.8 2.8 0 0 1 0-5.6ZM8 1v1.5M8 13.5V15M1 8h1.5M13.5 8H15M3 3l1.1 1.1M11.9 11.9 13 13M13 3l-1.1 1.1M4.1 11.9 3 13',
  side: 'M2 3h12v10H2ZM9.5 3v10',
  picture: 'M8 2v7.5M4.8 6.6 8 9.8l3.2-3.2M2.5 13.5h11',
  keys: 'M5.8 6a2.2 2.2 0 1 1 3.3 1.9c-.7.4-1.1.9-1.1 1.8M8 12.4h.01',
} as const;

export type Icon = keyof typeof ICONS;

/** Draw an icon; what it means is told by the control around it. */
export function drawIcon(icon: Icon): SVGSVGElement {
  return svgElement(
    'svg',
    { class: 'icon', viewBox: '0 0 16 16', 'aria-hidden': 'true' },
    svgElement('path', { d: ICONS[icon] }),
  );
}
