// Everything works without a mouse: what has the focus shows it, the search is on a key, the arrows walk the tree.
'use strict';

const assert = require('node:assert/strict');
const {test} = require('node:test');

const {useBrowser} = require('./support/browser');
const {ReportPage} = require('./support/report_page');

const browser = useBrowser();

async function opened(options) {
    const page = await browser.open('edge-router', options);
    const report = new ReportPage(page);
    await report.ready();
    return {page, report};
}

// What has the focus: its name for people, where it is, how it shows that it has the focus.
const focus = () => {
    const element = document.activeElement;
    const style = getComputedStyle(element);
    const {top, bottom, width, height} = element.getBoundingClientRect();
    return {
        name: `${element.localName} ${element.id || element.textContent.trim().slice(0, 40)}`,
        id: element.id,
        marked: (style.outlineStyle !== 'none' && parseFloat(style.outlineWidth) >= 1.5) || style.boxShadow !== 'none',
        seen: width > 1 && height > 1 && bottom > 0 && top < window.innerHeight,
        where: top + window.scrollY,
        isPage: element === document.body,
    };
};

for (const colorScheme of ['light', 'dark']) {
    test(`Tab goes through the page from top to end, each stop is seen and marked, ${colorScheme}`, async () => {
        const {page} = await opened({colorScheme});
        const stops = [];
        for (let count = 0; count < 200; ++count) {
            await page.keyboard.press('Tab');
            const stop = await page.evaluate(focus);
            if (stop.isPage || stops.some(({name, where}) => name === stop.name && where === stop.where)) {
                break;
            }
            assert.ok(stop.marked, `${stop.name} has no outline`);
            assert.ok(stop.seen, `${stop.name} is not to be seen`);
            stops.push(stop);
        }
        assert.ok(stops.length > 15 && stops.length < 200, `${stops.length} stops`);
        assert.ok(stops.some(({id}) => id === 'search') && stops.some(({id}) => id === 'log-lines'));
    });
}

test('the first stop skips to the findings', async () => {
    const {page} = await opened();
    await page.keyboard.press('Tab');
    await page.keyboard.press('Enter');
    assert.equal(new URL(page.url()).hash, '#findings');
});

test('/ goes to the search and is not written into it; in a field it is a letter', async () => {
    const {page, report} = await opened();
    await page.keyboard.press('/');
    assert.equal((await page.evaluate(focus)).id, 'search');
    assert.equal(await report.searchField().inputValue(), '');
    await page.keyboard.type('/router');
    assert.equal(await report.searchField().inputValue(), '/router');
});

test('the arrows walk the tree, open and close it, and what they reach is told; Enter opens', async () => {
    const {page, report} = await opened();
    await report.focusTree();
    const first = await report.focusedItem();
    assert.equal(first.level, 1);
    assert.equal(first.expanded, 'false');
    await page.keyboard.press('ArrowRight');
    assert.equal((await report.focusedItem()).expanded, 'true');
    await page.keyboard.press('ArrowRight');
    const row = await report.focusedItem();
    assert.ok(row.level > first.level, 'the first row of the list');
    assert.ok((await report.detail().innerText()).includes(row.text));
    await page.keyboard.press('Enter');
    assert.notEqual((await report.focusedItem()).expanded, row.expanded);
    await page.keyboard.press('Enter');
    await page.keyboard.press('ArrowLeft');
    assert.deepEqual(await report.focusedItem(), {...first, expanded: 'true'});
    await page.keyboard.press('ArrowLeft');
    assert.deepEqual(await report.focusedItem(), first);
    await page.keyboard.press('ArrowDown');
    const second = await report.focusedItem();
    assert.notEqual(second.text, first.text);
    await page.keyboard.press('End');
    const last = await report.focusedItem();
    await page.keyboard.press('ArrowDown');
    assert.deepEqual(await report.focusedItem(), last, 'there is nothing below the last');
    await page.keyboard.press('Home');
    assert.deepEqual(await report.focusedItem(), first);
    await page.keyboard.press('ArrowUp');
    assert.deepEqual(await report.focusedItem(), first, 'there is nothing above the first');
});

test('Tab leaves the tree', async () => {
    const {page, report} = await opened();
    await report.focusTree();
    await page.keyboard.press('Tab');
    assert.equal(await report.focusedItem(), null);
});
