import {
  BufferGeometry,
  Float32BufferAttribute,
  Group,
  Mesh,
  type RawShaderMaterial,
} from 'three';
import type { Page, Vec3 } from '../../data/page';
import { pointAt } from '../../data/vectors';
import { makeMaterial } from './material';
import {
  PATCH_FRAGMENT,
  PATCH_VERTEX,
  SPOT_FRAGMENT,
  SPOT_VERTEX,
} from './hardwareShader';
import { ORDER } from './order';
import {
  buildRibbons,
  type Line,
  LOOKS,
  Part,
  RIBBON_FRAGMENT,
  RIBBON_VERTEX,
} from './ribbons';
import { parseColour, type SceneColours } from './sceneColours';

/** Tubes and rings are at least so wide, CSS pixels. */
const TUBE_WIDTH = 1.35;
const RING_WIDTH = 2.2;
const OUTLINE_WIDTH = 0.8;
const RING_PIECES = 96;
/** Spots are drawn so much larger than they are, to be seen. */
const SPOT_SCALE = 4 / 3;
const FAR_STRENGTH = 0.42;
const NEAR_STRENGTH = 0.8;
/** Of hardware whose component is not shown. */
const FADED_STRENGTH = 0.18;
/** Of all hardware where colours mean shares, not components. */
const SHARE_STRENGTH = 0.3;

/** Ropes, plates, anchors, pipes and the boss, behind and before the vessel. */
export class HardwareParts {
  readonly group = new Group();
  private readonly uniforms = {
    colours: { value: new Float32Array(3 * LOOKS) },
    strengths: { value: new Float32Array(2 * LOOKS) },
    centreDepth: { value: 0 },
    focal: { value: 1 },
    chosenItem: { value: 0 },
  };
  private readonly blocking = new Group();
  /** Numbers of what can block, from 1; parts that cannot have 0. */
  private readonly items: ReadonlyMap<string, number>;
  private readonly geometries: BufferGeometry[];
  private readonly materials: RawShaderMaterial[] = [];

  constructor(page: Page) {
    this.items = new Map(page.text.itemNames.map((name, i) => [name, i]));
    const itemOf = (name: string): number => this.items.get(name) ?? 0;
    const kinds = [
      [buildPatches(page, itemOf), PATCH_VERTEX, PATCH_FRAGMENT],
      [buildRibbons(collectLines(page, itemOf)), RIBBON_VERTEX, RIBBON_FRAGMENT],
      [buildSpots(page, itemOf), SPOT_VERTEX, SPOT_FRAGMENT],
    ] as const;
    this.geometries = kinds.map(([geometry]) => geometry);
    for (const [part, order] of [
      [Part.Far, ORDER.farHardware],
      [Part.Near, ORDER.nearHardware],
      [Part.Item, ORDER.blocking],
    ] as const) {
      for (const [geometry, vertex, fragment] of kinds) {
        const uniforms = { ...this.uniforms, part: { value: part } };
        const material = makeMaterial(vertex, fragment, uniforms);
        this.materials.push(material);
        const mesh = new Mesh(geometry, material);
        mesh.renderOrder = order;
        (part === Part.Item ? this.blocking : this.group).add(mesh);
      }
    }
    this.group.add(this.blocking);
  }

  /**
   * @param shown    by layer
   * @param isShare  whether colours mean shares
   */
  setLook(colours: SceneColours, shown: readonly boolean[], isShare: boolean): void {
    for (let layer = 0; layer < LOOKS; ++layer) {
      const colour = isShare ? colours.vessel : (colours.layers[layer] ?? '');
      this.uniforms.colours.value.set(parseColour(colour), 3 * layer);
      const full = isShare ? SHARE_STRENGTH : NEAR_STRENGTH;
      const near = shown[layer] ? full : Math.min(FADED_STRENGTH, full);
      const far = (near * FAR_STRENGTH) / NEAR_STRENGTH;
      this.uniforms.strengths.value.set([far, near], 2 * layer);
    }
  }

