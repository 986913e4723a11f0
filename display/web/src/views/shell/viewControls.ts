import { element } from '../dom';
import { drawIcon, type Icon } from '../icons';

/** What the buttons over the 3D view do. */
export interface ViewControlActions {
  zoom: (by: 1 | -1) => void;
  showFirstView: () => void;
  savePicture: () => void;
}

/** Make the buttons over the 3D view: what dragging and the wheel do, and saving. */
export function createViewControls(actions: ViewControlActions): HTMLElement {
  const button = (icon: Icon, label: string, act: () => void): HTMLButtonElement => {
    const control = element(
      'button',
      {
        type: 'button',
        class: `control view-${icon}`,
        'aria-label': label,
        title: label,
      },
      drawIcon(icon),
    );
    control.addEventListener('click', act);
    return control;
  };
  return element(
    'div',
    { class: 'view-controls', role: 'group', 'aria-label': '3D view' },
    button('plus', 'Zoom in', () => {
      actions.zoom(1);
    }),
    button('minus', 'Zoom out', () => {
      actions.zoom(-1);
    }),
    button('home', 'First view', actions.showFirstView),
    button('picture', 'Save as PNG', actions.savePicture),
  );
}
