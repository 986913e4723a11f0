import type { Model } from '../../model/model';
import { element } from '../dom';
import { createHeader } from '../header/header';
import { createKeysDialog } from '../keys/keysDialog';
import { listenToKeys, listShortcuts } from '../keys/shortcuts';
import { createCounts } from '../rail/counts';
import { createSwitches } from '../rail/switches';
import { createStrip } from '../strip/strip';
import { followTheme } from '../theme';
import { createAnnouncer } from './announcer';
import { createLayout } from './layout';
import { createNotice } from './notice';

/** Put the whole display into @p root. */
export function startDisplay(root: HTMLElement, model: Model): void {
  followTheme(model);
  const nothing = (): void => undefined;
  const keys = createKeysDialog(model, () => shortcuts);
  const header = createHeader(model, {
    openKeys: keys.open,
    toggleSide() {
      layout.toggleSide();
    },
    savePicture: nothing,
  });
  const shortcuts = listShortcuts(model, {
    focusSearch: header.focusSearch,
    openKeys: keys.open,
    zoom: nothing,
    showFirstView: nothing,
    lookAlongPath: nothing,
  });
  const layout = createLayout(
    root,
    model,
    {
      header: header.element,
      counts: createCounts(model),
      switches: createSwitches(model),
      strip: model.page.text.eventNames.length > 1 ? createStrip(model) : null,
      scene: element('div', {}, 'scene'),
      map: element('div', {}, 'map'),
      card: element('div'),
      table: element('div', {}, 'table'),
      sheet: element('div'),
      notice: createNotice(model, null),
    },
    header.setSideOpen,
  );
  root.append(keys.element, createAnnouncer(model));
  listenToKeys(model, shortcuts);
}
