import '../../style/map.css';
import type { Vec3 } from '../../data/page';
import type { Model, State } from '../../model/model';
import { onNextFrame, readColours, startDrawing, watchColours } from '../canvas';
import type { PlacedMarks } from '../placedMarks';
import { drawChoice, drawEdge, drawEvent, type LeftOut } from './drawChoices';
import { drawGraticule, drawLatitudes, drawPMTs } from './drawMarks';
import { createMapFrame, type MapFrame } from './frame';
import { layOutMap, placePoint, projectPMTs, type MapLayout } from './layout';
import { findNearest, findNext, type Targets } from './pick';

const PICK_DISTANCE = 12;
const TOUCH_DISTANCE = 24;

/** By key: to the right and down. */
const STEPS: Readonly<Record<string, readonly [number, number]>> = {
  ArrowRight: [1, 0],
  ArrowLeft: [-1, 0],
  ArrowDown: [0, 1],
  ArrowUp: [0, -1],
};

/** What changes the PMTs that are drawn; all else only what lies over them. */
const CHANGES_PMTS: readonly (keyof State)[] = ['event', 'layers', 'query'];

/** What changes the words around the map, and its size. */
const CHANGES_FRAME: readonly (keyof State)[] = [
  'event',
  'mainView',
  'has3D',
  'hasShortcuts',
  'switches',
];

/** The sky map. */
export interface MapView {
  readonly element: HTMLElement;
  /**
   * Outline the part that the 3D view leaves out.
   *
   * @param direction  from the centre to the camera, of any length but zero; null: no
   *                   outline
   * @param cosine     of the angle around it within which PMTs are left out
   */
  setSeenDirection(direction: Vec3 | null, cosine?: number): void;
  /** Where the PMTs are on the canvas, and which of them can be picked. */
  marks(): PlacedMarks;
  /** Pictures drawn so far: it draws only what changed. */
  countDrawn(): number;
}

/** Where a pointer is on the canvas. */
interface Pointer {
  type: string;
  x: number;
  y: number;
}

class MapCanvas {
  /** Pictures drawn so far. */
  drawn = 0;
  private readonly points: Float64Array;
  private layout: MapLayout;
  private leftOut: LeftOut | null = null;
  private readonly redrawPMTs = onNextFrame(() => {
    this.drawPMTs();
  });
  private readonly redrawChoices = onNextFrame(() => {
    this.drawChoices();
  });
  private pointer: Pointer | null = null;

  constructor(
    private readonly model: Model,
    private readonly frame: MapFrame,
  ) {
    this.points = projectPMTs(model.page);
    this.layout = this.fitLayout();
    new ResizeObserver(() => {
      this.resize();
    }).observe(frame.picture);
    // Another screen can have other pixels for the same size.
    window.addEventListener('resize', () => {
      this.resize();
    });
    watchColours(() => {
      this.redrawPMTs();
      this.redrawChoices();
    });
    model.subscribe((changed) => {
      if (changed.has('mainView') || changed.has('has3D')) this.resize();
      if (CHANGES_PMTS.some((name) => changed.has(name))) this.redrawPMTs();
      this.redrawChoices();
    });
    this.listen();
  }

  setLeftOut(leftOut: LeftOut | null): void {
    this.leftOut = leftOut;
    this.redrawChoices();
  }

  private fitLayout(): MapLayout {
    const { clientWidth, clientHeight } = this.frame.picture;
    const pmts = this.model.page.text.pmtNames.length;
    return layOutMap(clientWidth, clientHeight, pmts, isLargeMap(this.model.state));
  }

  private resize(): void {
    this.layout = this.fitLayout();
    this.redrawPMTs();
    this.redrawChoices();
  }

  private drawPMTs(): void {
    const { width, height } = this.layout;
    const context = startDrawing(this.frame.ground, width, height);
    if (context === null) return;
    ++this.drawn;
    const colours = readColours(this.frame.ground);
    drawGraticule(context, this.layout, colours);
    drawPMTs(context, this.model, this.points, this.layout, colours);
    if (this.layout.hasLabels) {
      drawLatitudes(context, this.layout, colours, this.font());
    }
  }

  private drawChoices(): void {
    const { width, height } = this.layout;
    const context = startDrawing(this.frame.choices, width, height);
    if (context === null) return;
    ++this.drawn;
    const colours = readColours(this.frame.choices);
    const { selected, hovered } = this.model.state;
    if (this.leftOut !== null && showsEdge(this.model.state)) {
      drawEdge(context, this.layout, colours, this.leftOut);
    }
    drawEvent(context, this.model, this.layout, colours, this.font());
    for (const choice of [hovered, selected]) {
      if (choice === null) continue;
      const place = this.placeOf(choice.pmt);
      if (place === null) continue;
      const isSelected = choice === selected;
      drawChoice(context, this.model, choice, place, colours, isSelected);
    }
    this.frame.showName(hovered, hovered && this.placeOf(hovered.pmt), this.layout);
  }

