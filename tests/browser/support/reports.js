// The reports that the tests look at: which configuration each is of, and with which options bgp-rehearse writes it.
// Called as a script with the command, it writes them all, or those that are named: NAME.html, and NAME.json with what
// the same run tells as a document.
'use strict';

const {spawnSync} = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');

const hostile = require('./hostile');

const root = path.resolve(__dirname, '../../..');
const folder = path.join(root, 'build/browser/reports');

// What makes a configuration that is no example: each writes a file.
const edited = (name, edit) => (_, to) =>
    fs.writeFileSync(to, edit(fs.readFileSync(path.join(root, 'examples', `${name}.xml`), 'utf8')));
const drawn = (...options) => (command, to) => run(command, ['generate', '--kind', 'healthy', ...options, '-o', to]);

// Of each report: what makes its configuration, and where it is not NAME.xml the name of that; a library that is not
// the release's; the exit status of the run; whether the document is written too (a large one's would take long).
const reports = {
    'edge-router': {},
    'provider-edge': {},
    upgraded: {},
    ended: {make: drawn('--role', 'provider-edge', '--flaw', 'vrf-without-status', '--seed', '3'), status: 1},
    refused: {make: edited('upgraded', (xml) => xml.replaceAll('bgpRmEntIndex>', 'bgpRmEntIndx>')), status: 2},
    hostile: {make: edited('edge-router', hostile.configuration), as: hostile.fileName},
    'hostile-library': {make: edited('upgraded', (xml) => xml), library: 'hostile_library.cpp'},
    'hostile-ended': {make: edited('provider-edge', hostile.endingConfiguration), status: 1},
    'hundred-thousand': {make: drawn('--role', 'edge', '--neighbors', '12000'), document: false},
    million: {make: drawn('--role', 'edge', '--neighbors', '120000'), document: false},
};

// In the top folder, so that reports tell no path of this machine.
function run(command, words, status = 0) {
    const done = spawnSync(command, words, {cwd: root, encoding: 'utf8', maxBuffer: 1 << 28});
    if (done.error || done.status !== status) {
        const told = done.error?.message ?? `ended with ${done.status}: ${done.stderr.slice(0, 2000)}`;
        throw new Error(`${command} ${JSON.stringify(words).slice(0, 300)}: ${told}`);
    }
}

const file = (name, ending) => path.join(folder, `${name}.${ending}`);

function configurationOf(command, name) {
    const {make, as = `${name}.xml`} = reports[name];
    if (!make) {
        return path.join('examples', as);
    }
    const configuration = path.join(folder, name, as);
    fs.mkdirSync(path.dirname(configuration), {recursive: true});
    make(command, configuration);
    return path.relative(root, configuration);
}

function libraryOf(command, name) {
    const {library} = reports[name];
    if (!library) {
        return path.join(path.dirname(command), '../lib/libbgp_update.so');
    }
    const made = path.relative(root, file(name, 'so'));
    run('g++', ['-std=c++17', '-shared', '-fPIC', '-Iplatform/include', '-o', made,
        path.join('tests/browser/support', library)]);
    return made;
}

function write(command, name) {
    const {status, document} = reports[name];
    const words = ['run', configurationOf(command, name), '--library', libraryOf(command, name),
        '--html', file(name, 'html')];
    if (document !== false) {
        words.push(`--json=${file(name, 'json')}`, '--json-log');
    }
    run(command, words, status);
}

// What the run of a report told as a document.
const documentOf = (name) => JSON.parse(fs.readFileSync(file(name, 'json'), 'utf8'));

const small = Object.keys(reports).filter((name) => reports[name].document !== false);

module.exports = {documentOf, file, folder, small};

if (require.main === module) {
    const [command, ...names] = process.argv.slice(2);
    fs.mkdirSync(folder, {recursive: true});
    (names.length > 0 ? names : Object.keys(reports)).forEach((name) => write(command, name));
}
