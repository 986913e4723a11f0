import { pointAt } from '../../data/vectors';
import { BufferAttribute, BufferGeometry, Mesh, type RawShaderMaterial } from 'three';
import { makeMaterial } from './material';
import { markEdges, MARK_FRAGMENT, MARK_VERTEX } from './marksShader';
import { ORDER } from './order';
import { FADED_KIND, KINDS, parseColour, type SceneColours } from './sceneColours';
import { isFinitePoint } from './vectors';

/** Of faded marks, in the colour of clear. */
const FADED_ALPHA = 0.7;
/** Of the dots of the near half. */
const NEAR_ALPHA = 0.6;

/** The order in which kinds are drawn: the rare lie on top. */
const KIND_ORDER = [8, 6, 9, 10, 11, 12, 13, 7, 0, 1, 2, 3, 4, 5];

/**
 * The PMTs: one quad for each, in one drawing call. Not instances: without a
 * graphics processor each would cost as much as a call.
 */
export class Marks {
  readonly faces: Mesh;
  /** The half that shows its back, as dots. */
  readonly backs: Mesh;
  private readonly geometry = new BufferGeometry();
  /** Four times each, as of the corners of a quad. */
  private readonly places: BufferAttribute;
  private readonly kinds: BufferAttribute;
  /** Numbers of the PMTs that have a position. */
  private readonly drawable: number[] = [];
  private readonly materials: RawShaderMaterial[];
  private readonly focal = { value: 1 };
  private readonly colours = { value: new Float32Array(3 * KINDS) };

  constructor(private readonly positions: Float64Array) {
    for (let pmt = 0; 3 * pmt < positions.length; ++pmt) {
      if (isFinitePoint(pointAt(positions, pmt))) this.drawable.push(pmt);
    }
    const count = this.drawable.length;
    this.places = new BufferAttribute(new Float32Array(12 * count), 3);
    this.kinds = new BufferAttribute(new Uint8Array(4 * count), 1);
    this.geometry.setAttribute('position', this.places);
    this.geometry.setAttribute('kind', this.kinds);
    this.geometry.setIndex(new BufferAttribute(indexQuads(count), 1));
    const edges = { value: markEdges() };
    const [faces, backs] = ([0, 1] as const).map((isNear) =>
      makeMaterial(MARK_VERTEX, MARK_FRAGMENT, {
        edges,
        colours: this.colours,
        alphas: { value: listAlphas(isNear === 1) },
        isNear: { value: isNear },
        focal: this.focal,
      }),
    ) as [RawShaderMaterial, RawShaderMaterial];
    this.materials = [faces, backs];
    this.faces = new Mesh(this.geometry, faces);
    this.backs = new Mesh(this.geometry, backs);
    this.faces.renderOrder = ORDER.marks;
    this.backs.renderOrder = ORDER.nearMarks;
  }

  /** @param kinds by PMT: how it is drawn */
  setKinds(kinds: Uint8Array): void {
    let next = 0;
    for (const kind of KIND_ORDER) {
      for (const pmt of this.drawable) {
        if (kinds[pmt] !== kind) continue;
        const place = this.positions.subarray(3 * pmt, 3 * pmt + 3);
        for (let corner = 0; corner < 4; ++corner) {
          this.places.array.set(place, 3 * next);
          this.kinds.array[next] = kind;
          ++next;
        }
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

function listAlphas(isNear: boolean): Float32Array {
  const alphas = new Float32Array(KINDS).fill(isNear ? NEAR_ALPHA : 1);
  alphas[FADED_KIND] = isNear ? 0 : FADED_ALPHA;
  return alphas;
}

/** Two triangles for the corners 4 i to 4 i + 3. */
function indexQuads(count: number): Uint32Array {
  const index = new Uint32Array(6 * count);
  for (let i = 0; i < count; ++i) {
    index.set(
      [0, 1, 2, 2, 1, 3].map((corner) => 4 * i + corner),
      6 * i,
    );
  }
  return index;
}
