/** Where the PMTs are in the picture of a view. */
export interface PlacedMarks {
  /** By PMT, CSS pixels from the picture's top left. */
  x: Float32Array;
  y: Float32Array;
  /** By PMT: 1 if it is drawn and can be picked. */
  isDrawn: Uint8Array;
}
