// How long the page of a large fleet takes to open and to narrow down. The promise is two seconds for 100,000 routers,
// on a machine of two cores from 2020 or later; told in pieces of work (support/timing.js).
'use strict';

const assert = require('node:assert/strict');
const {test} = require('node:test');

const {useBrowser} = require('./support/browser');
const {makeDrawnPage, makePage} = require('./support/fleet');
const {expectWithin, middleOf, pieceOfWork, timeEvent} = require('./support/timing');

const browser = useBrowser();
const large = makeDrawnPage('hundred-thousand', 100000);
const small = makePage('one', [{name: 'edge.xml', verdict: 'SAFE', findings: []}]);

// Milliseconds from asking for the page until its routers can be used.
async function opening(file) {
    const start = process.hrtime.bigint();
    const page = await browser.openFile(file);
    await page.locator('#router-lines .line').first().waitFor();
    return {page, taken: Number(process.hrtime.bigint() - start) / 1e6};
}

test('100,000 routers open and are narrowed down within their time', async (context) => {
    const measure = await pieceOfWork((await opening(small)).page);
    const one = await opening(small);
    const {page, taken} = await opening(large);
    expectWithin(context, taken - one.taken, 20, measure, 'opening 100,000 routers');
    const matches = page.locator('#matches');
    assert.equal(await matches.textContent(), '100,000 routers');

    const stopping = await middleOf(3, () => timeEvent(page, '#filter-verdict', '1', 'change'));
    expectWithin(context, stopping, 2, measure, 'filtering by a verdict');
    assert.equal(await matches.textContent(), '100 of 100,000 routers');
    await page.locator('#clear').click();

    const searching = await middleOf(3, () => timeEvent(page, '#search', '099007', 'input'));
    expectWithin(context, searching, 3, measure, 'searching a name');
    assert.equal(await matches.textContent(), '1 of 100,000 routers');
    await page.locator('#clear').click();
    assert.ok(await page.evaluate(() => document.querySelectorAll('*').length) < 5000);
});
