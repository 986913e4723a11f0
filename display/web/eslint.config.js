import js from '@eslint/js';
import { defineConfig, globalIgnores } from 'eslint/config';
import tseslint from 'typescript-eslint';

/** A layer may not import those above it. */
const layer = (folder, above) => ({
  files: [`src/${folder}/**/*.ts`],
  rules: {
    'no-restricted-imports': [
      'error',
      { patterns: above.map((name) => ({ group: [`**/${name}/**`] })) },
    ],
  },
});

export default defineConfig(
  globalIgnores(['dist/', 'node_modules/']),
  js.configs.recommended,
  tseslint.configs.strictTypeChecked,
  tseslint.configs.stylisticTypeChecked,
  {
    languageOptions: {
      parserOptions: { projectService: true, tsconfigRootDir: import.meta.dirname },
    },
    rules: {
      '@typescript-eslint/restrict-template-expressions': [
        'error',
        { allowNumber: true },
      ],
      '@typescript-eslint/no-non-null-assertion': 'error',
      'no-console': 'error',
      // Names of tables and files are text, never markup.
      'no-restricted-properties': [
        'error',
        ...['innerHTML', 'outerHTML', 'insertAdjacentHTML'].map((property) => ({
          property,
        })),
      ],
    },
  },
  { files: ['*.js'], ...tseslint.configs.disableTypeChecked },
  // A test fails where something is missing.
  {
    files: ['browser/**/*.ts', 'test/**/*.ts'],
    rules: { '@typescript-eslint/no-non-null-assertion': 'off' },
  },
  layer('data', ['model', 'views']),
  layer('model', ['views']),
);
