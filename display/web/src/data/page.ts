/**
 * What a page holds beside its program: one JSON text (`PageText`) and blocks of
 * numbers. `display/DisplayPage.hpp` writes them; `decodePage` reads and checks them.
 */

/** Verdicts as the program numbers them (`du/Verdict.hpp`). */
export const Verdict = {
  Clear: 0,
  HoldDownRope: 1,
  SupportRope: 2,
  BellyPlate: 3,
  NCDAnchor: 4,
  AVPipe: 5,
  NeckBoss: 6,
  TotalReflection: 7,
  PMTNotInWater: 8,
  EventAtPMT: 9,
  PositionNotFinite: 10,
  NoReflectedPath: 11,
} as const;
export type Verdict = number;

/** The components in the order of testing, as numbered in verdicts. */
export const COMPONENTS = [1, 2, 3, 4, 5, 6] as const;

export type Vec3 = readonly [number, number, number];

/** The liquid inside the vessel, its wall, the water: as `eMedium`. */
export type Medium = 0 | 1 | 2;

/** A rope or pipe along a line through points. Lengths in mm, as everywhere. */
export interface Tube {
  /** As in `itemNames`, or "" if no verdict tells this part from others. */
  name: string;
  radius: number;
  /** x, y, z of each point in turn. */
  points: number[];
}

/** A plate: the outline of a patch, closed. */
export interface Patch {
  name: string;
  points: number[];
}

/** An anchor. */
export interface Spot {
  name: string;
  radius: number;
  at: [number, number, number];
}

/** A horizontal circle around the z axis. */
export interface Ring {
  name: string;
  radius: number;
  z: number;
}

export interface Hardware {
  /** "nothing to test": loaded, but without any item. */
  state: 'on' | 'off' | 'nothing to test';
  tubes: Tube[];
  patches: Patch[];
  spots: Spot[];
  rings: Ring[];
}

/** A light path that its angle cannot give exactly enough. */
export interface StoredPath {
  event: number;
  pmt: number;
  reflected: boolean;
  /** The medium of each segment, so one fewer than points. */
  media: Medium[];
  /** x, y, z of each point in turn, from the event to the PMT. */
  points: number[];
}

/** The JSON text of a page. */
export interface PageText {
  format: 1;
  /** Of the program that wrote the page. */
  version: string;
  /** Empty: "Shadow display". */
  title: string;
  detector: string;
  fingerprint: string;
  run: number;
  tolerance: number;
  /** nm */
  wavelength: number;
  vessel: {
    innerRadius: number;
    outerRadius: number;
    neckRadius: number;
    /** Up to where the neck is drawn. */
    neckTop: number;
  };
  /** By medium. */
  refractiveIndices: [number, number, number];
  groupIndices: [number, number, number];
  /** By component, in the order of testing. */
  hardware: Hardware[];
  pmtNames: string[];
  eventNames: string[];
  /** What can block, for `items`; the first is "". */
  itemNames: string[];
  /** "verdicts": too many events for light paths. */
  content: 'paths' | 'verdicts';
  hasReflections: boolean;
  storedPaths: StoredPath[];
}

/** Of direct or of reflected light. Pair p of event e and PMT i is e * pmts + i. */
export interface Light {
  /** For each pair. */
  verdicts: Uint8Array;
  /** The others only where `content` is "paths", else null: for each pair */
  paths: LightDetails | null;
}

export interface LightDetails {
  /**
   * The angle at the event between the outward radius and the direction of the
   * light, rad; negative if the light turns around the centre the longer way.
   * NaN without a light path.
   */
  angles: Float32Array;
  /** Number in `itemNames` of what blocks. */
  items: Uint16Array;
  /**
   * The smallest tolerance, mm, at which the component in `limitBy` blocks: for a
   * blocked path its verdict, for a clear one the first that would. Infinite: none
   * does; minus infinite: at every tolerance. NaN without a light path.
   */
  limits: Float32Array;
  limitBy: Uint8Array;
}

/** A page's data, checked: all arrays have the lengths that the names say. */
export interface Page {
  text: PageText;
  /** x, y, z of each, mm. */
  pmtPositions: Float64Array;
  eventPositions: Float64Array;
  direct: Light;
  /** Null unless `hasReflections`. */
  reflected: Light | null;
}

/**
 * The blocks of numbers: element `<script type="text/plain" id="zarn-NAME">` holds
 * base64 of zlib's deflate of little-endian numbers. The JSON text is in
 * `<script type="application/json" id="zarn-page">`.
 */
export const BLOCKS = {
  'pmt-positions': Float64Array,
  'event-positions': Float64Array,
  verdicts: Uint8Array,
  angles: Float32Array,
  items: Uint16Array,
  limits: Float32Array,
  'limit-by': Uint8Array,
  'reflected-verdicts': Uint8Array,
  'reflected-angles': Float32Array,
  'reflected-items': Uint16Array,
  'reflected-limits': Float32Array,
  'reflected-limit-by': Uint8Array,
} as const;
