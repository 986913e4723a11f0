import type { Model } from '../../model/model';
import { arrangeChildren, element } from '../dom';
import { createTabs } from './tabs';

/** How the page is laid out: by the width of the window in CSS pixels. */
export type Shape = 'desktop' | 'drawer' | 'phone';

/** The parts that the layout puts in their places. */
export interface Parts {
  header: HTMLElement;
  counts: HTMLElement;
  switches: HTMLElement;
  /** Null for a single event. */
  strip: HTMLElement | null;
  scene: HTMLElement;
  map: HTMLElement;
  card: HTMLElement;
  table: HTMLElement;
  /** The card as a sheet over the view. */
  sheet: HTMLElement;
  /** Over the view, where there is something to say. */
  messages: readonly HTMLElement[];
}

/** The layout of the page. */
export interface Layout {
  readonly shape: Shape;
  /** Open or close the drawer with the map, the card and the table. */
  toggleSide(): void;
}

const belowDesktop = matchMedia('(width < 1200px)');
const belowDrawer = matchMedia('(width < 720px)');

function findShape(): Shape {
  if (belowDrawer.matches) return 'phone';
  return belowDesktop.matches ? 'drawer' : 'desktop';
}

/**
 * Put the parts into @p root, and put them elsewhere when the window or the main view
 * changes. The order in the document is that of reading and of the Tab key.
 *
 * @param onSide  called when the drawer opens or closes
 */
export function createLayout(
  root: HTMLElement,
  model: Model,
  parts: Parts,
  onSide: (isOpen: boolean) => void,
): Layout {
  const tabs = createTabs(model);
  const rail = element('div', { class: 'rail' });
  const stageView = element('div', { class: 'stage-view', id: 'stage-view' });
  const sheetPlace = element('div', { class: 'sheet-place' }, parts.sheet);
  const stage = element('section', { class: 'stage', 'aria-label': 'View' });
  const sideView = element('div', { class: 'side-view' });
  const sideCard = element('div', { class: 'side-card' }, parts.card);
  const sideTable = element('div', { class: 'side-table' });
  const side = element(
    'aside',
    { class: 'side', id: 'side', 'aria-label': 'Map and table' },
    sideView,
    sideCard,
    sideTable,
  );
  const main = element('main', { class: 'main' });
  root.replaceChildren(parts.header, main);

  let isSideOpen = false;

  const placeViews = (shape: Shape): void => {
    const { scene, map, table } = parts;
    const { mainView, has3D } = model.state;
    const usable = has3D ? scene : null;
    let large: HTMLElement = mainView === 'map' || usable === null ? map : usable;
    if (shape === 'phone') {
      if (mainView === 'table') large = table;
      arrangeChildren(sideView, []);
      arrangeChildren(sideTable, []);
    } else {
      const small = large === map ? usable : map;
      arrangeChildren(sideView, small === null ? [] : [small]);
      sideView.classList.toggle('has-scene', small !== null && small === scene);
      arrangeChildren(sideTable, [table]);
    }
    stageView.classList.toggle('has-scene', large === scene);
    stageView.classList.toggle('has-table', large === table);
    arrangeChildren(stageView, [large]);
  };

  const update = (): void => {
    const shape = findShape();
    const strip = parts.strip === null ? [] : [parts.strip];
    document.documentElement.dataset.layout = shape;
    main.classList.toggle('has-strip', parts.strip !== null);
    if (shape === 'phone') {
      arrangeChildren(stage, [...parts.messages, stageView, sheetPlace]);
      const isTable = model.state.mainView === 'table';
      const above = isTable ? [parts.counts, stage] : [stage, parts.counts];
      arrangeChildren(main, [tabs, ...above, ...strip, parts.switches]);
      main.classList.toggle('shows-table', isTable);
    } else {
      arrangeChildren(rail, [parts.counts, parts.switches]);
      arrangeChildren(stage, [...parts.messages, stageView, sheetPlace]);
      arrangeChildren(main, [rail, stage, side, ...strip]);
    }
    placeViews(shape);
    const isDrawer = shape === 'drawer';
    side.classList.toggle('open', isDrawer && isSideOpen);
    sheetPlace.hidden = shape === 'desktop' || (isDrawer && isSideOpen);
    onSide(isDrawer && isSideOpen);
  };

  const setSide = (isOpen: boolean): void => {
    isSideOpen = isOpen;
    update();
  };
  side.addEventListener('keydown', (event) => {
    if (event.key !== 'Escape' || !side.classList.contains('open')) return;
    event.stopPropagation();
    setSide(false);
  });
  for (const query of [belowDesktop, belowDrawer]) {
    query.addEventListener('change', update);
  }
  model.subscribe((changed) => {
    if (changed.has('mainView') || changed.has('has3D')) update();
  });
  update();
  return {
    get shape() {
      return findShape();
    },
    toggleSide() {
      setSide(!isSideOpen);
    },
  };
}
