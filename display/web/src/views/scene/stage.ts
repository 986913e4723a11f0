import { lengthOf } from '../../data/vectors';
import { Camera, Color, LinearSRGBColorSpace, Scene, WebGLRenderer } from 'three';
import type { Model } from '../../model/model';
import { HardwareParts } from './hardware';
import { LightPathLines } from './lightPaths';
import { Marks } from './marks';
import type { Projector } from './projector';
import { parseColour, type SceneColours } from './sceneColours';
import { VesselParts } from './vessel';

/** All that the graphics processor draws, and the canvas that it draws on. */
export class Stage {
  readonly marks: Marks;
  readonly hardware: HardwareParts;
  readonly lightPaths = new LightPathLines();
  readonly vessel: VesselParts;
  private readonly scene = new Scene();
  private readonly camera = new Camera();
  private renderer: WebGLRenderer;

  /** @throws Error where WebGL 2 is missing */
  constructor(model: Model) {
    this.renderer = makeRenderer();
    this.marks = new Marks(model.page.pmtPositions);
    this.hardware = new HardwareParts(model.page);
    this.vessel = new VesselParts(model.page);
    this.scene.add(
      this.marks.faces,
      this.marks.backs,
      this.hardware.group,
      this.vessel.group,
      this.lightPaths.mesh,
    );
    this.scene.traverse((object) => {
      // Shaders place things where their bounds do not tell.
      object.frustumCulled = false;
    });
    this.camera.matrixAutoUpdate = false;
    this.camera.matrixWorldAutoUpdate = false;
  }

  get canvas(): HTMLCanvasElement {
    return this.renderer.domElement;
  }

  /** Draw on a new canvas, after the old one's context was lost. */
  restart(): void {
    const renderer = makeRenderer();
    this.renderer.dispose();
    this.renderer.domElement.remove();
    this.renderer = renderer;
  }

  setColours(colours: SceneColours): void {
    this.renderer.setClearColor(new Color().setRGB(...parseColour(colours.ground)));
    this.marks.setColours(colours);
    this.vessel.setColours(colours);
    this.lightPaths.setColours(colours);
  }

  setSize(width: number, height: number, pixelRatio: number): void {
    this.renderer.setPixelRatio(pixelRatio);
    this.renderer.setSize(width, height, false);
  }

  draw(projector: Projector, vesselRadius: number): void {
    this.camera.matrixWorldInverse.set(...projector.viewMatrix());
    this.camera.matrixWorld.copy(this.camera.matrixWorldInverse).invert();
    this.camera.projectionMatrix.set(...projector.projectionMatrix());
    this.camera.projectionMatrixInverse.copy(this.camera.projectionMatrix).invert();
    const { focal, eye } = projector;
    this.marks.setFocal(focal);
    this.lightPaths.setView(focal);
    this.vessel.setView(projector);
    // From inside the vessel all hardware is around the eye: none of it is far.
    const isInside = lengthOf(eye) <= vesselRadius;
    this.hardware.setView(focal, isInside ? 1e9 : projector.centreDepth());
    this.renderer.render(this.scene, this.camera);
  }

  dispose(): void {
    this.marks.dispose();
    this.hardware.dispose();
    this.vessel.dispose();
    this.lightPaths.dispose();
    this.renderer.dispose();
    this.renderer.domElement.remove();
  }
}

/** @throws Error where WebGL 2 is missing */
function makeRenderer(): WebGLRenderer {
  // Asked first on a canvas of its own, because the renderer would report to the console.
  const probe = document.createElement('canvas').getContext('webgl2');
  if (probe === null) throw new Error('WebGL 2 is missing.');
  probe.getExtension('WEBGL_lose_context')?.loseContext();
  const renderer = new WebGLRenderer({
    antialias: false,
    depth: false,
    stencil: false,
  });
  // Colours arrive as they are, like those of style sheets.
  renderer.outputColorSpace = LinearSRGBColorSpace;
  renderer.domElement.setAttribute('aria-hidden', 'true');
  return renderer;
}