  /** Emphasise the parts of one item; "": of none. */
  setBlocking(name: string): void {
    const item = this.items.get(name) ?? 0;
    this.blocking.visible = item !== 0;
    this.uniforms.chosenItem.value = item;
  }

  setView(focal: number, centreDepth: number): void {
    this.uniforms.focal.value = focal;
    this.uniforms.centreDepth.value = centreDepth;
  }

  dispose(): void {
    for (const geometry of this.geometries) geometry.dispose();
    for (const material of this.materials) material.dispose();
  }
}

type FindItem = (name: string) => number;

function collectLines(page: Page, itemOf: FindItem): Line[] {
  return page.text.hardware.flatMap(({ tubes, patches, rings }, look) => [
    ...tubes.map(({ name, radius, points }) => ({
      points: listPoints(points),
      isClosed: false,
      radius,
      width: TUBE_WIDTH,
      look,
      item: itemOf(name),
    })),
    // Smooth edges for what is filled.
    ...patches.map(({ name, points }) => ({
      points: listPoints(points),
      isClosed: true,
      radius: 0,
      width: OUTLINE_WIDTH,
      look,
      item: itemOf(name),
    })),
    ...rings.map(({ name, radius, z }) => ({
      points: circle(radius, z),
      isClosed: true,
      radius: 0,
      width: RING_WIDTH,
      look,
      item: itemOf(name),
    })),
  ]);
}

function listPoints(numbers: readonly number[]): Vec3[] {
  return Array.from({ length: Math.floor(numbers.length / 3) }, (_, i) =>
    pointAt(numbers, i),
  );
}

/** A horizontal circle around the z axis. */
export function circle(radius: number, z: number): Vec3[] {
  return Array.from({ length: RING_PIECES }, (_, i) => {
    const angle = (2 * Math.PI * i) / RING_PIECES;
    return [radius * Math.cos(angle), radius * Math.sin(angle), z];
  });
}

/** Triangles from the middle of each outline to its sides. */
function buildPatches(page: Page, itemOf: FindItem): BufferGeometry {
  const positions: number[] = [];
  const marks: number[] = [];
  page.text.hardware.forEach(({ patches }, look) => {
    for (const { name, points } of patches) {
      const corners = listPoints(points);
      const middle = [0, 1, 2].map(
        (axis) =>
          corners.reduce((sum, corner) => sum + (corner[axis] ?? 0), 0) /
          corners.length,
      );
      corners.forEach((corner, i) => {
        const next = corners[(i + 1) % corners.length] ?? corner;
        positions.push(...middle, ...corner, ...next);
        for (let k = 0; k < 3; ++k) marks.push(look, itemOf(name));
      });
    }
  });
  const geometry = new BufferGeometry();
  geometry.setAttribute('position', new Float32BufferAttribute(positions, 3));
  geometry.setAttribute('mark', new Float32BufferAttribute(marks, 2));
  return geometry;
}

/** A square for each spot, that faces the eye. */
function buildSpots(page: Page, itemOf: FindItem): BufferGeometry {
  const positions: number[] = [];
  const marks: number[] = [];
  const sizes: number[] = [];
  const index: number[] = [];
  page.text.hardware.forEach(({ spots }, look) => {
    for (const { name, radius, at } of spots) {
      const first = sizes.length;
      for (let corner = 0; corner < 4; ++corner) {
        positions.push(...at);
        marks.push(look, itemOf(name));
        sizes.push(SPOT_SCALE * radius);
      }
      // The shader tells corners by their numbers.
      index.push(...[0, 1, 2, 2, 1, 3].map((corner) => first + corner));
    }
  });
  const geometry = new BufferGeometry();
  geometry.setAttribute('position', new Float32BufferAttribute(positions, 3));
  geometry.setAttribute('mark', new Float32BufferAttribute(marks, 2));
  geometry.setAttribute('size', new Float32BufferAttribute(sizes, 1));
  geometry.setIndex(index);
  return geometry;
}
