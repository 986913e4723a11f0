import { defineConfig } from 'vitest/config';

// Tests in a real browser, one file after the other: they draw in software.
export default defineConfig({
  cacheDir: process.env.ZARN_VITE_CACHE ?? 'node_modules/.vite',
  test: {
    include: ['browser/**/*.test.ts'],
    fileParallelism: false,
    testTimeout: 60_000,
    hookTimeout: 120_000,
    expect: { poll: { timeout: 30_000 } },
  },
});
