import './style/base.css';
import './style/layout.css';
import './style/header.css';
import './style/rail.css';
import './style/strip.css';
import './style/keys.css';
import './style/scene.css';
import './style/print.css';
import { decodePage } from './data/decode';
import { readPageText } from './data/readPageText';
import { createModel } from './model/createModel';
import { formatCount } from './model/format';
import { startDisplay } from './views/shell/display';
import { showFailure, showFrame } from './views/shell/states';
import { startTheme } from './views/theme';

/** Reading is told only where it takes longer than this, ms. */
const PATIENCE = 200;

/** Say how much is being read. */
function describeReading(): string {
  const json = document.getElementById('zarn-page')?.textContent ?? null;
  const events = readPageText(json).eventNames.length;
  return events === 1 ? 'Reading one event…' : `Reading ${formatCount(events)} events…`;
}

async function startPage(root: HTMLElement): Promise<void> {
  startTheme();
  const stage = showFrame(root);
  const timer = setTimeout(() => {
    stage.textContent = describeReading();
  }, PATIENCE);
  try {
    const page = await decodePage(document);
    clearTimeout(timer);
    startDisplay(root, createModel(page));
  } catch (error) {
    clearTimeout(timer);
    showFailure(root, error instanceof Error ? error.message : String(error));
  }
}

const root = document.getElementById('display');
if (root !== null) void startPage(root);
