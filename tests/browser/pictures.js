// Takes pictures of the examples' reports into a folder, as they open at 1280 pixels and in the light; of the edge
// router's also the changes, the dark, and as narrow as a telephone.
'use strict';

const fs = require('node:fs');
const path = require('node:path');

const {launch, openFile} = require('./support/browser');
const {ReportPage} = require('./support/report_page');
const reports = require('./support/reports');

// With `at`, of what lies at that fragment.
const pictures = [
    {name: 'edge-router', report: 'edge-router'},
    {name: 'edge-router-changes', report: 'edge-router', at: '#row-14', height: 800},
    {name: 'edge-router-dark', report: 'edge-router', colorScheme: 'dark'},
    {name: 'edge-router-narrow', report: 'edge-router', width: 360},
    {name: 'provider-edge', report: 'provider-edge'},
    {name: 'upgraded', report: 'upgraded'},
];

async function take(browser, folder, {name, report, at, width = 1280, height = 1200, colorScheme = 'light'}) {
    const {page, heard, close} = await openFile(browser, reports.file(report, 'html'),
        {viewport: {width, height}, colorScheme}, at);
    await new ReportPage(page).ready();
    await page.waitForTimeout(200);
    await page.screenshot({path: path.join(folder, `${name}.png`)});
    await close();
    if (heard.length > 0) {
        throw new Error(`${name}: ${heard.join('; ')}`);
    }
}

async function main(folder) {
    fs.mkdirSync(folder, {recursive: true});
    const browser = await launch();
    try {
        for (const each of pictures) {
            await take(browser, folder, each);
        }
    } finally {
        await browser.close();
    }
}

main(process.argv[2]);
