// Fleets that the tests of their page look at, from results that are made up: their plan and parts are written here,
// and bgp-rehearse merges them and writes the page.
'use strict';

const {spawnSync} = require('node:child_process');
const crypto = require('node:crypto');
const fs = require('node:fs');
const path = require('node:path');

const root = path.resolve(__dirname, '../../..');
const folder = path.join(root, 'build/browser/fleets');
const command = path.join(root, 'build/release/bin/bgp-rehearse');

const digest = (text) => crypto.createHash('sha256').update(text).digest('hex');

const kinds = [
    {verdict: 'SAFE', findings: []},
    {verdict: 'REVIEW', findings: [['row-left', 'review', 'route map rows stay under their old index']]},
    {verdict: 'REVIEW', findings: [['limit-rewritten', 'review', 'neighbours get another prefix limit'],
        ['left-out', 'note', 'parts of other modules are left out']]},
    {verdict: 'STOP', findings: [['row-lost', 'stop', 'rows are lost']]},
];

// Every thousandth router is to stop, and about half of the others have something to look at.
function kindOf(number) {
    return number % 1000 === 7 ? kinds[3] : kinds[number % 5 < 3 ? 0 : number % 5 - 2];
}

function findingOf([id, severity, reason]) {
    return {id, severity, reason, sentence: `2 ${reason}`, advice: '', step: 'update_vrf', count: 2, places: []};
}

function resultOf(number, {name, verdict, findings}) {
    return {
        n: number, name, sha256: digest(name), bytes: 100, class: 'whole', verdict, sentence: `Verdict of ${name}.`,
        exit_status: verdict === 'STOP' ? 3 : 0, errors: [], findings: findings.map(findingOf),
        steps: [
            {name: 'update', outcome: 'ran', changes: '0123456789abcdef'},
            {name: 'update_vrf', outcome: 'did not run', changes: ''},
        ],
        rows: {stored: 9, kept: 9, changed: 0, moved: 0, moved_and_changed: 0, removed: 0, new: 0, result: 9},
        calls: {reads: 9, writes: 0, failed_writes: 0, sessions: 2, connections: 1}, seconds: {least: 0.1, most: 1},
    };
}

function run(words) {
    const done = spawnSync(command, words, {encoding: 'utf8'});
    if (done.status !== 0) {
        throw new Error(`bgp-rehearse ${words.join(' ')}: ${done.stderr}`);
    }
}

const linesOf = (objects) => objects.map((each) => `${JSON.stringify(each)}\n`).join('');

function planOf(id, inputs) {
    return {
        plan: 1, id, inputs: inputs.length, bytes: inputs.length * 100,
        library: {path: '/opt/lib/libbgp_update.so', version: '0.2.0', sha256: digest('library')},
        options: {max_entries: 1000, severities: [], time_limit_ns: 60000000000, memory_limit: 0, max_bytes: 1 << 30},
        shards: [[0, inputs.length, inputs.length * 100]], passed_over: {},
    };
}

// The page of a fleet of these routers ({name, verdict, findings}), in the order of their names.
function makePage(name, routers) {
    const at = (file) => path.join(folder, `${name}${file}`);
    const id = digest(name);
    const inputs = routers.map((router, number) => (
        {n: number, name: router.name, source: {file: `/b/${router.name}`}, bytes: 100, sha256: digest(router.name)}));
    const results = linesOf([{part: 2, plan: id, shard: 0, shards: 1, inputs: routers.length},
        ...routers.map((router, number) => resultOf(number, router))]);
    fs.mkdirSync(folder, {recursive: true});
    fs.writeFileSync(at('.plan'), linesOf([planOf(id, inputs), ...inputs]));
    fs.writeFileSync(at('.part'), results + linesOf([{results: routers.length, sha256: digest(results)}]));
    run(['fleet', 'merge', at('.plan'), at('.part'), '-o', at('.db')]);
    run(['fleet', 'report', at('.db'), '--html', at('.html')]);
    return at('.html');
}

function makeDrawnPage(name, count) {
    return makePage(name, Array.from({length: count}, (_, number) => (
        {name: `edge-${String(number).padStart(6, '0')}.xml`, ...kindOf(number)})));
}

module.exports = {makePage, makeDrawnPage};
