import { execFileSync } from 'node:child_process';
import { readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';

/** The command under test, and the detector's tables. */
export const COMMAND = required('ZARN_SHADOW');
export const DATA = required('ZARN_DATA_DIR');
export const DETECTOR = join(DATA, 'reference-detector');
export const PMTS = join(DATA, 'pmts.csv');
export const EVENTS = join(DATA, 'source-scan.csv');

function required(name: string): string {
  const value = process.env[name];
  if (value === undefined) throw new Error(`${name} is not set`);
  return value;
}

/** Run `zarn-shadow`; throws, with what it says, if it fails. */
export function zarnShadow(...options: string[]): void {
  execFileSync(COMMAND, options, { stdio: ['ignore', 'pipe', 'pipe'] });
}

/** Write a page of the reference detector; returns the file. */
export function writePage(file: string, ...options: string[]): string {
  zarnShadow('display', '--geometry', DETECTOR, '--pmts', PMTS, '-o', file, ...options);
  return file;
}

/** A scan's verdicts: for each event and PMT, by name, what blocks, or "no path". */
export function scan(
  file: string,
  ...options: string[]
): Map<string, Map<string, string>> {
  zarnShadow('scan', '--geometry', DETECTOR, '--pmts', PMTS, '-o', file, ...options);
  const verdicts = new Map<string, Map<string, string>>();
  for (const line of readFileSync(file, 'utf8').trimEnd().split('\n').slice(1)) {
    const [event = '', pmt = '', , , by = ''] = line.split(',');
    const row = verdicts.get(event) ?? new Map<string, string>();
    row.set(pmt, by);
    verdicts.set(event, row);
  }
  return verdicts;
}

/** Write positions as CSV, with a heading for events or PMTs. */
export function writePositions(
  file: string,
  heading: 'event' | 'pmt',
  rows: { name: string; at: readonly number[] }[],
): string {
  const cell = (text: string) => `"${text.replaceAll('"', '""')}"`;
  const lines = rows.map(({ name, at }) => [cell(name), ...at].join(','));
  writeFileSync(file, `${heading},x,y,z\n${lines.join('\n')}\n`);
  return file;
}
