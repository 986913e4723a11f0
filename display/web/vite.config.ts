import { readFileSync } from 'node:fs';
import { defineConfig } from 'vitest/config';
import { viteSingleFile } from 'vite-plugin-singlefile';

/** Copies of three.js carry its licence. */
const licence = {
  name: 'licence',
  transformIndexHtml(html: string): string {
    const text = readFileSync('node_modules/three/LICENSE', 'utf8');
    return html.replace('</head>', `<!-- three.js: ${text} --></head>`);
  },
};

// One file without any request: the program puts its data into it.
export default defineConfig({
  plugins: [licence, viteSingleFile({ removeViteModuleLoader: true })],
  build: {
    target: 'es2022',
    modulePreload: false,
    reportCompressedSize: false,
  },
  // Where the build has its own copy, results stay in it.
  cacheDir: process.env.ZARN_VITE_CACHE ?? 'node_modules/.vite',
  test: { include: ['test/**/*.test.ts'] },
});
