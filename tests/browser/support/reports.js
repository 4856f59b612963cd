// The reports that the tests look at: which configuration each is of, and with which options bgp-rehearse writes it.
// Called as a script, it writes them all: NAME.html, and NAME.json with what the same run tells as a document.
'use strict';

const {spawnSync} = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');

const hostile = require('./hostile');

const root = path.resolve(__dirname, '../../..');
const folder = path.join(root, 'build/browser/reports');

const example = (name) => () => fs.readFileSync(path.join(root, 'examples', `${name}.xml`), 'utf8');
const drawn = (...options) => (command) => run(command, ['generate', '--kind', 'healthy', ...options]).stdout;

// What makes a report: a name for its configuration, how that is made, the exit status, and whether the document is
// written too (that of a large one would take longer than the page).
const reports = {
    'edge-router': {make: example('edge-router'), status: 0},
    'provider-edge': {make: example('provider-edge'), status: 0},
    upgraded: {make: example('upgraded'), status: 0},
    ended: {make: drawn('--role', 'provider-edge', '--flaw', 'vrf-without-status', '--seed', '3'), status: 1},
    refused: {make: () => '<config xmlns="urn:nobody"><a/></config>\n', status: 2},
    hostile: {make: () => hostile.configuration(example('edge-router')()), as: hostile.fileName},
    'hostile-ended': {make: () => hostile.endingConfiguration(example('provider-edge')()), status: 1},
    'hundred-thousand': {make: drawn('--role', 'edge', '--neighbors', '12000'), document: false},
    million: {make: drawn('--role', 'edge', '--neighbors', '120000'), document: false},
};

function run(command, words) {
    const done = spawnSync(command, words, {encoding: 'utf8', maxBuffer: 1 << 30});
    if (done.error) {
        throw done.error;
    }
    return done;
}

const file = (name, ending) => path.join(folder, `${name}.${ending}`);

function write(command, name) {
    const {make, status, as, document} = reports[name];
    const configurations = path.join(folder, name);
    fs.mkdirSync(configurations, {recursive: true});
    const configuration = path.join(configurations, as ?? `${name}.xml`);
    fs.writeFileSync(configuration, make(command));
    const wanted = ['--html', file(name, 'html')];
    if (document !== false) {
        wanted.push(`--json=${file(name, 'json')}`, '--json-log');
    }
    const done = run(command, ['run', configuration, ...wanted]);
    if (status === undefined ? done.status !== 0 && done.status !== 3 : done.status !== status) {
        throw new Error(`the run of ${configuration} ended with ${done.status}:\n${done.stderr.slice(0, 2000)}`);
    }
}

// What the run of a report told as a document.
const documentOf = (name) => JSON.parse(fs.readFileSync(file(name, 'json'), 'utf8'));

module.exports = {names: Object.keys(reports), small: Object.keys(reports).filter((name) => reports[name].document !== false),
    documentOf, file, folder};

if (require.main === module) {
    const [command] = process.argv.slice(2);
    fs.rmSync(folder, {recursive: true, force: true});
    Object.keys(reports).forEach((name) => write(command, name));
}
