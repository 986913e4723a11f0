import { defineConfig } from 'vitest/config';
import { viteSingleFile } from 'vite-plugin-singlefile';

// One file without any request: the program puts its data into it.
export default defineConfig({
  plugins: [viteSingleFile({ removeViteModuleLoader: true })],
  build: {
    target: 'es2022',
    modulePreload: false,
    reportCompressedSize: false,
  },
  // Where the build has its own copy, results stay in it.
  cacheDir: process.env.ZARN_VITE_CACHE ?? 'node_modules/.vite',
  test: { include: ['test/**/*.test.ts'] },
});
