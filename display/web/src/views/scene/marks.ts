import {
  BufferAttribute,
  InstancedBufferAttribute,
  InstancedBufferGeometry,
  Mesh,
  type RawShaderMaterial,
} from 'three';
import { makeMaterial } from './material';
import { markEdges, MARK_FRAGMENT, MARK_VERTEX } from './marksShader';
import { ORDER } from './order';
import { FADED_KIND, KINDS, parseColour, type SceneColours } from './sceneColours';
import { isFinitePoint, pointAt } from './vectors';

/** Of faded marks, in the colour of clear. */
const FADED_ALPHA = 0.7;
/** Of the dots of the near half. */
const NEAR_ALPHA = 0.6;

/** The order in which kinds are drawn: the rare lie on top. */
const KIND_ORDER = [8, 6, 9, 10, 11, 12, 13, 7, 0, 1, 2, 3, 4, 5];

/** The PMTs: one quad for each, in one drawing call. */
export class Marks {
  readonly faces: Mesh;
  /** The half that shows its back, as dots. */
  readonly backs: Mesh;
  private readonly geometry = new InstancedBufferGeometry();
  private readonly places: InstancedBufferAttribute;
  private readonly kinds: InstancedBufferAttribute;
  /** Numbers of the PMTs that have a position. */
  private readonly drawable: number[] = [];
  private readonly materials: RawShaderMaterial[] = [];
  private readonly focal = { value: 1 };
  private readonly colours = { value: new Float32Array(3 * KINDS) };

  constructor(private readonly positions: Float64Array) {
    for (let pmt = 0; 3 * pmt < positions.length; ++pmt) {
      if (isFinitePoint(pointAt(positions, pmt))) this.drawable.push(pmt);
    }
    const count = this.drawable.length;
    this.places = new InstancedBufferAttribute(new Float32Array(3 * count), 3);
    this.kinds = new InstancedBufferAttribute(new Float32Array(count), 1);
    const corners = new Float32Array([-1, -1, 1, -1, 1, 1, -1, 1]);
    this.geometry.setAttribute('corner', new BufferAttribute(corners, 2));
    this.geometry.setAttribute('place', this.places);
    this.geometry.setAttribute('kind', this.kinds);
    this.geometry.setIndex([0, 1, 2, 0, 2, 3]);
    this.geometry.instanceCount = count;
    const edges = { value: markEdges() };
    const alphas = { value: new Float32Array(KINDS).fill(1) };
    alphas.value[FADED_KIND] = FADED_ALPHA;
    const makeMesh = (isNear: 0 | 1, alphasOfIt: { value: Float32Array }): Mesh => {
      const material = makeMaterial(MARK_VERTEX, MARK_FRAGMENT, {
        edges,
        colours: this.colours,
        alphas: alphasOfIt,
        isNear: { value: isNear },
        focal: this.focal,
      });
      this.materials.push(material);
      return new Mesh(this.geometry, material);
    };
    this.faces = makeMesh(0, alphas);
    this.backs = makeMesh(1, { value: nearAlphas() });
    this.faces.renderOrder = ORDER.marks;
    this.backs.renderOrder = ORDER.nearMarks;
  }

  /** @param kinds by PMT: how it is drawn */
  setKinds(kinds: Uint8Array): void {
    let next = 0;
    for (const kind of KIND_ORDER) {
      for (const pmt of this.drawable) {
        if (kinds[pmt] !== kind) continue;
        this.places.set(this.positions.subarray(3 * pmt, 3 * pmt + 3), 3 * next);
        this.kinds.setX(next, kind);
        ++next;
      }
    }
    this.places.needsUpdate = true;
    this.kinds.needsUpdate = true;
  }

  setColours(colours: SceneColours): void {
    const faded = colours.layers[6] ?? '';
    const all = [...colours.layers, faded, ...colours.shares].flatMap(parseColour);
    this.colours.value.set(all);
  }

  setFocal(focal: number): void {
    this.focal.value = focal;
  }

  dispose(): void {
    this.geometry.dispose();
    for (const material of this.materials) material.dispose();
  }
}

function nearAlphas(): Float32Array {
  const alphas = new Float32Array(KINDS).fill(NEAR_ALPHA);
  alphas[FADED_KIND] = 0;
  return alphas;
}
