import type { Vec3 } from '../../data/page';
import { type Annotations, EVENT_RADIUS, RING_RADIUS } from './annotations';
import { type Box, Label } from './labels';
import { NEAREST, type Projector } from './projector';

/** The labels of the event, of the selected and of the hovered PMT. */
export class SceneLabels {
  private readonly event: Label;
  private readonly hovered: Label;
  private readonly selected: Label;

  constructor(parent: HTMLElement) {
    this.event = new Label(parent);
    this.selected = new Label(parent);
    // On top: it comes and goes.
    this.hovered = new Label(parent);
  }

  list(): Label[] {
    return [this.event, this.selected, this.hovered];
  }

  place(projector: Projector, what: Annotations): void {
    const { width, height } = projector;
    const view = { left: 0, top: 0, width, height };
    const taken: Box[] = [];
    const put = (
      label: Label,
      at: Vec3 | undefined,
      text: string,
      radius: number,
      isBeside: boolean,
    ): void => {
      const place = at && projector.project(at);
      const isSeen =
        place &&
        place.depth > NEAREST &&
        place.x >= 0 &&
        place.y >= 0 &&
        place.x <= width &&
        place.y <= height;
      if (!isSeen) {
        label.hide();
        return;
      }
      const { x, y } = place;
      label.show(text, { x, y, radius, isBeside }, view, taken);
      taken.push({
        left: x - radius,
        top: y - radius,
        width: 2 * radius,
        height: 2 * radius,
      });
      if (label.box) taken.push(label.box);
    };
    put(this.event, what.event ?? undefined, 'event', EVENT_RADIUS, true);
    const { selected, hovered } = what;
    put(this.selected, selected?.at, selected?.text ?? '', RING_RADIUS, false);
    put(this.hovered, hovered?.at, hovered?.text ?? '', RING_RADIUS, false);
  }
}
