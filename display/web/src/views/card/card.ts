import '../../style/card.css';
import { type Choice, type Model, NO_PATH_LAYER, type State } from '../../model/model';
import { element } from '../dom';
import { drawIcon } from '../icons';
import { isolateName, makeButton } from '../text';
import { CopyButton, writeRow } from './copyRow';
import { drawLightBlock, drawOtherLight } from './lightBlock';
import { drawShareBlock } from './shareBlock';

/** What the card cannot do on its own. */
export interface CardActions {
  /** Fly the camera along the light path of the selected PMT. */
  lookAlongPath(): void;
}

/** The card of the selected PMT. */
export interface CardView {
  readonly element: HTMLElement;
}

const HINT = 'Hover a PMT to see its verdict; click it to see its light path.';

const CHANGES_CARD: readonly (keyof State)[] = ['selected', 'event', 'has3D'];

class Card implements CardView {
  private readonly name = element('h2', { class: 'card-title' });
  private readonly content = element('div', { class: 'card-content' });
  private readonly look: HTMLButtonElement;
  private readonly copy: CopyButton;
  private readonly buttons: HTMLElement;
  private readonly box: HTMLElement;
  private readonly hint = element('p', { class: 'card-hint' }, HINT);
  readonly element: HTMLElement;
  /** Gets the focus back when the card closes. */
  private before: Element | null = null;

  constructor(
    private readonly model: Model,
    actions: CardActions,
  ) {
    const close = makeButton('card-close', '', () => {
      model.select(null);
    });
    close.ariaLabel = 'Close';
    close.append(drawIcon('close'));
    this.look = makeButton('card-button', 'Look along the path', () => {
      actions.lookAlongPath();
    });
    this.copy = new CopyButton('Copy row', () => this.writeRow());
    this.buttons = element('div', { class: 'card-buttons' });
    this.buttons.append(this.look, this.copy.button, this.copy.told, this.copy.byHand);
    const top = element('div', { class: 'card-top' }, this.name, close);
    this.box = element('section', { class: 'card', 'aria-label': 'Selected PMT' });
    this.box.append(top, this.content, this.buttons);
    this.element = element('div', { class: 'card-place' }, this.hint, this.box);
    model.subscribe((changed) => {
      if (CHANGES_CARD.some((name) => changed.has(name))) this.update();
    });
    this.update();
  }

  private update(): void {
    const { selected, event } = this.model.state;
    const hadFocus = this.box.contains(document.activeElement);
    this.hint.hidden = selected !== null || event === 'all';
    this.box.hidden = selected === null;
    this.copy.reset();
    if (selected === null) {
      if (hadFocus) this.giveFocusBack();
      return;
    }
    if (!hadFocus) this.before = document.activeElement;
    this.show(selected);
    // The button of the other light has gone, and another one has come.
    if (hadFocus && !this.box.contains(document.activeElement)) {
      this.content.querySelector('button')?.focus();
    }
  }

  private show(selected: Choice): void {
    const name = this.model.page.text.pmtNames[selected.pmt] ?? '';
    this.name.replaceChildren('PMT ', isolateName(name));
    this.name.title = name;
    this.content.replaceChildren(...this.drawContent(selected));
    const hasVerdict =
      this.model.state.event !== 'all' &&
      this.model.layerOf(selected) !== NO_PATH_LAYER;
    this.copy.button.hidden = !hasVerdict;
    this.look.hidden =
      !hasVerdict || !this.model.state.has3D || this.model.pathOf(selected) === null;
    this.buttons.hidden = !hasVerdict;
  }

  private drawContent(selected: Choice): HTMLElement[] {
    if (this.model.state.event === 'all') {
      return [drawShareBlock(this.model, selected.pmt)];
    }
    const other = drawOtherLight(this.model, selected);
    const light = drawLightBlock(this.model, selected);
    return other === null ? [light] : [light, other];
  }

  private writeRow(): string {
    const { selected } = this.model.state;
    return selected === null ? '' : writeRow(this.model, selected);
  }

  private giveFocusBack(): void {
    const { before } = this;
    if (before instanceof HTMLElement && before.isConnected) {
      before.focus({ preventScroll: true });
    }
  }
}

/** Create the card in @p container; before a choice it says how to choose. */
export function createCard(
  container: HTMLElement,
  model: Model,
  actions: CardActions,
): CardView {
  const card = new Card(model, actions);
  container.append(card.element);
  return card;
}
