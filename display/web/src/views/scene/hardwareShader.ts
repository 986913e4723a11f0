import { Part, PART_FRAGMENT } from './ribbons';

/** Of areas, compared with lines, so that the PMTs behind a plate can be told apart. */
const AREA_STRENGTH = 0.7;

const HEAD = `
uniform mat4 modelViewMatrix;
uniform mat4 projectionMatrix;
uniform int part;
uniform float chosenItem;
in vec3 position;
in vec2 mark;  // look and item
out float depth;
flat out int look;

void place(vec4 at) {
  depth = -at.z;
  look = int(mark.x + 0.5);
  gl_Position = projectionMatrix * at;
  if (part == ${Part.Item} && mark.y != chosenItem) gl_Position = vec4(2, 2, 2, 1);
}
`;

export const PATCH_VERTEX = `${HEAD}
void main() {
  place(modelViewMatrix * vec4(position, 1.0));
}
`;

export const PATCH_FRAGMENT = `${PART_FRAGMENT}
in float depth;
flat in int look;
out vec4 colour;

void main() {
  colour = vec4(colours[look], ${AREA_STRENGTH.toFixed(2)} * strengthAt(depth, look));
}
`;

export const SPOT_VERTEX = `${HEAD}
uniform float focal;
in float size;
out vec2 at;
flat out float halfSize;
flat out float pixel;

void main() {
  vec4 middle = modelViewMatrix * vec4(position, 1.0);
  vec2 corner = vec2((gl_VertexID & 1) * 2 - 1, (gl_VertexID & 2) - 1);
  pixel = max(-middle.z, 0.0) / focal;
  halfSize = size;
  at = corner * (size + pixel);
  place(middle + vec4(at, 0.0, 0.0));
}
`;

export const SPOT_FRAGMENT = `${PART_FRAGMENT}
in float depth;
in vec2 at;
flat in int look;
flat in float halfSize;
flat in float pixel;
out vec4 colour;

void main() {
  float outside = max(abs(at.x), abs(at.y)) - halfSize;
  float cover = clamp(0.5 - outside / pixel, 0.0, 1.0);
  colour = vec4(colours[look], cover * strengthAt(depth, look));
}
`;
