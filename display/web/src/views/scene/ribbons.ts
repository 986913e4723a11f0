import { BufferGeometry, Float32BufferAttribute, Uint32BufferAttribute } from 'three';
import type { Vec3 } from '../../data/page';
import { lengthOf } from '../../data/vectors';
import { addScaled } from './vectors';

/** A line of the 3D view. */
export interface Line {
  points: readonly Vec3[];
  isClosed: boolean;
  /** mm */
  radius: number;
  /** Width at least, CSS pixels. */
  width: number;
  /** Number of its look. */
  look: number;
  /** Number in `itemNames`; 0: none. */
  item: number;
}

/**
 * A geometry of bands that face the eye, one a line, with corners that do not
 * overlap: overlapping parts would show where lines are see-through.
 */
export function buildRibbons(lines: readonly Line[]): BufferGeometry {
  const places: number[][] = [[], [], []];
  const shapes: number[] = [];
  const items: number[] = [];
  const index: number[] = [];
  for (const line of lines) {
    const points = withoutRepeats(line.points, line.isClosed);
    const count = points.length;
    if (count < 2) continue;
    const first = items.length;
    for (let i = 0; i < count; ++i) {
      const at = points[i];
      const before = points[i - 1] ?? (line.isClosed ? points[count - 1] : at);
      const after = points[i + 1] ?? (line.isClosed ? points[0] : at);
      if (!at || !before || !after) continue;
      for (const side of [-1, 1]) {
        places[0]?.push(...before);
        places[1]?.push(...at);
        places[2]?.push(...after);
        shapes.push(side, line.radius, line.width, line.look);
        items.push(line.item);
      }
    }
    const pieces = line.isClosed ? count : count - 1;
    for (let i = 0; i < pieces; ++i) {
      const a = first + 2 * i;
      const b = first + 2 * ((i + 1) % count);
      index.push(a, a + 1, b, b, a + 1, b + 1);
    }
  }
  const geometry = new BufferGeometry();
  ['before', 'position', 'after'].forEach((name, i) => {
    geometry.setAttribute(name, new Float32BufferAttribute(places[i] ?? [], 3));
  });
  geometry.setAttribute('shape', new Float32BufferAttribute(shapes, 4));
  geometry.setAttribute('item', new Float32BufferAttribute(items, 1));
  geometry.setIndex(new Uint32BufferAttribute(index, 1));
  return geometry;
}

/** Points that repeat the one before have no direction. */
function withoutRepeats(points: readonly Vec3[], isClosed: boolean): Vec3[] {
  const differ = (a: Vec3, b: Vec3): boolean => lengthOf(addScaled(a, b, -1)) > 0.01;
  const kept = points.filter((point, i) => {
    const before = points[i - 1];
    return !before || differ(point, before);
  });
  const [first, last] = [kept[0], kept.at(-1)];
  if (isClosed && kept.length > 1 && first && last && !differ(first, last)) kept.pop();
  return kept;
}

export const LOOKS = 8;
export const VESSEL_LOOK = 6;
export const PATH_LOOK = 7;

/** Which part of a geometry is drawn: `part` of the shaders. */
export const Part = { Far: 0, Near: 1, All: 2, Item: 3 } as const;

export const RIBBON_VERTEX = `
uniform mat4 modelViewMatrix;
uniform mat4 projectionMatrix;
uniform float focal;
uniform int part;
uniform float chosenItem;
in vec3 before;
in vec3 position;
in vec3 after;
in vec4 shape;
in float item;
out float depth;
out float across;  // CSS pixels from the middle line
out float halfWidth;
flat out int look;

// Across the picture of a piece; zero if it points to the eye.
vec3 crossDirection(vec3 along, vec3 at) {
  vec3 direction = cross(along, at);
  float size = length(direction);
  return size > 1.0e-6 * dot(at, at) ? direction / size : vec3(0.0);
}

void main() {
  vec3 at = (modelViewMatrix * vec4(position, 1.0)).xyz;
  vec3 back = (modelViewMatrix * vec4(before, 1.0)).xyz;
  vec3 ahead = (modelViewMatrix * vec4(after, 1.0)).xyz;
  vec3 first = crossDirection(at - back, at);
  vec3 second = crossDirection(ahead - at, at);
  if (first == vec3(0.0)) first = second;
  if (second == vec3(0.0)) second = first;
  vec3 direction = first + second;
  float size = length(direction);
  direction = size > 1.0e-3 ? direction / size : first;
  // Longer at corners, so that the width stays the same.
  float mitre = 1.0 / max(dot(direction, first), 0.4);
  depth = -at.z;
  float visibleDepth = max(depth, 20.0);
  halfWidth = max(0.5 * shape.z, shape.y * focal / visibleDepth);
  if (part == ${Part.Item}) halfWidth = 1.3 * halfWidth + 0.4;
  halfWidth = min(halfWidth, 400.0);
  float margin = halfWidth + 0.6;
  across = shape.x * margin;
  look = int(shape.w + 0.5);
  vec3 moved = at + direction * (shape.x * margin * mitre * visibleDepth / focal);
  gl_Position = projectionMatrix * vec4(moved, 1.0);
  if (part == ${Part.Item} && item != chosenItem) gl_Position = vec4(2, 2, 2, 1);
}
`;

/** Common to what is drawn in two parts: strength is of far and of near parts. */
export const PART_FRAGMENT = `
uniform vec3 colours[${LOOKS}];
uniform vec2 strengths[${LOOKS}];
uniform float centreDepth;
uniform int part;

float strengthAt(float depth, int look) {
  bool isFar = depth > centreDepth;
  if (part == ${Part.Item}) return 1.0;
  if (part == ${Part.All}) return strengths[look].y;
  if (isFar != (part == ${Part.Far})) discard;
  return isFar ? strengths[look].x : strengths[look].y;
}
`;

export const RIBBON_FRAGMENT = `${PART_FRAGMENT}
in float depth;
in float across;
in float halfWidth;
flat in int look;
out vec4 colour;

void main() {
  float cover = clamp(halfWidth + 0.5 - abs(across), 0.0, 1.0);
  colour = vec4(colours[look], cover * strengthAt(depth, look));
}
`;
