import type { Vec3 } from '../../data/page';
import { pointAt } from '../../data/vectors';
import type { Model, State } from '../../model/model';
import { onNextFrame, startDrawing, watchColours } from '../canvas';
import { element as makeElement, setText } from '../dom';
import { type Annotations, drawAnnotations } from './annotations';
import { CameraControl } from './cameraControl';
import { listAnnotations, listKinds, listLightPaths, measureRadius } from './content';
import { type GestureTarget, listenToGestures } from './gestures';
import { Hovering } from './hovering';
import { pickMark, type ProjectedMarks, projectMarks } from './picker';
import { paintPng } from './png';
import { readSceneColours, type SceneColours } from './sceneColours';
import { SceneLabels } from './sceneLabels';
import { captionScene, nameScene } from './sceneWords';
import { Stage } from './stage';

/** What the page around the view has to know. */
export interface SceneReports {
  /** The graphics processor is gone; the view shows nothing. */
  onLost(): void;
  /** It came back by itself, and the view draws again. */
  onRestored(): void;
  /** The eye is at @p place, mm; called for each new picture. */
  onLook(place: Vec3): void;
}

/** How near the pointer must be to a mark, CSS pixels. */
const REACH = 12;
const TOUCH_REACH = 24;
const MOST_PIXELS_PER_CSS_PIXEL = 2;

/** The 3D view of the detector. */
export class SceneView implements GestureTarget {
  /** Pictures drawn so far: it draws only what changed. */
  framesDrawn = 0;
  private readonly root: HTMLElement;
  private readonly overlay: HTMLCanvasElement;
  private readonly caption: HTMLElement;
  private readonly labels: SceneLabels;
  private readonly stage: Stage;
  private readonly camera: CameraControl;
  private readonly hovering: Hovering;
  private readonly stop = new AbortController();
  private readonly resizes: ResizeObserver;
  private readonly request: () => void;
  private width = 0;
  private height = 0;
  private pixelRatio = 1;
  private colours: SceneColours;
  private annotations: Annotations;
  /** Null: not yet projected since the view or what it shows changed. */
  private projected: ProjectedMarks | null = null;
  private isLost = false;

  /** @throws Error where WebGL 2 is missing */
  constructor(
    container: HTMLElement,
    private readonly model: Model,
    private readonly reports: SceneReports,
  ) {
    this.stage = new Stage(model);
    this.overlay = makeElement('canvas', {
      class: 'scene-overlay',
      'aria-hidden': true,
    });
    this.caption = makeElement('p', { class: 'scene-caption' });
    this.root = makeElement(
      'div',
      { class: 'scene', role: 'group', tabindex: 0 },
      this.stage.canvas,
      this.overlay,
    );
    this.labels = new SceneLabels(this.root);
    this.root.append(this.caption);
    container.append(this.root);
    this.camera = new CameraControl(measureRadius(model.page), () => {
      this.changeView();
    });
    this.colours = readSceneColours(this.root);
    this.annotations = listAnnotations(model, this.colours);
    this.request = onNextFrame(() => {
      this.draw();
    });
    this.hovering = new Hovering((pmt) => {
      model.hover(pmt === null ? null : { pmt, reflected: false });
    });
    this.resizes = new ResizeObserver(() => {
      this.resize();
    });
    this.resizes.observe(this.root);
    listenToGestures(this.root, this, this.stop.signal);
    this.watchContext();
    watchColours(() => {
      this.updateColours();
    });
    model.subscribe((changed) => {
      if (!this.stop.signal.aborted) this.update(changed);
    });
    this.update(ALL);
    this.updateColours();
  }

  /** Zoom in, or out with a negative number, by steps as of a button. */
  zoom(steps: number): void {
    this.camera.flyZoom(steps);
  }

  showFirst(): void {
    this.camera.flyFirst();
  }

  turn(right: number, up: number): void {
    this.camera.flyTurn(right, up);
  }

  /** Look from the event to the selected PMT; false if there is no light path. */
  lookAlong(): boolean {
    const { selected, event } = this.model.state;
    if (!selected || event === 'all' || !this.model.pathOf(selected)) return false;
    const { pmtPositions, eventPositions } = this.model.page;
    this.camera.flyAlong(
      pointAt(eventPositions, event),
      pointAt(pmtPositions, selected.pmt),
    );
    return true;
  }

  /** The picture with its labels. */
  savePng(): Promise<Blob> {
    // The browser keeps what was drawn only until it shows it.
    this.draw();
    const canvases = [this.stage.canvas, this.overlay];
    return paintPng(canvases, this.labels.list(), this.pixelRatio, this.colours);
  }

  /** Where the PMTs are in the picture, and which of them can be picked. */
  marks(): ProjectedMarks {
    this.projected ??= projectMarks(
      this.camera.projector(),
      this.model.page.pmtPositions,
      this.model.shown(),
      this.model.state.switches.nearHalf,
    );
    return this.projected;
  }

