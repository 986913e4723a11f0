import { BufferGeometry, Float32BufferAttribute, Group, Matrix4, Mesh } from 'three';
import type { Page, Vec3 } from '../../data/page';
import { lengthOf } from '../../data/vectors';
import { circle } from './hardware';
import { makeMaterial } from './material';
import { ORDER } from './order';
import type { Projector } from './projector';
import {
  buildRibbons,
  LOOKS,
  Part,
  RIBBON_FRAGMENT,
  RIBBON_VERTEX,
  VESSEL_LOOK,
} from './ribbons';
import { parseColour, type SceneColours } from './sceneColours';

const LINE_STRENGTH = 0.75;
const FILL_STRENGTH = 0.12;
const OUTLINE_WIDTH = 1.2;
const NECK_WIDTH = 1;
const NECK_RING_WIDTH = 0.6;

/** The vessel: its outline as seen from the eye, filled, and the neck. */
export class VesselParts {
  readonly group = new Group();
  private readonly uniforms = {
    colours: { value: new Float32Array(3 * LOOKS) },
    strengths: { value: new Float32Array(2 * LOOKS).fill(LINE_STRENGTH) },
    centreDepth: { value: 0 },
    focal: { value: 1 },
    chosenItem: { value: 0 },
    part: { value: Part.All },
  };
  private readonly lines = makeMaterial(RIBBON_VERTEX, RIBBON_FRAGMENT, this.uniforms);
  private readonly filling = makeMaterial(FILL_VERTEX, FILL_FRAGMENT, this.uniforms);
  /** A circle of radius 1, put where the outline is. */
  private readonly outline: Mesh[];
  /** The neck's two sides, turned to where they are seen. */
  private readonly sides: Mesh[];
  private readonly geometries: BufferGeometry[] = [];
  private readonly radius: number;
  private readonly neckRadius: number;

  constructor(page: Page) {
    const { outerRadius, neckRadius, neckTop } = page.text.vessel;
    [this.radius, this.neckRadius] = [outerRadius, neckRadius];
    const unit = circle(1, 0);
    const neckBase = Math.sqrt(Math.max(outerRadius ** 2 - neckRadius ** 2, 0));
    const line = (points: Vec3[], isClosed: boolean, width: number): BufferGeometry =>
      this.keep(
        buildRibbons([
          { points, isClosed, radius: 0, width, look: VESSEL_LOOK, item: 0 },
        ]),
      );
    this.outline = [
      new Mesh(this.keep(buildDisc(unit)), this.filling),
      new Mesh(line(unit, true, OUTLINE_WIDTH), this.lines),
    ];
    const side = line(
      [
        [neckRadius, 0, neckBase],
        [neckRadius, 0, neckTop],
      ],
      false,
      NECK_WIDTH,
    );
    this.sides = [new Mesh(side, this.lines), new Mesh(side, this.lines)];
    const rings = [1 / 3, 2 / 3, 1].map((part) => {
      const z = neckBase + part * (neckTop - neckBase);
      const width = part === 1 ? NECK_WIDTH : NECK_RING_WIDTH;
      return new Mesh(line(circle(neckRadius, z), true, width), this.lines);
    });
    this.group.add(...this.outline);
    if (neckRadius > 0 && neckTop > neckBase) this.group.add(...this.sides, ...rings);
    for (const mesh of this.group.children) mesh.renderOrder = ORDER.vessel;
  }

  setColours(colours: SceneColours): void {
    this.uniforms.colours.value.set(parseColour(colours.vessel), 3 * VESSEL_LOOK);
  }

  setView(projector: Projector): void {
    this.uniforms.focal.value = projector.focal;
    this.placeOutline(projector.eye);
    this.placeSides(projector.eye);
  }

  /** Where the lines of sight touch the sphere; from inside there is no outline. */
  private placeOutline(eye: Vec3): void {
    const distance = lengthOf(eye);
    const isOutside = distance > this.radius;
    const towards = eye.map((value) => value / distance) as unknown as Vec3;
    const [x, y, z] = towards;
    const flat = Math.hypot(x, y);
    const side: Vec3 = flat > 1e-9 ? [-y / flat, x / flat, 0] : [1, 0, 0];
    const up: Vec3 = [-z * side[1], z * side[0], x * side[1] - y * side[0]];
    const shift = this.radius ** 2 / distance;
    const radius = Math.sqrt(Math.max(this.radius ** 2 - shift ** 2, 0));
    const place = new Matrix4().set(
      ...rowOf(0, side, up, towards, radius, shift),
      ...rowOf(1, side, up, towards, radius, shift),
      ...rowOf(2, side, up, towards, radius, shift),
      ...([0, 0, 0, 1] as const),
    );
    for (const mesh of this.outline) {
      mesh.visible = isOutside;
      if (isOutside) putMesh(mesh, place);
    }
  }

  private placeSides(eye: Vec3): void {
    const distance = Math.hypot(eye[0], eye[1]);
    const away = Math.acos(Math.min(this.neckRadius / distance, 1));
    this.sides.forEach((mesh, i) => {
      mesh.visible = distance > this.neckRadius;
      const angle = Math.atan2(eye[1], eye[0]) + (i === 0 ? away : -away);
      putMesh(mesh, new Matrix4().makeRotationZ(angle));
    });
  }

  private keep(geometry: BufferGeometry): BufferGeometry {
    this.geometries.push(geometry);
    return geometry;
  }

  dispose(): void {
    for (const geometry of this.geometries) geometry.dispose();
    this.lines.dispose();
    this.filling.dispose();
  }
}

function putMesh(mesh: Mesh, place: Matrix4): void {
  mesh.matrixAutoUpdate = false;
  mesh.matrix.copy(place);
  mesh.matrixWorldNeedsUpdate = true;
}

/** A row of the matrix that puts a unit circle, facing up, to the outline. */
function rowOf(
  axis: 0 | 1 | 2,
  side: Vec3,
  up: Vec3,
  towards: Vec3,
  radius: number,
  shift: number,
): [number, number, number, number] {
  const t = towards[axis];
  return [radius * side[axis], radius * up[axis], radius * t, shift * t];
}

function buildDisc(circlePoints: readonly Vec3[]): BufferGeometry {
  const positions = circlePoints.flatMap((point, i) => {
    const next = circlePoints[(i + 1) % circlePoints.length] ?? point;
    return [0, 0, 0, ...point, ...next];
  });
  const geometry = new BufferGeometry();
  geometry.setAttribute('position', new Float32BufferAttribute(positions, 3));
  return geometry;
}

const FILL_VERTEX = `
uniform mat4 modelViewMatrix;
uniform mat4 projectionMatrix;
in vec3 position;

void main() {
  gl_Position = projectionMatrix * modelViewMatrix * vec4(position, 1.0);
}
`;

const FILL_FRAGMENT = `
uniform vec3 colours[${LOOKS}];
out vec4 colour;

void main() {
  colour = vec4(colours[${VESSEL_LOOK}], ${FILL_STRENGTH});
}
`;
