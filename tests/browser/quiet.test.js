// A page asks for nothing and complains about nothing; that it was quiet is asserted for every page of every test, here
// for each report once, with a look around in it.
'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const {test} = require('node:test');

const {launch, openFile, useBrowser} = require('./support/browser');
const reports = require('./support/reports');

const browser = useBrowser();

for (const name of reports.small) {
    test(`the report "${name}" opens and scrolls to its end quietly`, async () => {
        const page = await browser.open(name);
        await page.evaluate(() => window.scrollTo(0, document.documentElement.scrollHeight));
        await page.waitForTimeout(100);
        assert.match(await page.title(), /\S/);
        assert.equal(await page.locator('h1').count(), 1);
    });
}

// What would break the quiet, each in a file of its own.
const noises = {
    'console log': '<script>console.log("here")</script>',
    error: '<script>throw new Error("here")</script>',
    dialog: '<script>alert("here")</script>',
    request: '<img src="other.png" alt="">',
};

for (const [kind, markup] of Object.entries(noises)) {
    test(`a page that is not quiet is noticed: ${kind}`, async () => {
        const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'noise-'));
        const noisy = await launch();
        try {
            fs.writeFileSync(path.join(folder, 'noise.html'), `<!DOCTYPE html><title>noise</title>${markup}`);
            const {heard} = await openFile(noisy, path.join(folder, 'noise.html'));
            assert.match(heard.join('\n'), new RegExp(`^${kind}: `, 'm'));
        } finally {
            await noisy.close();
            fs.rmSync(folder, {recursive: true});
        }
    });
}
