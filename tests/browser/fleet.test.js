// The page of a fleet: its counts lead to their routers, search and filters find them, each router tells the command
// that makes its full report; texts stay texts; and it reads at any width and in both themes.
'use strict';

const assert = require('node:assert/strict');
const {test} = require('node:test');

const {useBrowser} = require('./support/browser');
const {makeDrawnPage, makePage} = require('./support/fleet');

const browser = useBrowser();
const thousands = makeDrawnPage('thousands', 3000);

const hostileText = '<img src=x onerror="alert(1)">‮</script>';
const hostile = makePage('hostile', [
    {name: '<script>alert(1)</script>', verdict: 'STOP', findings: [[hostileText, 'stop', hostileText]]},
]);

// The page when its routers are there.
async function open(file, options) {
    const page = await browser.openFile(file, options);
    await page.locator('#router-lines .line').first().waitFor();
    return page;
}

const matches = (page) => page.locator('#matches').textContent();
const names = (page) => page.locator('#router-lines .name').allTextContents();

test('all routers are listed at first, of which only those in view are drawn', async () => {
    const page = await open(thousands);
    assert.equal(await matches(page), '3,000 routers');
    assert.ok(await page.locator('#router-lines .line').count() < 200);
});

test('the count of a verdict leads to its routers', async () => {
    const page = await open(thousands);
    await page.locator('ul.counts a[data-verdict="STOP"]').click();
    assert.equal(await matches(page), '3 of 3,000 routers');
    assert.deepEqual(await names(page), ['edge-000007.xml', 'edge-001007.xml', 'edge-002007.xml']);
});

test('the count of a reason leads to its routers, as many as it says', async () => {
    const page = await open(thousands);
    for (const link of await page.locator('#reasons-table [data-reason]').all()) {
        await link.click();
        assert.equal(await matches(page), `${await link.textContent()} of 3,000 routers`);
    }
});

test('search and filters narrow the list together, and are cleared together', async () => {
    const page = await open(thousands);
    await page.locator('#search').fill('000');
    await page.locator('#filter-verdict').selectOption('STOP');
    assert.deepEqual(await names(page), ['edge-000007.xml']);
    await page.locator('#clear').click();
    assert.equal(await matches(page), '3,000 routers');
    await page.locator('#search').fill('no such router');
    assert.equal(await matches(page), '0 of 3,000 routers');
    assert.equal(await page.locator('#detail').textContent(), 'No router is like that.');
});

test('the chosen router tells its verdict, its reasons and the command of its full report', async () => {
    const page = await open(thousands);
    await page.locator('ul.counts a[data-verdict="STOP"]').click();
    await page.locator('#router-lines .line').nth(1).click();
    const detail = page.locator('#detail');
    assert.equal(await detail.locator('h3').textContent(), 'edge-001007.xml');
    assert.match(await detail.textContent(), /STOP Verdict of edge-001007\.xml\..*rows are lost \(stop, row-lost\)/);
    assert.equal(await detail.locator('.command').textContent(), 'bgp-rehearse run /b/edge-001007.xml --library ' +
        '/opt/lib/libbgp_update.so --max-entries 1000 --time-limit 60s');
});

test('the list is walked by keyboard to its end', async () => {
    const page = await open(thousands);
    await page.locator('#router-lines .line').first().click();
    await page.keyboard.press('End');
    assert.equal(await page.locator('#detail h3').textContent(), 'edge-002999.xml');
    await page.keyboard.press('ArrowUp');
    assert.equal(await page.locator('#detail h3').textContent(), 'edge-002998.xml');
});

test('reasons are searched and filtered by severity', async () => {
    const page = await open(thousands);
    const shown = page.locator('#reasons-table tbody tr:not([hidden])');
    await page.locator('#reason-search').fill('PREFIX');
    assert.equal(await shown.count(), 1);
    await page.locator('#reason-search').fill('');
    await page.locator('#reason-severity').selectOption('review');
    assert.equal(await shown.count(), 2);
    assert.equal(await page.locator('#reason-matches').textContent(), '2 of 4 reasons');
});

test('hostile texts stay texts', async () => {
    const page = await open(hostile);
    assert.equal(await page.locator('img').count(), 0);
    assert.deepEqual(await names(page), ['<script>alert(1)</script>']);
});

for (const width of [360, 1600]) {
    for (const colorScheme of ['light', 'dark']) {
        test(`nothing is wider than a screen of ${width} pixels, ${colorScheme}`, async () => {
            const page = await open(thousands, {viewport: {width, height: 900}, colorScheme});
            assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth));
        });
    }
}

test('without its script the page has its verdicts, reasons and steps', async () => {
    const page = await browser.openFile(thousands, {javaScriptEnabled: false});
    assert.equal(await page.locator('#reasons-table tbody tr').count(), 4);
    assert.equal(await page.locator('#steps-table tbody tr').count(), 2);
    assert.equal(await page.locator('#routers-view').isVisible(), false);
});
