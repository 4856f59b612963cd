// Chromium for a test file: started before its tests, ended after them. Every page that a test opens must have stayed
// quiet: no console message, no error, no dialog, and no request but for the file itself.
'use strict';

const assert = require('node:assert/strict');
const {after, afterEach, before} = require('node:test');
const {pathToFileURL} = require('node:url');
const {chromium} = require('playwright-core');

const reports = require('./reports');

const flags = ['--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
    '--disable-component-update', '--disable-sync'];

// Milliseconds that anything may take before it counts as hanging, on a machine however busy.
const longest = 240000;

// Root may not use Chromium's sandbox.
const launch = () => chromium.launch({
    executablePath: '/usr/bin/chromium', args: flags, chromiumSandbox: process.getuid() !== 0,
});

// What a page did besides showing itself, each a line; kept up to date while the page is open.
function listen(page) {
    const heard = [];
    let asked = 0;
    page.on('console', (message) => heard.push(`console ${message.type()}: ${message.text()}`));
    page.on('pageerror', (error) => heard.push(`error: ${error.message}`));
    page.on('dialog', async (dialog) => {
        heard.push(`dialog: ${dialog.message()}`);
        await dialog.dismiss();
    });
    page.on('popup', (popup) => heard.push(`window: ${popup.url()}`));
    page.on('request', (request) => {
        asked += 1;
        if (asked > 1) {
            heard.push(`request: ${request.url().slice(0, 200)}`);
        }
    });
    return heard;
}

// Opens a file in a new context of the browser, at a fragment such as "#log".
async function openFile(browser, file, options = {}, fragment = '') {
    const context = await browser.newContext({viewport: {width: 1280, height: 900}, ...options});
    context.setDefaultTimeout(longest);
    const page = await context.newPage();
    const heard = listen(page);
    await page.goto(pathToFileURL(file).href + fragment);
    return {page, heard, close: () => context.close()};
}

// For a test file: open(name, options, fragment) gives the page of a report, openFile(file, options, fragment) any.
function useBrowser() {
    let browser = null;
    let opened = [];
    before(async () => {
        browser = await launch();
    });
    after(() => browser.close());
    afterEach(async () => {
        const seen = opened;
        opened = [];
        for (const each of seen) {
            await each.close();
            assert.deepEqual(each.heard, [], 'the page was not quiet');
        }
    });
    const openAny = async (file, options, fragment) => {
        const each = await openFile(browser, file, options, fragment);
        opened.push(each);
        return each.page;
    };
    return {
        open: (name, options, fragment) => openAny(reports.file(name, 'html'), options, fragment),
        openFile: openAny,
    };
}

module.exports = {launch, listen, openFile, useBrowser};
