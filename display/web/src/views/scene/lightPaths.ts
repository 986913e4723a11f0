import { Mesh } from 'three';
import type { Vec3 } from '../../data/page';
import { makeMaterial } from './material';
import { ORDER } from './order';
import {
  buildRibbons,
  LOOKS,
  Part,
  PATH_LOOK,
  RIBBON_FRAGMENT,
  RIBBON_VERTEX,
} from './ribbons';
import { parseColour, type SceneColours } from './sceneColours';

const STRENGTH = 0.25;
const WIDTH = 1;

/** The light paths of all shown PMTs, thin. */
export class LightPathLines {
  readonly mesh: Mesh;
  private readonly uniforms = {
    colours: { value: new Float32Array(3 * LOOKS) },
    strengths: { value: new Float32Array(2 * LOOKS).fill(STRENGTH) },
    centreDepth: { value: 0 },
    focal: { value: 1 },
    chosenItem: { value: 0 },
    part: { value: Part.All },
  };
  private readonly material = makeMaterial(
    RIBBON_VERTEX,
    RIBBON_FRAGMENT,
    this.uniforms,
  );

  constructor() {
    this.mesh = new Mesh(buildRibbons([]), this.material);
    this.mesh.visible = false;
    this.mesh.renderOrder = ORDER.lightPaths;
  }

  setPaths(paths: readonly (readonly Vec3[])[]): void {
    this.mesh.geometry.dispose();
    this.mesh.geometry = buildRibbons(
      paths.map((points) => ({
        points,
        isClosed: false,
        radius: 0,
        width: WIDTH,
        look: PATH_LOOK,
        item: 0,
      })),
    );
    this.mesh.visible = paths.length > 0;
  }

  setColours(colours: SceneColours): void {
    this.uniforms.colours.value.set(parseColour(colours.selection), 3 * PATH_LOOK);
  }

  setView(focal: number): void {
    this.uniforms.focal.value = focal;
  }

  dispose(): void {
    this.mesh.geometry.dispose();
    this.material.dispose();
  }
}
