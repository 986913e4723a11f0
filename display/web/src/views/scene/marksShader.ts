import { CLEAR_LAYER, NO_PATH_LAYER } from '../../model/model';
import { FIRST_SHARE_KIND, KINDS, OUTLINES } from './sceneColours';

/** Half of the quad of a shape, mm. */
const HALF_SIZE = 136;
/** Of the discs of clear PMTs, of those that show shares, and of rings, mm. */
const DISC_RADIUS = 84;
const SHARE_RADIUS = 126;
const RING_RADIUS = 120;
const RING_STROKE = 30;
/** Of the dots of the near half, mm. */
const NEAR_RADIUS = 58;
/** One unit of a shape, mm: 117 mm from the middle to most sides. */
const SHAPE_UNIT = 234;
/** Of a shape at the edge of the picture, where it would cover its neighbours. */
const SMALLEST_SHAPE = 0.42;
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

/**
 * A quad around each mark, upright on the screen and no larger than it must be:
 * where the processor draws, time goes by the pixel.
 */
export const MARK_VERTEX = `
uniform mat4 viewMatrix;
uniform mat4 projectionMatrix;
uniform vec3 cameraPosition;
uniform float focal;
uniform int isNear;
in vec3 position;
in float kind;
out vec2 at;  // mm from the middle, right and up
flat out int drawn;
flat out float pixel;  // mm
flat out float size;   // of a shape, or the radius of a disc, mm
flat out vec3 face;    // where the PMT faces from or to
flat out vec3 sight;   // along the line of sight, of depth 1

void main() {
  bool showsFace = dot(cameraPosition - position, position) <= 0.0;
  if (showsFace == (isNear == 1)) {
    gl_Position = vec4(2.0, 2.0, 2.0, 1.0);
    return;
  }
  vec3 middle = (viewMatrix * vec4(position, 1.0)).xyz;
  drawn = int(kind + 0.5);
  pixel = -middle.z / focal;
  sight = middle / -middle.z;
  float radius = length(position);
  vec3 outward = radius > 0.0 ? position / radius : vec3(0.0, 0.0, 1.0);
  face = mat3(viewMatrix) * outward;
  float slant = abs(dot(normalize(sight), face));
  vec2 extent;
  if (isNear == 1) {
    size = ${NEAR_RADIUS.toFixed(1)};
    extent = vec2(size);
  } else if (drawn < ${CLEAR_LAYER}) {
    // Smaller where PMTs stand close together, at the edge of the picture.
    size = mix(${SMALLEST_SHAPE}, 1.0, sqrt(slant));
    extent = vec2(${HALF_SIZE.toFixed(1)} * size);
  } else {
    size = drawn == ${NO_PATH_LAYER} ? ${RING_RADIUS.toFixed(1)}
         : drawn < ${FIRST_SHARE_KIND} ? ${DISC_RADIUS.toFixed(1)}
         : ${SHARE_RADIUS.toFixed(1)};
    // The largest reach of the disc's points, moved along the line of sight.
    vec2 across = face.xy + sight.xy * face.z;
    extent = size * sqrt(max(1.0 + sight.xy * sight.xy - across * across, 0.0));
  }
  vec2 corner = vec2((gl_VertexID & 1) * 2 - 1, (gl_VertexID & 2) - 1);
  at = corner * (extent + pixel);
  gl_Position = projectionMatrix * vec4(middle + vec3(at, 0.0), 1.0);
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
flat in float size;
flat in vec3 face;
flat in vec3 sight;
out vec4 colour;

// The part of a pixel within a distance of the middle of a disc. Discs seen from
// the side are thinner than a pixel.
float coverDisc(float distance, float radius, float width) {
  return clamp(0.5 + (radius - distance) / width, 0.0, 1.0) -
         clamp(0.5 - (radius + distance) / width, 0.0, 1.0);
}

void main() {
  float cover;
  if (isNear == 1) {
    cover = coverDisc(length(at), size, pixel);
  } else if (drawn < ${CLEAR_LAYER}) {
    float outside = -1.0e9;
    for (int i = 0; i < ${CORNERS}; ++i) {
      vec3 edge = edges[drawn * ${CORNERS} + i];
      outside = max(outside, dot(at, edge.xy) - edge.z * size);
    }
    cover = clamp(0.5 - outside / pixel, 0.0, 1.0);
  } else {
    // Where the line of sight meets the plane of the disc.
    float towards = dot(sight, face);
    towards = abs(towards) < 1.0e-3 ? 1.0e-3 : towards;
    vec2 slope = face.xy / towards;
    vec3 inPlane = vec3(at, 0.0) - sight * dot(at, slope);
    float radius = max(length(inPlane), 1.0e-3);
    // How much the radius changes from one pixel to the next.
    vec2 change = (inPlane.xy - slope * dot(inPlane, sight)) / radius;
    float width = pixel * max(length(change), 1.0);
    cover = coverDisc(radius, size, width);
    if (drawn == ${NO_PATH_LAYER}) {
      float stroke = max(${RING_STROKE.toFixed(1)}, pixel);
      cover -= coverDisc(radius, max(size - stroke, 0.0), width);
    }
  }
  if (cover <= 0.0) discard;
  colour = vec4(colours[drawn], cover * alphas[drawn]);
}
`;
