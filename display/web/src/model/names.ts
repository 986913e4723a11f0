/** In natural order: PMT 2 before PMT 10. */
const collator = new Intl.Collator('en', { numeric: true });

/** By name: its place in natural order, equal names in the order given. */
export function rankNames(names: readonly string[]): Uint32Array {
  const order = names.map((_, i) => i);
  // Sorting is stable: equal names keep their order.
  order.sort((a, b) => collator.compare(names[a] ?? '', names[b] ?? ''));
  const ranks = new Uint32Array(names.length);
  order.forEach((name, rank) => {
    ranks[name] = rank;
  });
  return ranks;
}

/** Names as the search compares them. */
export function foldNames(names: readonly string[]): string[] {
  return names.map(foldName);
}

/** Upper and lower case are the same to the search, as are forms of one letter. */
export function foldName(name: string): string {
  return name.normalize().toLowerCase();
}
