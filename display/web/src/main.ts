import './style/base.css';
import './style/layout.css';
import './style/header.css';
import './style/rail.css';
import './style/strip.css';
import './style/keys.css';
import './style/scene.css';
import { createModel, decodePage } from './model/fake';
import { startDisplay } from './views/shell/display';
import { startTheme } from './views/theme';

startTheme();
const root = document.getElementById('display');
if (root !== null)
  void decodePage().then((page) => {
    startDisplay(root, createModel(page));
  });
