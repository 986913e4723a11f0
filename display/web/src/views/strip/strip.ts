import { formatCount, formatPercent } from '../../model/format';
import type { Model } from '../../model/model';
import { element, setText } from '../dom';
import { createEventList } from '../eventList';
import { makePopover } from '../popover';
import { makeBars, type Bar } from './bars';
import { captionEvents, type Caption } from './captions';
import { createChart, type Chart } from './chart';

const LIST_WIDTH = 280;
const PAGE = 10;

interface Words {
  heading: string;
  lines: string[];
  touch: string;
}

function describeBars(bars: readonly Bar[], events: number): Words {
  const heading = `${formatCount(events)} events`;
  if (bars.length === events) {
    return {
      heading,
      lines: ['Shadowed share of the PMTs.', '[ and ] step through the events.'],
      touch: 'tap or swipe to choose',
    };
  }
  const size = bars[0]?.events.length ?? 0;
  return {
    heading: `${heading} in ${bars.length} groups`,
    lines: ['Sorted by shadowed share.', `Click a group to list its ${size} events.`],
    touch: 'tap a group to list it',
  };
}

function captionBars(model: Model, bars: readonly Bar[]): Caption[] {
  if (bars.length === model.page.text.eventNames.length) {
    return captionEvents(model.page);
  }
  const end = bars.length;
  return [
    { first: 0, end: 1, words: 'least shadowed', more: '' },
    { first: end - 1, end, words: 'most shadowed', more: '' },
  ];
}

function drawCaptions(captions: readonly Caption[], bars: number): HTMLElement {
  const line = element('div', { class: 'strip-captions' });
  captions.forEach((caption, at) => {
    const node = element(
      'span',
      { class: 'strip-caption', dir: 'auto' },
      caption.words,
      element('span', { class: 'more' }, caption.more),
    );
    const isLast = at > 0 && at === captions.length - 1;
    if (isLast) node.classList.add('last');
    else node.style.left = `${(100 * caption.first) / bars}%`;
    const next = captions[at + 1];
    const end = next === undefined ? bars : next.first;
    if (!isLast) node.style.maxWidth = `${(100 * (end - caption.first)) / bars}%`;
    line.append(node);
  });
  return line;
}

/** What a bar is, for the label over it and for screen readers. */
function describeBar(model: Model, bar: Bar, at: number, bars: number): string {
  const [event] = bar.events;
  if (bars !== model.page.text.eventNames.length) {
    return `group ${at + 1} of ${bars} · ${formatPercent(bar.shadowed)}`;
  }
  const counts = event === undefined ? undefined : model.countsOfEvents()[event];
  if (event === undefined || counts === undefined) return '';
  const share = formatPercent(counts.shadowed / counts.withPath);
  return `${model.page.text.eventNames[event] ?? ''} · ${share}`;
}

/** Choose bars by mouse, touch and pen. */
function followPointer(
  slider: HTMLElement,
  chart: Chart,
  bars: readonly Bar[],
  describe: (bar: number) => string,
  choose: (bar: number, isDrag: boolean) => void,
): void {
  let isDown = false;
  slider.addEventListener('pointerdown', (event) => {
    if (event.button !== 0) return;
    isDown = true;
    slider.setPointerCapture(event.pointerId);
    choose(chart.barAt(event.clientX), true);
  });
  slider.addEventListener('pointermove', (event) => {
    const bar = chart.barAt(event.clientX);
    chart.point(bar, describe(bar));
    if (isDown) choose(bar, true);
  });
  slider.addEventListener('pointerup', () => {
    isDown = false;
  });
  // Not when the pointer goes up: that closes what has just been opened over the page.
  slider.addEventListener('click', (event) => {
    choose(chart.barAt(event.clientX), false);
  });
  slider.addEventListener('pointercancel', () => {
    isDown = false;
  });
  slider.addEventListener('pointerleave', () => {
    chart.point(null, '');
  });
  chart.point(null, '');
  slider.setAttribute('aria-valuemax', String(bars.length));
}

/** Make the strip of all events: a bar for each, or for groups of many. */
export function createStrip(model: Model): HTMLElement {
  const bars = makeBars(model.countsOfEvents());
  const hasGroups = bars.length !== model.page.text.eventNames.length;
  const words = describeBars(bars, model.page.text.eventNames.length);
  const chart = createChart(bars);
  const captions = drawCaptions(captionBars(model, bars), bars.length);
  const slider = element(
    'div',
    {
      class: 'strip-slider',
      role: 'slider',
      tabindex: 0,
      'aria-label': hasGroups ? 'Group of events' : 'Event',
      'aria-valuemin': 1,
    },
    chart.element,
    captions,
  );
  const heading = element(
    'h2',
    { class: 'heading', id: 'strip-heading' },
    words.heading,
  );
  const strip = element(
    'section',
    { class: 'strip', 'aria-labelledby': heading.id },
    element(
      'div',
      { class: 'strip-words' },
      heading,
      ...words.lines.map((line) => element('p', { class: 'strip-line' }, line)),
      element('p', { class: 'strip-touch' }, words.touch),
    ),
    slider,
  );

  const panel = element('div', { role: 'dialog', 'aria-label': 'Events of the group' });
  const list = createEventList(model, null, (event) => {
    panel.hidePopover();
    model.change({ event });
  });
  const panelHeading = element('p', { class: 'popover-heading' });
  panel.append(panelHeading, list.element);
  let current = 0;

  const barOf = (event: number | 'all'): number | null =>
    event === 'all' ? null : bars.findIndex((bar) => bar.events.includes(event));
  const describe = (at: number): string => {
    const bar = bars[at];
    return bar === undefined ? '' : describeBar(model, bar, at, bars.length);
  };
  const setCurrent = (at: number): void => {
    current = Math.max(0, Math.min(bars.length - 1, at));
    slider.setAttribute('aria-valuenow', String(current + 1));
    slider.setAttribute('aria-valuetext', describe(current));
  };
  const openGroup = (): void => {
    const bar = bars[current];
    if (bar === undefined) return;
    setText(panelHeading, describe(current));
    panel.showPopover();
    list.setEvents(bar.events, model.state.event);
    list.element.focus();
  };
  const choose = (at: number, isDrag: boolean): void => {
    setCurrent(at);
    if (hasGroups) {
      chart.frame(current);
      if (!isDrag) openGroup();
      return;
    }
    if (model.state.event !== current) model.change({ event: current });
  };

  if (hasGroups) {
    strip.append(panel);
    makePopover(chart.framing, panel, LIST_WIDTH, () => undefined);
  }
  followPointer(slider, chart, bars, describe, choose);
  slider.addEventListener('keydown', (event) => {
    const moves: Readonly<Record<string, number>> = {
      ArrowRight: current + 1,
      ArrowUp: current + 1,
      ArrowLeft: current - 1,
      ArrowDown: current - 1,
      PageUp: current + PAGE,
      PageDown: current - PAGE,
      Home: 0,
      End: bars.length - 1,
    };
    const to = moves[event.key];
    if (to !== undefined) choose(Math.max(0, Math.min(bars.length - 1, to)), true);
    else if (event.key === 'Enter' && hasGroups) openGroup();
    else return;
    event.preventDefault();
    // Home is the first event here, not the first view.
    event.stopPropagation();
  });

  const update = (): void => {
    const framed = barOf(model.state.event);
    chart.frame(framed);
    setCurrent(framed ?? current);
    chart.setLayers(model.state.layers);
  };
  model.subscribe((changed) => {
    if (changed.has('event') || changed.has('layers')) update();
  });
  update();
  return strip;
}
