import { KINDS, OUTLINES } from './sceneColours';

/** Half of a mark's quad, mm. */
const HALF_SIZE = 136;
/** One unit of a shape, mm: 117 mm from the middle to most sides. */
const SHAPE_UNIT = 234;
/** Corners of the largest shape. */
const CORNERS = 6;

/**
 * The edges of all shapes, CORNERS each, as x, y of the outward normal and distance
 * from the middle, mm, y up. Shapes with fewer corners repeat an edge.
 */
export function markEdges(): Float32Array {
  const edges = OUTLINES.flatMap((shape) =>
    Array.from({ length: CORNERS }, (_, i) => {
      const [ax = 0, ay = 0] = shape[i % shape.length] ?? [];
      const [bx = 0, by = 0] = shape[(i + 1) % shape.length] ?? [];
      const length = Math.hypot(bx - ax, by - ay) || 1;
      const [x, y] = [(by - ay) / length, (bx - ax) / length];
      const distance = (x * ax - y * ay) * SHAPE_UNIT;
      // The middle is inside, whichever way the corners go around.
      const sign = distance < 0 ? -1 : 1;
      return [sign * x, sign * y, sign * distance];
    }).flat(),
  );
  return new Float32Array(edges);
}

export const MARK_VERTEX = `
uniform mat4 viewMatrix;
uniform mat4 projectionMatrix;
uniform vec3 cameraPosition;
uniform float focal;
uniform int isNear;
in vec2 corner;
in vec3 place;
in float kind;
out vec2 at;
flat out int drawn;
flat out float pixel;

void main() {
  vec3 middle = (viewMatrix * vec4(place, 1.0)).xyz;
  bool showsFace = dot(cameraPosition - place, place) <= 0.0;
  drawn = int(kind + 0.5);
  pixel = -middle.z / focal;
  // A margin for smooth edges.
  at = corner * (${HALF_SIZE.toFixed(1)} + pixel);
  if (showsFace == (isNear == 1)) {
    gl_Position = vec4(2.0, 2.0, 2.0, 1.0);
    return;
  }
  vec3 right = vec3(1.0, 0.0, 0.0);
  vec3 up = vec3(0.0, 1.0, 0.0);
  if (drawn > 5 && isNear == 0) {
    vec3 face = normalize(mat3(viewMatrix) * place);
    // Any direction along the face will do, but not one close to its normal.
    right = normalize(cross(abs(face.y) < 0.9 ? up : right, face));
    up = cross(face, right);
  }
  gl_Position = projectionMatrix * vec4(middle + right * at.x + up * at.y, 1.0);
}
`;

export const MARK_FRAGMENT = `
uniform vec3 colours[${KINDS}];
uniform float alphas[${KINDS}];
uniform vec3 edges[${OUTLINES.length * CORNERS}];
uniform int isNear;
in vec2 at;
flat in int drawn;
flat in float pixel;
out vec4 colour;

void main() {
  float outside;  // distance outward from the edge, mm
  float width = pixel;
  if (isNear == 1) {
    outside = length(at) - 58.0;
  } else if (drawn < 6) {
    outside = -1.0e9;
    for (int i = 0; i < ${CORNERS}; ++i) {
      vec3 edge = edges[drawn * ${CORNERS} + i];
      outside = max(outside, dot(at, edge.xy) - edge.z);
    }
  } else {
    float radius = length(at);
    width = max(fwidth(radius), 1.0e-3);
    if (drawn == 7) {
      float stroke = max(36.0, 0.9 * pixel);
      outside = abs(radius - 120.0 + 0.5 * stroke) - 0.5 * stroke;
    } else {
      outside = radius - (drawn > 8 ? 126.0 : 84.0);
    }
  }
  float cover = clamp(0.5 - outside / width, 0.0, 1.0);
  if (cover == 0.0) discard;
  colour = vec4(colours[drawn], cover * alphas[drawn]);
}
`;
