/** What is drawn one after the other, from the back. */
export const ORDER = {
  marks: 0,
  farHardware: 1,
  vessel: 2,
  nearHardware: 3,
  nearMarks: 4,
  lightPaths: 5,
  blocking: 6,
} as const;
