import type { Model } from '../../model/model';
import { createCard } from '../card/card';
import { createSheet } from '../card/sheet';
import { element } from '../dom';
import { createMap } from '../map/map';
import { createScene, type SceneView } from '../scene/scene';
import { createTable } from '../table/table';
import { offerPicture, paintCanvases } from './savePicture';
import { createViewControls } from './viewControls';

/** The views, each in an element that the layout can place. */
export interface Views {
  scene: HTMLElement;
  map: HTMLElement;
  card: HTMLElement;
  table: HTMLElement;
  sheet: HTMLElement;
  zoom: (by: 1 | -1) => void;
  showFirstView: () => void;
  lookAlongPath: () => void;
  /** Save what the largest view shows. */
  savePicture: () => void;
  /** Start the 3D view again; null where it has never been possible. */
  restart: (() => void) | null;
}

/** The largest distance of a PMT from the centre, mm. */
function measureRadius(positions: Float64Array): number {
  let radius = 0;
  for (let at = 0; at + 2 < positions.length; at += 3) {
    const [x = 0, y = 0, z = 0] = positions.subarray(at, at + 3);
    const distance = Math.hypot(x, y, z);
    if (Number.isFinite(distance)) radius = Math.max(radius, distance);
  }
  return radius;
}

/** Make the views; @p root is in the page, where its colours hold. */
export function createViews(root: HTMLElement, model: Model): Views {
  const hosts = {
    scene: element('div', { class: 'scene-host' }),
    map: element('div', { class: 'map-host' }),
    card: element('div'),
    table: element('div', { class: 'table-host' }),
    sheet: element('div'),
  };
  root.replaceChildren(...Object.values(hosts));

  const lookAlongPath = (): void => {
    if (model.state.mainView !== '3d') model.change({ mainView: '3d' });
    scene?.lookAlong();
  };
  const map = createMap(hosts.map, model);
  createTable(hosts.table, model);
  createCard(hosts.card, model, { lookAlongPath });
  createSheet(hosts.sheet, createCard(element('div'), model, { lookAlongPath }), model);

  // A PMT shows its face to an eye on its side of the plane through it that faces
  // the centre.
  const radius = measureRadius(model.page.pmtPositions);
  const scene: SceneView | null = createScene(hosts.scene, model, {
    onLost() {
      model.change({ has3D: false });
    },
    onRestored() {
      model.change({ has3D: true });
    },
    onLook(eye) {
      const distance = Math.hypot(...eye);
      map.setSeenDirection(distance > radius ? eye : null, radius / distance);
    },
  });
  if (scene === null) model.change({ has3D: false });

  const paintPicture = (): Promise<Blob | null> => {
    if (scene !== null && model.state.has3D && model.state.mainView === '3d') {
      return scene.savePng();
    }
    const ground = getComputedStyle(root).getPropertyValue('--view');
    return paintCanvases([...map.element.querySelectorAll('canvas')], ground);
  };
  const savePicture = (): void => {
    const { event } = model.state;
    const name = event === 'all' ? 'all' : (model.page.text.eventNames[event] ?? '');
    void paintPicture().then((picture) => {
      if (picture !== null) offerPicture(picture, name);
    });
  };
  const zoom = (by: 1 | -1): void => {
    scene?.zoom(by);
  };
  const showFirstView = (): void => {
    scene?.showFirst();
  };
  hosts.scene.append(createViewControls({ zoom, showFirstView, savePicture }));
  return {
    ...hosts,
    zoom,
    showFirstView,
    lookAlongPath,
    savePicture,
    restart:
      scene === null
        ? null
        : () => {
            if (scene.restart()) model.change({ has3D: true });
          },
  };
}
