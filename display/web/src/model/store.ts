import type { Choice, State } from './model';

type Listener = (changed: ReadonlySet<keyof State>) => void;

function areEqualChoices(a: Choice | null, b: Choice | null): boolean {
  return a === b || (a?.pmt === b?.pmt && a?.reflected === b?.reflected);
}

function areEqualFields(a: object, b: object): boolean {
  const before = Object.entries(a);
  return before.every(([name, value]) => value === b[name as keyof typeof b]);
}

/** By part of the state: whether two values of it mean the same. */
function isSame<Key extends keyof State>(
  key: Key,
  a: State[Key],
  b: State[Key],
): boolean {
  if (key === 'selected' || key === 'hovered') {
    return areEqualChoices(a as Choice | null, b as Choice | null);
  }
  if (typeof a === 'object' && typeof b === 'object' && a !== null && b !== null) {
    return areEqualFields(a, b);
  }
  return a === b;
}

/** Holds the state and tells of its changes. */
export class Store {
  private readonly listeners: Listener[] = [];
  private pending = new Set<keyof State>();
  private isTelling = false;

  /**
   * @param settle  called for a changed state: what must change with it
   */
  constructor(
    private current: State,
    private readonly settle: (next: State, previous: State) => Partial<State>,
  ) {}

  get state(): State {
    return this.current;
  }

  subscribe(listener: Listener): void {
    this.listeners.push(listener);
  }

  change(part: Partial<State>): void {
    const previous = this.current;
    const wanted = { ...previous, ...part };
    const next = { ...wanted, ...this.settle(wanted, previous) };
    const keys = Object.keys(next) as (keyof State)[];
    const changed = keys.filter((key) => !isSame(key, previous[key], next[key]));
    if (changed.length === 0) return;
    this.current = next;
    for (const key of changed) this.pending.add(key);
    this.tell();
  }

  /** A listener may change the state: all are told of that in a further round. */
  private tell(): void {
    if (this.isTelling) return;
    this.isTelling = true;
    try {
      while (this.pending.size > 0) {
        const changed = this.pending;
        this.pending = new Set();
        for (const listener of this.listeners) listener(changed);
      }
    } finally {
      this.isTelling = false;
    }
  }
}
