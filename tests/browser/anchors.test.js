// From a finding to its places, from a place to the row, from the row to its step and to the line of the log.
'use strict';

const assert = require('node:assert/strict');
const {test} = require('node:test');

const {useBrowser} = require('./support/browser');
const reports = require('./support/reports');
const {ReportPage} = require('./support/report_page');

const browser = useBrowser();

// Whether the element lies in the window, and not behind another one.
const isInView = (element) => {
    const {top, bottom, left, width} = element.getBoundingClientRect();
    const at = document.elementFromPoint(left + Math.min(width, 20) / 2, (top + bottom) / 2);
    return top >= 0 && bottom <= window.innerHeight && (element.contains(at) || (at?.contains(element) ?? false));
};

const liesIn = (place, row) => place === row || place.startsWith(`${row}/`);

async function opened(name = 'edge-router') {
    const page = await browser.open(name);
    const report = new ReportPage(page);
    await report.ready();
    return {page, report, model: reports.documentOf(name)};
}

test('every link of every report leads to a part of it', async () => {
    for (const name of reports.small) {
        const {page} = await opened(name);
        const targets = await page.locator('a').evaluateAll((links) => links.map((link) => link.getAttribute('href')));
        assert.ok(targets.length > 0 || name === 'refused', name);
        for (const target of targets) {
            assert.match(target, /^#[a-z]+(-[a-z0-9]+)*$/);
            const isDrawn = /^#(row|log)-\d+$/.test(target);  // when it is looked at
            assert.ok(isDrawn || await page.locator(target).count() === 1, `${name}: ${target}`);
        }
    }
});

test('a place of a finding leads to its row, which is in view and has the focus', async () => {
    const {page, report, model} = await opened();
    const places = await page.locator('#findings a[href^="#row-"]').count();
    assert.ok(places > 10);
    const {places: [first]} = model.findings[0];
    await page.locator('#findings details summary').first().click();
    await page.locator('#findings a[href^="#row-"]').first().click();
    await page.locator('#tree .row:focus').waitFor();
    assert.ok(liesIn(first.path, await report.chosenPath()), first.path);
    assert.ok(await page.locator(':focus').evaluate(isInView), 'in view');
});

test('a place leads to its row also where a filter hides it', async () => {
    const {page, report, model} = await opened();
    await report.search('no such text');
    await page.locator('#findings details summary').first().click();
    await page.locator('#findings a[href^="#row-"]').first().click();
    await page.locator('#tree .row:focus').waitFor();
    assert.ok(liesIn(model.findings[0].places[0].path, await report.chosenPath()));
});

test('the row tells its change, and leads to its step and to the log of the step', async () => {
    const {page, report, model} = await opened();
    const number = model.changes.findIndex(({leaves, fate}) => leaves.length > 0 && fate === 'moved and changed');
    const change = model.changes[number];
    await report.choose(number + 1);
    assert.equal(await report.chosenPath(), change.path);
    const told = await report.detail().innerText();
    for (const {name} of change.leaves) {
        assert.ok(told.includes(name), name);
    }
    await report.detail().locator('a[href^="#step-"]').first().click();
    const step = page.locator(`tr:has-text("${change.step}")`).first();
    assert.ok(await step.evaluate(isInView), 'the step is in view');
});

test('a link to the log lands on its line', async () => {
    const {page, model} = await opened();
    const links = await page.locator('a[href^="#log-"]').evaluateAll((all) => all.map((each) => each.hash));
    assert.ok(links.length > 3);
    for (const link of [links[0], links[links.length - 1]]) {
        const number = Number(link.replace('#log-', ''));
        await page.evaluate((hash) => { location.hash = hash; }, link);
        const line = page.locator(`#log-${number}`);
        await line.waitFor();
        assert.ok((await line.innerText()).includes(model.log[number - 1].trim()), link);
        assert.ok(await line.evaluate(isInView), `${link} is in view`);
    }
});

test('a page opened at a line of the log, or at a row, shows it', async () => {
    for (const target of ['log-200', 'row-100']) {
        const page = await browser.open('edge-router', {}, `#${target}`);
        const shown = page.locator(`#${target}`);
        await shown.waitFor();
        assert.ok(await shown.evaluate(isInView), target);
    }
});

test('a fate of the verdict shows its rows', async () => {
    const {page, report, model} = await opened();
    await page.locator('[data-fate="new"]').click();
    assert.equal(await report.shown(), model.account.new);
    assert.ok(await page.locator('#matches').evaluate(isInView));
});

test('a finding shows its rows among the changes', async () => {
    const {page, report, model} = await opened();
    const link = page.locator('[data-finding]').first();
    const number = Number(await link.getAttribute('data-finding'));
    await link.click();
    assert.equal(await report.shown(), model.findings[number - 1].count);
    assert.ok(await page.locator('#matches').evaluate(isInView));
});
