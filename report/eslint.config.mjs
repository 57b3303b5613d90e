// Rules for the activity report's JavaScript: the page's scripts share one scope, in which each file says
// what it takes and gives; the rest runs in node.
import js from '@eslint/js';
import globals from 'globals';

const rules = {
  complexity: ['error', 16],
  curly: ['error', 'multi-line'],
  eqeqeq: 'error',
  'max-lines-per-function': ['error', { max: 60, IIFEs: false }],
  'no-implicit-coercion': 'error',
  'no-restricted-properties': [
    'error',
    // Names come from a dump: what is written is text.
    { property: 'innerHTML' },
    { property: 'outerHTML' },
    { property: 'insertAdjacentHTML' },
    { object: 'document', property: 'write' },
  ],
  'no-shadow': 'error',
  'no-var': 'error',
  'prefer-const': 'error',
};

export default [
  js.configs.recommended,
  { linterOptions: { reportUnusedDisableDirectives: 'error' }, rules },
  {
    files: ['report/script/*.js'],
    languageOptions: { sourceType: 'script', globals: { ...globals.browser } },
    rules: { strict: ['error', 'global'], 'no-redeclare': ['error', { builtinGlobals: false }] },
  },
  { files: ['**/*.mjs'], languageOptions: { globals: { ...globals.node } } },
];
