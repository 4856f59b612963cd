// No width makes the page scroll sideways, whatever is opened in it.
'use strict';

const assert = require('node:assert/strict');
const {test} = require('node:test');

const {useBrowser} = require('./support/browser');
const reports = require('./support/reports');
const {ReportPage} = require('./support/report_page');

const browser = useBrowser();
const widths = [360, 1024, 1600];

// Which elements reach beyond the window, to be named when the test fails.
const tooWide = () => [...document.body.querySelectorAll('*')]
    .filter((each) => each.getBoundingClientRect().right > window.innerWidth + 1)
    .slice(0, 3)
    .map((each) => each.outerHTML.slice(0, 150));

async function expectNoSidewaysScrolling(page, when) {
    const [wide, window] = await page.evaluate(() => [document.scrollingElement.scrollWidth, innerWidth]);
    assert.ok(wide <= window, `${when}: ${wide} of ${window} pixels, ${JSON.stringify(await page.evaluate(tooWide))}`);
}

for (const name of reports.small) {
    for (const width of widths) {
        test(`the report "${name}" fits ${width} pixels`, async () => {
            const page = await browser.open(name, {viewport: {width, height: 800}});
            await expectNoSidewaysScrolling(page, 'opened');
            const report = new ReportPage(page);
            if (await report.hasChanges()) {
                await report.openEverything();
                await expectNoSidewaysScrolling(page, 'with all opened');
            }
        });
    }
}