  /** Start again after the context was lost; false if there is still no WebGL 2. */
  restart(): boolean {
    try {
      this.stage.restart();
    } catch {
      return false;
    }
    this.root.prepend(this.stage.canvas);
    this.isLost = false;
    this.watchContext();
    this.updateColours();
    this.resize();
    return true;
  }

  dispose(): void {
    this.stop.abort();
    this.hovering.stop();
    this.resizes.disconnect();
    this.stage.dispose();
    this.root.remove();
  }

  // What the pointer asks for.

  drag(right: number, down: number): void {
    this.camera.drag(right, down);
  }

  zoomAround(factor: number, x: number, y: number): void {
    this.camera.zoomAround(factor, x, y);
  }

  point(place: { x: number; y: number } | null): void {
    this.hovering.move(place && this.pick(place.x, place.y, REACH));
  }

  choose(x: number, y: number, isTouch: boolean): void {
    const pmt = this.pick(x, y, isTouch ? TOUCH_REACH : REACH);
    this.model.select(pmt === null ? null : { pmt, reflected: false });
  }

  private pick(x: number, y: number, reach: number): number | null {
    return pickMark(this.marks(), x, y, reach);
  }

  // What changes.

  private update(changed: ReadonlySet<keyof State>): void {
    const { model, stage } = this;
    const has = (...keys: (keyof State)[]): boolean =>
      keys.some((key) => changed.has(key));
    const hasNewContent = has('event', 'layers', 'query');
    if (hasNewContent) stage.marks.setKinds(listKinds(model));
    if (hasNewContent || has('switches')) {
      const { vessel, hardware, nearHalf, lightPaths } = model.state.switches;
      stage.vessel.group.visible = vessel;
      stage.hardware.group.visible = hardware;
      stage.marks.backs.visible = nearHalf;
      stage.lightPaths.setPaths(lightPaths ? listLightPaths(model) : []);
      this.setHardwareLook();
      this.projected = null;
      setText(this.caption, captionScene(nearHalf));
    }
    if (hasNewContent) this.root.setAttribute('aria-label', nameScene(model));
    if (has('event', 'selected')) {
      const { selected } = model.state;
      const blocking = selected && model.blockingOf(selected);
      stage.hardware.setBlocking(blocking?.item ?? '');
    }
    if (hasNewContent || has('switches', 'selected', 'hovered')) {
      this.annotations = listAnnotations(model, this.colours);
      this.request();
    }
  }

  private setHardwareLook(): void {
    const { layers, event } = this.model.state;
    this.stage.hardware.setLook(this.colours, layers, event === 'all');
  }

  private updateColours(): void {
    if (this.stop.signal.aborted) return;
    this.colours = readSceneColours(this.root);
    this.stage.setColours(this.colours);
    this.setHardwareLook();
    this.annotations = listAnnotations(this.model, this.colours);
    this.request();
  }

  private resize(): void {
    const { clientWidth, clientHeight } = this.root;
    [this.width, this.height] = [clientWidth, clientHeight];
    this.camera.setSize(clientWidth, clientHeight);
    if (clientWidth === 0 || clientHeight === 0) return;
    this.pixelRatio = Math.min(window.devicePixelRatio, MOST_PIXELS_PER_CSS_PIXEL);
    this.stage.setSize(clientWidth, clientHeight, this.pixelRatio);
    this.projected = null;
    // At once: a canvas of a new size is empty until it is drawn.
    this.draw();
  }

  private watchContext(): void {
    const { canvas } = this.stage;
    const { signal } = this.stop;
    canvas.addEventListener(
      'webglcontextlost',
      (event) => {
        // Else the browser never brings it back.
        event.preventDefault();
        if (canvas !== this.stage.canvas) return;
        this.isLost = true;
        this.reports.onLost();
      },
      { signal },
    );
    canvas.addEventListener(
      'webglcontextrestored',
      () => {
        if (canvas !== this.stage.canvas) return;
        this.isLost = false;
        // The new context has not even the colour of the ground.
        this.updateColours();
        this.reports.onRestored();
      },
      { signal },
    );
  }

  private draw(): void {
    if (this.stop.signal.aborted || this.isLost || this.width * this.height === 0)
      return;
    const isFlying = this.camera.advance(performance.now());
    const projector = this.camera.projector();
    this.stage.draw(projector, this.model.page.text.vessel.outerRadius);
    const pen = startDrawing(this.overlay, this.width, this.height);
    if (pen) drawAnnotations(pen, projector, this.annotations, this.colours);
    this.labels.place(projector, this.annotations);
    ++this.framesDrawn;
    this.reports.onLook(projector.eye);
    if (isFlying) this.changeView();
  }

  private changeView(): void {
    this.projected = null;
    this.request();
  }
}

const ALL: ReadonlySet<keyof State> = new Set([
  'event',
  'selected',
  'hovered',
  'layers',
  'query',
  'switches',
]);

/**
 * Put the 3D view into an element.
 *
 * @returns null where WebGL 2 is missing
 */
export function createScene(
  container: HTMLElement,
  model: Model,
  reports: SceneReports,
): SceneView | null {
  try {
    return new SceneView(container, model, reports);
  } catch {
    return null;
  }
}
