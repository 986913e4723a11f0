import { spawnSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

const program = process.env.ZARN_SHADOW;
const data = process.env.ZARN_DATA_DIR;

/** Why tests with the program cannot run; null if they can. */
export const whyNoProgram =
  program === undefined || data === undefined
    ? 'set ZARN_SHADOW to the program and ZARN_DATA_DIR to the reference data'
    : null;

/** A file of the reference data. */
export function dataFile(name: string): string {
  return join(data ?? '', name);
}

/** A folder that is removed after the test. */
export class Folder {
  private readonly path = mkdtempSync(join(tmpdir(), 'zarn-display-'));

  file(name: string): string {
    return join(this.path, name);
  }

  write(name: string, text: string): string {
    writeFileSync(this.file(name), text);
    return this.file(name);
  }

  read(name: string): string {
    return readFileSync(this.file(name), 'utf8');
  }

  remove(): void {
    rmSync(this.path, { recursive: true });
  }
}

/** Run the program; its failure is an error with what it said. */
export function runProgram(...args: string[]): void {
  const { status, stderr } = spawnSync(program ?? '', args, { encoding: 'utf8' });
  if (status !== 0) throw new Error(`${args.join(' ')}: ${stderr}`);
}

/** The rows of CSV without quotes, as records. */
export function readCsv(text: string): Record<string, string>[] {
  const [head = '', ...rows] = text.trimEnd().split('\n');
  const columns = head.split(',');
  return rows.map((row) => {
    const cells = row.split(',');
    return Object.fromEntries(columns.map((name, i) => [name, cells[i] ?? '']));
  });
}

/** The texts of the elements of a page's file. */
export function readElements(html: string): (id: string) => string | null {
  const elements = new Map<string, string>();
  for (const [, id = '', text = ''] of html.matchAll(
    /<script type="[^"]*" id="([^"]*)">([^<]*)<\/script>/g,
  )) {
    elements.set(id, text);
  }
  return (id) => elements.get(id) ?? null;
}
