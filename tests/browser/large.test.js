// How long a large report takes to open and to filter. The promises are two seconds and a tenth for 100,000 changed
// rows and five seconds for a million, on a machine of two cores from 2020 or later; they are told in pieces of work
// (support/timing.js).
'use strict';

const assert = require('node:assert/strict');
const {test} = require('node:test');

const {useBrowser} = require('./support/browser');
const {ReportPage} = require('./support/report_page');
const {expectWithin, middleOf, pieceOfWork} = require('./support/timing');

const browser = useBrowser();

const unitOf = async () => pieceOfWork(await browser.open('upgraded'));

// Milliseconds from asking for the page until its tree can be used.
async function opening(name) {
    const start = process.hrtime.bigint();
    const page = await browser.open(name);
    const report = new ReportPage(page);
    await report.ready();
    return {report, taken: Number(process.hrtime.bigint() - start) / 1e6};
}

test('100,000 changed rows open and filter within their time', async (context) => {
    const measure = await unitOf();
    const empty = await opening('upgraded');
    const {report, taken} = await opening('hundred-thousand');
    expectWithin(context, taken - empty.taken, 20, measure, 'opening 100,000 changed rows');
    for (const of of ['fate', 'step', 'finding']) {
        const [{value, text}] = await report.options(of);
        const filtering = await middleOf(3, () => report.timeFilter(of, value));
        expectWithin(context, filtering, 2, measure, `filtering by ${text.slice(0, 40)}`);
        await report.filter({[of]: ''});
    }
    const searching = await middleOf(3, () => report.timeSearch('192.0.2.7'));
    expectWithin(context, searching, 3, measure, 'searching an address');
    assert.ok(await report.elements() < 5000, 'what is not looked at is not rendered');
});

test('1,000,000 changed rows open within their time, or the page says what it left out', async (context) => {
    const measure = await unitOf();
    const empty = await opening('upgraded');
    const {report, taken} = await opening('million');
    expectWithin(context, taken - empty.taken, 50, measure, 'opening 1,000,000 changed rows');
    context.diagnostic(`the page says: ${await report.summary()}`);
});
