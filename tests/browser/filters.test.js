// Search and filters find what the document of the same run has: the page computes nothing of its own.
'use strict';

const assert = require('node:assert/strict');
const {test} = require('node:test');

const {useBrowser} = require('./support/browser');
const reports = require('./support/reports');
const {ReportPage} = require('./support/report_page');

const browser = useBrowser();
const examples = ['edge-router', 'provider-edge', 'upgraded'];

async function opened(name) {
    const report = new ReportPage(await browser.open(name));
    await report.ready();
    return {report, model: reports.documentOf(name)};
}

const stepsOf = ({step, leaves}) => [step, ...leaves.map((leaf) => leaf.step)];

// Whether a finding's place lies in the row of a change, before or after it moved.
const liesIn = (place, row) => place === row || place.startsWith(`${row}/`);

// What lies outside of all lists is no row; it is shown, but not counted.
const countRows = (changes) => changes.filter(({list}) => list !== '/').length;

// Sets each choice of a filter in turn and holds what is shown to the changes that the model has for it.
async function expectCounts({report, model}, of, belongs) {
    const options = await report.options(of);
    for (const {value, text} of options) {
        await report.filter({[of]: value});
        const wanted = model.changes.filter((change) => belongs(change, value, text));
        assert.equal(await report.shown(), countRows(wanted), text);
    }
    return options;
}

for (const name of examples) {
    test(`the fates of "${name}" count as the account does`, async () => {
        const {report, model} = await opened(name);
        assert.equal(await report.shown(), countRows(model.changes));
        const options = await expectCounts({report, model}, 'fate', (change, _, text) => change.fate === text);
        assert.deepEqual(options.map(({text}) => text), ['moved', 'moved and changed', 'changed', 'removed', 'new']);
    });

    test(`the steps of "${name}" count as the changes do`, async () => {
        const {report, model} = await opened(name);
        const touches = (change, number) => stepsOf(change).includes(model.steps[number - 1].name);
        const options = await expectCounts({report, model}, 'step', touches);
        const writing = model.steps.filter(({writes}) => writes > 0);
        assert.equal(options.length, writing.length);
    });

    test(`the findings of "${name}" count as their places do`, async () => {
        const {report, model} = await opened(name);
        const touches = (change, number) => model.findings[number - 1].places.some(({path}) => path !== null &&
            (liesIn(path, change.path) || (change.from !== undefined && liesIn(path, change.from.path))));
        await expectCounts({report, model}, 'finding', touches);
    });
}

test('filters narrow one another, and taking them off shows all again', async () => {
    const {report, model} = await opened('edge-router');
    const step = model.steps.findIndex(({name}) => name === 'update_ipv6') + 1;
    await report.filter({fate: 'moved and changed', step: String(step)});
    const both = model.changes.filter((change) => change.fate === 'moved and changed' &&
        stepsOf(change).includes('update_ipv6'));
    assert.ok(both.length > 0 && both.length < model.changes.length);
    assert.equal(await report.shown(), countRows(both));
    await report.filter({fate: '', step: ''});
    assert.equal(await report.shown(), countRows(model.changes));
});

test('a row is found by its address, its key and a value', async () => {
    const {report, model} = await opened('edge-router');
    const searches = {
        '198.51.100.6': /c6:33:64:06/,
        'c6:33:64:06': /198\.51\.100\.6/,
        '1 ipv4 mplsBgpVpn': /bgpRmAfiSafi/,
        '{5 ipv4 unicast}': /bgpRmAfiSafi/,
        CUSTOMERS: /prefix-list/,
        500000: /bgpPeerConfigMaxPrfx/,
    };
    for (const [text, expected] of Object.entries(searches)) {
        await report.search(text);
        const found = await report.shown();
        assert.ok(found > 0 && found < model.changes.length, `${text}: ${found}`);
        await report.rows().first().click();
        const told = await report.detail().innerText();
        assert.match(told, expected);
        assert.ok(told.includes(text), told);
    }
});

test('search takes capitals for small letters, and says when it finds nothing', async () => {
    const {report} = await opened('edge-router');
    await report.search('customers');
    const found = await report.shown();
    assert.ok(found > 0);
    await report.search('CUSTOMERS');
    assert.equal(await report.shown(), found);
    await report.search('no such text');
    assert.equal(await report.shown(), 0);
    assert.match(await report.summary(), /^0 of /);
    assert.equal(await report.rows().count(), 0);
});
