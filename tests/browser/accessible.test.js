// axe-core finds nothing in any state of the page, in both themes: WCAG 2 A and AA, and what it calls best practice.
'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const {test} = require('node:test');

const {useBrowser} = require('./support/browser');
const reports = require('./support/reports');
const {ReportPage} = require('./support/report_page');

const browser = useBrowser();
const axe = fs.readFileSync(require.resolve('axe-core/axe.min.js'), 'utf8');
const tags = ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice'];

async function expectAccessible(page, when) {
    await page.evaluate(axe);
    const found = await page.evaluate((values) => window.axe.run({runOnly: {type: 'tag', values}}), tags);
    assert.ok(found.passes.length > 10, 'axe looked at too little');
    const told = found.violations.flatMap(({id, help, nodes}) =>
        nodes.slice(0, 3).map(({html, any}) => `${id}: ${help}: ${html.slice(0, 200)} ${any[0]?.message ?? ''}`));
    assert.equal(told.length, 0, `${when}:\n${told.join('\n')}`);
}

for (const name of reports.small) {
    test(`the report "${name}" is accessible as it opens`, async () => {
        await expectAccessible(await browser.open(name), name);
    });
}

for (const name of ['ended', 'refused', 'upgraded']) {
    test(`the report "${name}" is accessible in the dark`, async () => {
        await expectAccessible(await browser.open(name, {colorScheme: 'dark'}), name);
    });
}

for (const colorScheme of ['light', 'dark']) {
    test(`a report is accessible with all opened, with a filter and with nothing found, ${colorScheme}`, async () => {
        const page = await browser.open('edge-router', {colorScheme});
        const report = new ReportPage(page);
        await report.ready();
        await report.openEverything();
        await report.choose(100);
        await expectAccessible(page, 'with all opened and a change chosen');
        await report.filter({fate: 'new'});
        await expectAccessible(page, 'with a filter set');
        await report.search('nothing has this text');
        await expectAccessible(page, 'with nothing found');
    });
}

test('a text of low contrast and a field without a name are found', async () => {
    const page = await browser.open('edge-router');
    await page.evaluate(() => {
        const text = document.createElement('p');
        text.textContent = 'hardly to be read';
        text.style.cssText = 'color: #777; background: #888';
        document.body.querySelector('main').append(text, document.createElement('input'));
    });
    await assert.rejects(expectAccessible(page, ''), /color-contrast[\s\S]*label/);
});
