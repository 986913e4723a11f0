import type { Model } from '../../model/model';
import type { MapView } from '../map/map';
import type { PlacedMarks } from '../placedMarks';
import type { SceneView } from '../scene/scene';

/** A PMT that can be picked, in CSS pixels from the window's top left. */
export interface Mark {
  pmt: number;
  x: number;
  y: number;
}

/** What scripts can ask of a view. */
export interface InspectedView {
  /** The PMTs that a click can pick. */
  marks(): Mark[];
  /** Pictures drawn so far. */
  countDrawn(): number;
}

/** `shadowDisplay`, for scripts and the browser's console. */
export interface Inspection {
  model: Model;
  /** Null while there is no 3D view. */
  readonly scene: InspectedView | null;
  map: InspectedView;
}

declare global {
  var shadowDisplay: Inspection | undefined;
}

/** The marks within the window, not covered by anything. */
function listMarks(canvas: Element | null, placed: PlacedMarks): Mark[] {
  const box = canvas?.getBoundingClientRect();
  const host = canvas?.parentElement;
  if (!box || !host) return [];
  const marks: Mark[] = [];
  placed.isDrawn.forEach((isDrawn, pmt) => {
    if (isDrawn !== 1) return;
    const x = box.left + (placed.x[pmt] ?? NaN);
    const y = box.top + (placed.y[pmt] ?? NaN);
    if (host.contains(document.elementFromPoint(x, y))) marks.push({ pmt, x, y });
  });
  return marks;
}

/** Let scripts ask what the page shows. */
export function offerInspection(
  model: Model,
  scene: SceneView | null,
  map: MapView,
): void {
  globalThis.shadowDisplay = {
    model,
    get scene() {
      if (scene === null || !model.state.has3D) return null;
      const canvas = document.querySelector('.scene canvas');
      return {
        marks: () => listMarks(canvas, scene.marks()),
        countDrawn: () => scene.framesDrawn,
      };
    },
    map: {
      marks: () => listMarks(map.element.querySelector('canvas'), map.marks()),
      countDrawn: () => map.countDrawn(),
    },
  };
}
