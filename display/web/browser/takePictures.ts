// Takes the pictures of docs/display.md and of the README:
// node browser/takePictures.ts PAGE FOLDER
import { join } from 'node:path';
import { addressOf, Browser } from './chromium.ts';
import { ready } from './display.ts';

const [file, folder] = process.argv.slice(2);
if (file === undefined || folder === undefined) {
  throw new Error('takePictures PAGE FOLDER');
}

const browser = new Browser();
try {
  const page = await browser.open({ width: 1440, height: 900 });
  await page.goto(addressOf(file, 'event=z=3000&pmt=4512&theme=light'));
  await ready(page);
  await page.screenshot({ path: join(folder, 'display.png') });
} finally {
  await browser.close();
}
