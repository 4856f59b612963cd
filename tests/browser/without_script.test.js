// Without JavaScript the page tells verdict, findings and account, and what else needs it.
'use strict';

const assert = require('node:assert/strict');
const {test} = require('node:test');

const {useBrowser} = require('./support/browser');
const reports = require('./support/reports');

const browser = useBrowser();
const thousands = (count) => String(count).replace(/\B(?=(\d{3})+$)/g, ',');

// The page as it reads, with each row of blanks as one.
async function textOf(page) {
    return (await page.locator('body').innerText()).replace(/\s+/g, ' ');
}

for (const name of ['edge-router', 'provider-edge', 'upgraded', 'ended']) {
    test(`without script the report "${name}" tells verdict, findings and account`, async () => {
        const page = await browser.open(name, {javaScriptEnabled: false});
        const told = await textOf(page);
        const model = reports.documentOf(name);
        assert.ok(told.includes(model.verdict), 'the verdict');
        assert.ok(told.includes(model.reason.replace(/\s+/g, ' ')), model.reason);
        for (const {sentence} of model.findings) {
            assert.ok(told.includes(sentence), sentence);
        }
        for (const count of Object.values(model.account ?? {}).filter(Number.isInteger)) {
            assert.match(told, new RegExp(`\\b${thousands(count)}\\b`));
        }
        for (const step of model.steps) {
            assert.ok(told.includes(step.name), step.name);
        }
    });
}

test('without script the page says that search and tree need it', async () => {
    const page = await browser.open('edge-router', {javaScriptEnabled: false});
    assert.match(await textOf(page), /JavaScript|script/i);
    assert.equal(await page.locator('noscript').count() > 0, true);
    assert.equal(await page.locator('input:visible, select:visible').count(), 0, 'what would do nothing is not shown');
});

test('the charts are drawn without script', async () => {
    const page = await browser.open('edge-router', {javaScriptEnabled: false});
    for (const part of ['account', 'steps']) {
        const charts = await page.locator(`#${part} svg[role=img]`).all();
        assert.ok(charts.length > 0, part);
        for (const chart of charts) {
            const {width, height} = await chart.boundingBox();
            assert.ok(width > 100 && height > 10, `${part}: ${width} by ${height}`);
            assert.ok(await chart.locator('rect').count() > 0);
        }
    }
});

test('a refused configuration has its message on the page', async () => {
    const page = await browser.open('refused', {javaScriptEnabled: false});
    const {error} = reports.documentOf('refused');
    assert.ok((await textOf(page)).includes(error.split('\n')[0].replace(/\s+/g, ' ')), error);
});