  private font(): string {
    return getComputedStyle(this.frame.picture).fontFamily;
  }

  /** Where a PMT is drawn; null if it has no direction from the centre. */
  private placeOf(pmt: number): [number, number] | null {
    const x = this.points[2 * pmt] ?? NaN;
    const y = this.points[2 * pmt + 1] ?? NaN;
    return Number.isNaN(x) ? null : placePoint(this.layout, { x, y });
  }

  marks(): PlacedMarks {
    const shown = this.model.shown();
    const marks = {
      x: new Float32Array(shown.length),
      y: new Float32Array(shown.length),
      isDrawn: new Uint8Array(shown.length),
    };
    for (let pmt = 0; pmt < shown.length; ++pmt) {
      const place = this.placeOf(pmt);
      if (place === null || shown[pmt] !== 1) continue;
      [marks.x[pmt], marks.y[pmt]] = place;
      marks.isDrawn[pmt] = 1;
    }
    return marks;
  }

  private targets(): Targets {
    return { points: this.points, shown: this.model.shown(), layout: this.layout };
  }

  private listen(): void {
    const { picture } = this.frame;
    const pickAtPointer = onNextFrame(() => {
      if (this.pointer !== null) this.hover(this.pickAt(this.pointer));
    });
    picture.addEventListener('pointermove', (event) => {
      if (event.pointerType === 'touch') return;
      this.pointer = this.pointerOf(event);
      pickAtPointer();
    });
    picture.addEventListener('pointerleave', (event) => {
      if (event.pointerType === 'touch') return;
      this.pointer = null;
      this.model.hover(null);
    });
    // A click is in whole pixels, and not in every browser tells what made it.
    let pressed: Pointer = { type: '', x: NaN, y: NaN };
    picture.addEventListener('pointerdown', (event) => {
      pressed = this.pointerOf(event);
    });
    picture.addEventListener('click', () => {
      const pmt = this.pickAt(pressed);
      this.model.select(pmt === null ? null : { pmt, reflected: false });
    });
    picture.addEventListener('keydown', (event) => {
      this.useKey(event);
    });
    // What keys have marked stays marked only as long as they can go on from there.
    picture.addEventListener('blur', () => {
      this.model.hover(null);
    });
  }

  private pointerOf(event: PointerEvent): Pointer {
    const box = this.frame.picture.getBoundingClientRect();
    return {
      type: event.pointerType,
      x: event.clientX - box.left,
      y: event.clientY - box.top,
    };
  }

  private pickAt(pointer: Pointer): number | null {
    const within = pointer.type === 'touch' ? TOUCH_DISTANCE : PICK_DISTANCE;
    return findNearest(this.targets(), pointer.x, pointer.y, within);
  }

  private hover(pmt: number | null): void {
    const now = this.model.state.hovered;
    if ((now?.pmt ?? null) === pmt && now?.reflected !== true) return;
    this.model.hover(pmt === null ? null : { pmt, reflected: false });
  }

  private useKey(event: KeyboardEvent): void {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    const { hovered, selected } = this.model.state;
    const step = STEPS[event.key];
    if (step !== undefined) {
      event.preventDefault();
      const from = (hovered ?? selected)?.pmt;
      const { x, y } = this.layout;
      const next =
        from === undefined
          ? findNearest(this.targets(), x, y, Infinity)
          : findNext(this.targets(), from, ...step);
      if (next !== null) this.hover(next);
    } else if (event.key === 'Enter' && hovered !== null) {
      event.preventDefault();
      this.model.select(hovered);
    }
  }
}

function isLargeMap(state: State): boolean {
  return state.mainView === 'map' || !state.has3D;
}

const phone = matchMedia('(width < 720px)');

/**
 * Whether there is a 3D view beside the map that shows a part: with the near half it
 * shows all PMTs.
 */
function showsEdge(state: State): boolean {
  return state.has3D && !state.switches.nearHalf && !phone.matches;
}

/** Create the sky map in @p container, whose size it takes where it is the main view. */
export function createMap(container: HTMLElement, model: Model): MapView {
  const frame = createMapFrame(model);
  container.append(frame.element);
  let hasEdge = false;
  const update = (): void => {
    const isLarge = isLargeMap(model.state);
    frame.update(isLarge, hasEdge && showsEdge(model.state));
  };
  // Before the canvas listens, so that it measures the new size.
  model.subscribe((changed) => {
    if (CHANGES_FRAME.some((name) => changed.has(name))) update();
  });
  phone.addEventListener('change', update);
  update();
  const canvas = new MapCanvas(model, frame);
  return {
    element: frame.element,
    setSeenDirection(direction, cosine = 0) {
      canvas.setLeftOut(direction && { direction, cosine });
      const had = hasEdge;
      hasEdge = direction !== null;
      if (had !== hasEdge) update();
    },
    marks: () => canvas.marks(),
    countDrawn: () => canvas.drawn,
  };
}
