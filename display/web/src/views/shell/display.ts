import type { Model } from '../../model/model';
import { createHeader } from '../header/header';
import { createKeysDialog } from '../keys/keysDialog';
import { listenToKeys, listShortcuts } from '../keys/shortcuts';
import { createCounts } from '../rail/counts';
import { createSwitches } from '../rail/switches';
import { createStrip } from '../strip/strip';
import { followTheme } from '../theme';
import { followAddress } from './address';
import { createAnnouncer } from './announcer';
import { createLayout } from './layout';
import { createNotice } from './notice';
import { createProblems } from './problems';
import { createViews } from './views';

/** Put the whole display into @p root. */
export function startDisplay(root: HTMLElement, model: Model): void {
  const problems = createProblems();
  followAddress(model, problems.show);
  followTheme(model);
  const views = createViews(root, model);
  const keys = createKeysDialog(model, () => shortcuts);
  const header = createHeader(model, {
    openKeys: keys.open,
    toggleSide: () => {
      layout.toggleSide();
    },
    savePicture: views.savePicture,
  });
  const shortcuts = listShortcuts(model, {
    ...views,
    focusSearch: header.focusSearch,
    openKeys: keys.open,
  });
  const layout = createLayout(
    root,
    model,
    {
      ...views,
      header: header.element,
      counts: createCounts(model),
      switches: createSwitches(model),
      strip: model.page.text.eventNames.length > 1 ? createStrip(model) : null,
      messages: [problems.element, createNotice(model, views.restart)],
    },
    header.setSideOpen,
  );
  root.append(keys.element, createAnnouncer(model));
  listenToKeys(model, shortcuts);
}
