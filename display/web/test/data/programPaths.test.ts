import { afterAll, beforeAll, describe, expect, it } from 'vitest';
import { decodeTexts } from '../../src/data/decode';
import { tracePath } from '../../src/data/lightPath';
import type { LightPath } from '../../src/data/lightPath';
import type { Page } from '../../src/data/page';
import {
  dataFile,
  Folder,
  readCsv,
  readElements,
  runProgram,
  whyNoProgram,
} from '../support/program';

// Everywhere in the vessel; near the wall, where light is totally reflected and
// focused; in the wall; in the water, some with nearly tangent light.
const EVENTS = `event,x,y,z
centre,0,0,0
near the centre,1e-9,0,0
axis,0,0,3000
axis below,0,0,-5500
on a PMT's line,1000,0,10190.162
inside,1200,-800,450
near the wall,4600,0,3000
at the wall,0,5799.999,0
inner surface,5800,0,0
in the wall,0,5830,0
low in the wall,-3400,1200,-4570
outer surface,0,0,-5860
in the water,-7000,0,0
close in the water,0,5870,100
among the PMTs,4900,4900,4500
outside,0,12000,3000
`;

/** What the page promises. */
const MOST_APART = 0.1;
const MOST_TIME_APART = 0.001;
/** degrees; the page shows 0.1 */
const MOST_ANGLE_APART = 0.01;

const POINTS = ['av1', 'av2', 'av3', 'av4'];

function pointsOf(row: Record<string, string>): number[][] {
  const read = (name: string): number[] | null => {
    const cells = ['x', 'y', 'z'].map((axis) => row[`${name}_${axis}`] ?? '');
    return cells.includes('') ? null : cells.map(Number);
  };
  return ['start', ...POINTS, 'end'].flatMap((name) => {
    const point = read(name);
    return point ? [point] : [];
  });
}

/** The largest distance of two paths' points; infinite if their numbers differ. */
function apart(path: LightPath, points: number[][]): number {
  if (path.points.length !== points.length) return Infinity;
  return Math.max(
    ...path.points.map((point, i) =>
      Math.hypot(...point.map((part, axis) => part - (points[i]?.[axis] ?? NaN))),
    ),
  );
}

if (whyNoProgram !== null) {
  process.stdout.write(
    `Light paths are not compared with the program: ${whyNoProgram}\n`,
  );
}

describe.skipIf(whyNoProgram !== null)('tracePath and the program', () => {
  let page: Page;
  let paths: Record<string, string>[];
  let verdicts: Record<string, string>[];

  beforeAll(async () => {
    const folder = new Folder();
    try {
      const source = [
        ...['--events', folder.write('events.csv', EVENTS)],
        ...['--pmts', dataFile('pmts.csv')],
        ...['--geometry', dataFile('reference-detector')],
        '--reflections',
      ];
      runProgram('display', ...source, '-o', folder.file('display.html'));
      runProgram(
        ...['scan', ...source, '--columns', 'code,time,angle'],
        ...['--paths', folder.file('paths.csv'), '-o', folder.file('verdicts.csv')],
      );
      page = await decodeTexts(readElements(folder.read('display.html')));
      paths = readCsv(folder.read('paths.csv'));
      verdicts = readCsv(folder.read('verdicts.csv'));
    } finally {
      folder.remove();
    }
  }, 120_000);

  const seen = { pairs: 0, apart: 0, timeApart: 0, angleApart: 0 };

  it('agree on every light path of events everywhere', () => {
    const details = verdicts.filter(({ type }) => type !== '');
    expect(details.length).toBe(paths.length);
    const pmtNumbers = new Map(page.text.pmtNames.map((name, i) => [name, i]));
    for (const [i, row] of paths.entries()) {
      const event = page.text.eventNames.indexOf(row.event ?? '');
      const pmt = pmtNumbers.get(row.pmt ?? '') ?? -1;
      const isReflected = row.type === 'Water->Reflection->Water';
      const path = tracePath(page, event, pmt, isReflected);
      const detail = details[i];
      if (!path || detail?.type !== row.type) throw new Error(JSON.stringify(row));
      const distance = apart(path, pointsOf(row));
      const timeApart = Math.abs(path.time - Number(detail?.time));
      const angle = (Number(detail?.angle) * 180) / Math.PI;
      const angleApart = Math.abs(path.angle - angle);
      const isRight =
        distance <= MOST_APART &&
        timeApart <= MOST_TIME_APART &&
        angleApart <= MOST_ANGLE_APART;
      if (!isRight) expect({ row, path, distance, timeApart, angle }).toBe('agreeing');
      seen.pairs += 1;
      seen.apart = Math.max(seen.apart, distance);
      seen.timeApart = Math.max(seen.timeApart, timeApart);
      seen.angleApart = Math.max(seen.angleApart, angleApart);
    }
  });

  it('agree on which pairs have a light path', () => {
    const { pmtNames, eventNames } = page.text;
    let found = 0;
    for (const event of eventNames.keys()) {
      for (const pmt of pmtNames.keys()) {
        if (tracePath(page, event, pmt, false)) found += 1;
        if (tracePath(page, event, pmt, true)) found += 1;
      }
    }
    expect(found).toBe(paths.length);
  });

  afterAll(() => {
    process.stdout.write(
      `${seen.pairs} light paths, at most ${seen.apart.toFixed(4)} mm, ` +
        `${seen.timeApart.toExponential(1)} ns and ` +
        `${seen.angleApart.toExponential(1)} degrees apart\n`,
    );
  });
});
