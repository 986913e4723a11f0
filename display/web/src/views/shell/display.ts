import type { Model } from '../../model/model';
import { element } from '../dom';
import { createHeader } from '../header/header';
import { createKeysDialog } from '../keys/keysDialog';
import { listenToKeys, listShortcuts } from '../keys/shortcuts';
import { createCounts } from '../rail/counts';
import { createSwitches } from '../rail/switches';
import { createScene, type SceneView } from '../scene/scene';
import { createStrip } from '../strip/strip';
import { followTheme } from '../theme';
import { createAnnouncer } from './announcer';
import { createLayout } from './layout';
import { createNotice } from './notice';
import { offerPicture } from './savePicture';
import { createViewControls } from './viewControls';

/** Say in the model whether there is a 3D view. */
function hostScene(host: HTMLElement, model: Model): SceneView | null {
  const scene = createScene(host, model, {
    onLost() {
      model.change({ has3D: false });
    },
    onRestored() {
      model.change({ has3D: true });
    },
  });
  if (scene === null) model.change({ has3D: false });
  return scene;
}

/** Put the whole display into @p root. */
export function startDisplay(root: HTMLElement, model: Model): void {
  followTheme(model);
  const sceneHost = element('div', { class: 'scene-host' });
  // The views read their colours, which hold only within the page.
  root.replaceChildren(sceneHost);
  const scene = hostScene(sceneHost, model);
  const savePicture = (): void => {
    const { event } = model.state;
    const name = event === 'all' ? 'all' : (model.page.text.eventNames[event] ?? '');
    void scene?.savePng().then((picture) => {
      offerPicture(picture, name);
    });
  };
  const zoom = (by: 1 | -1): void => {
    scene?.zoom(by);
  };
  const showFirstView = (): void => {
    scene?.showFirst();
  };
  sceneHost.append(createViewControls({ zoom, showFirstView, savePicture }));
  const keys = createKeysDialog(model, () => shortcuts);
  const header = createHeader(model, {
    openKeys: keys.open,
    toggleSide() {
      layout.toggleSide();
    },
    savePicture,
  });
  const shortcuts = listShortcuts(model, {
    focusSearch: header.focusSearch,
    openKeys: keys.open,
    zoom,
    showFirstView,
    lookAlongPath() {
      scene?.lookAlong();
    },
  });
  const retry = (): void => {
    if (scene?.restart() === true) model.change({ has3D: true });
  };
  const layout = createLayout(
    root,
    model,
    {
      header: header.element,
      counts: createCounts(model),
      switches: createSwitches(model),
      strip: model.page.text.eventNames.length > 1 ? createStrip(model) : null,
      scene: scene === null ? null : sceneHost,
      map: element('div', {}, 'map'),
      card: element('div'),
      table: element('div', {}, 'table'),
      sheet: element('div'),
      notice: createNotice(model, scene === null ? null : retry),
    },
    header.setSideOpen,
  );
  root.append(keys.element, createAnnouncer(model));
  listenToKeys(model, shortcuts);
}
