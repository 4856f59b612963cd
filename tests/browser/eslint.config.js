// How the scripts of the page and of its tests are linted. The page's own script may build no markup from texts.
'use strict';

const js = require('@eslint/js');
const globals = require('globals');

const strict = {
    'array-callback-return': 'error',
    complexity: ['error', 10],
    'consistent-return': 'error',
    curly: 'error',
    'default-case-last': 'error',
    eqeqeq: 'error',
    'max-depth': ['error', 4],
    'max-len': ['error', 120],
    'max-lines': ['error', 300],
    'max-lines-per-function': ['error', 60],
    'max-params': ['error', 5],
    'no-console': 'error',
    'no-else-return': 'error',
    'no-eval': 'error',
    'no-extend-native': 'error',
    'no-implicit-globals': 'error',
    'no-implied-eval': 'error',
    'no-new-func': 'error',
    'no-param-reassign': 'error',
    'no-return-assign': 'error',
    'no-script-url': 'error',
    'no-shadow': 'error',
    'no-unused-expressions': 'error',
    'no-use-before-define': ['error', {functions: false}],
    'no-useless-return': 'error',
    'no-var': 'error',
    'object-shorthand': 'error',
    'prefer-const': 'error',
    'prefer-template': 'error',
    strict: ['error', 'safe'],
};

const markup = ['innerHTML', 'outerHTML', 'insertAdjacentHTML', 'write', 'writeln', 'createContextualFragment',
    'srcdoc', 'parseFromString', 'setHTMLUnsafe'];

module.exports = [
    js.configs.recommended,
    {linterOptions: {reportUnusedDisableDirectives: 'error'}, rules: strict},
    {
        files: ['tests/browser/**/*.js'],
        languageOptions: {
            ecmaVersion: 2022, sourceType: 'commonjs', globals: {...globals.node, ...globals.browser},
        },
    },
    {
        files: ['tools/bgp-rehearse/{report,fleet/report}/html/**/*.js'],
        languageOptions: {ecmaVersion: 2022, sourceType: 'script', globals: globals.browser},
        rules: {
            'no-restricted-properties': ['error',
                ...markup.map((property) => ({property, message: 'text nodes only'}))],
            'no-restricted-globals': ['error', 'fetch', 'XMLHttpRequest', 'WebSocket', 'EventSource', 'localStorage'],
        },
    },
];
