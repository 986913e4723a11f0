/** What the pointer and the arrow keys ask for. Places: CSS pixels in the view. */
export interface GestureTarget {
  drag(right: number, down: number): void;
  zoomAround(factor: number, x: number, y: number): void;
  /** In steps, as the arrow keys point. */
  turn(right: number, up: number): void;
  /** The pointer rests nowhere: null. */
  point(place: { x: number; y: number } | null): void;
  choose(x: number, y: number, isTouch: boolean): void;
}

/** A press that moves no farther is a click, CSS pixels. */
const CLICK_REACH = 4;
const TOUCH_REACH = 10;
/** Zoom of one step of a wheel, which reports about 100 pixels. */
const WHEEL_RATE = 0.0016;
const LINE_HEIGHT = 16;

interface Pointer {
  x: number;
  y: number;
}

/** Listen to the pointer, the wheel and the arrow keys until @p signal aborts. */
export function listenToGestures(
  element: HTMLElement,
  target: GestureTarget,
  signal: AbortSignal,
): void {
  const pointers = new Map<number, Pointer>();
  let start: Pointer | null = null;

  const placeOf = (event: MouseEvent): Pointer => {
    const box = element.getBoundingClientRect();
    return { x: event.clientX - box.left, y: event.clientY - box.top };
  };

  const press = (event: PointerEvent): void => {
    if (event.button !== 0) return;
    element.setPointerCapture(event.pointerId);
    pointers.set(event.pointerId, placeOf(event));
    // A second finger makes it no click.
    start = pointers.size === 1 ? placeOf(event) : null;
    target.point(null);
  };

  const move = (event: PointerEvent): void => {
    const before = pointers.get(event.pointerId);
    const now = placeOf(event);
    if (!before) {
      if (event.pointerType === 'mouse') target.point(now);
      return;
    }
    if (start) {
      const reach = event.pointerType === 'touch' ? TOUCH_REACH : CLICK_REACH;
      if (Math.hypot(now.x - start.x, now.y - start.y) <= reach) return;
      start = null;
    }
    const other = [...pointers].find(([id]) => id !== event.pointerId)?.[1];
    pointers.set(event.pointerId, now);
    if (!other) {
      target.drag(now.x - before.x, now.y - before.y);
      return;
    }
    // Each finger moves half of the middle between the two.
    target.drag((now.x - before.x) / 2, (now.y - before.y) / 2);
    const [from, to] = [before, now].map((p) =>
      Math.hypot(p.x - other.x, p.y - other.y),
    );
    if (from && to) {
      target.zoomAround(to / from, (now.x + other.x) / 2, (now.y + other.y) / 2);
    }
  };

  const release = (event: PointerEvent): void => {
    if (!pointers.delete(event.pointerId)) return;
    if (start && event.type === 'pointerup') {
      target.choose(start.x, start.y, event.pointerType === 'touch');
    }
    start = null;
  };

  const turnWheel = (event: WheelEvent): void => {
    event.preventDefault();
    const pixels = event.deltaMode === 0 ? event.deltaY : event.deltaY * LINE_HEIGHT;
    const { x, y } = placeOf(event);
    target.zoomAround(Math.exp(-pixels * WHEEL_RATE), x, y);
  };

  const pressKey = (event: KeyboardEvent): void => {
    if (event.altKey || event.ctrlKey || event.metaKey) return;
    const step = ARROWS[event.key];
    if (!step) return;
    event.preventDefault();
    event.stopPropagation();
    target.turn(...step);
  };

  element.addEventListener('pointerdown', press, { signal });
  element.addEventListener('pointermove', move, { signal });
  element.addEventListener('pointerup', release, { signal });
  element.addEventListener('pointercancel', release, { signal });
  element.addEventListener(
    'pointerleave',
    () => {
      target.point(null);
    },
    { signal },
  );
  element.addEventListener('wheel', turnWheel, { signal, passive: false });
  element.addEventListener('keydown', pressKey, { signal });
}

const ARROWS: Readonly<Record<string, [number, number]>> = {
  ArrowLeft: [-1, 0],
  ArrowRight: [1, 0],
  ArrowUp: [0, 1],
  ArrowDown: [0, -1],
};
