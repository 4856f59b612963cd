// Names and values that look like markup, script or commands to a terminal stay texts. The tests of the test are at the
// end: with one escape left out, what holds here does not hold any more.
'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const {test} = require('node:test');

const {launch, openFile, useBrowser} = require('./support/browser');
const hostile = require('./support/hostile');
const reports = require('./support/reports');
const {ReportPage} = require('./support/report_page');

const browser = useBrowser();

// What a text can bring into a document: elements, handlers, places to go.
const inventory = () => {
    const all = [...document.querySelectorAll('*')];
    const attributes = all.flatMap((each) => [...each.attributes]);
    return {
        elements: [...new Set(all.map((each) => each.localName))].sort(),
        scripts: document.scripts.length,
        handlers: attributes.filter(({name}) => name.startsWith('on')).map(({name}) => name),
        links: attributes.filter(({name, value}) => ['href', 'src', 'action', 'xlink:href'].includes(name) &&
            !/^(#|data:,$)/.test(value)).map(({value}) => value),
        comments: document.createNodeIterator(document, NodeFilter.SHOW_COMMENT).nextNode()?.data ?? null,
    };
};

// The same page of the same shape with harmless names has every element that a page may have.
async function expectNothingInjected(page, harmless) {
    const [seen, allowed] = [await page.evaluate(inventory), await harmless.evaluate(inventory)];
    assert.deepEqual(seen.elements.filter((name) => !allowed.elements.includes(name)), [], 'elements that no page has');
    assert.deepEqual({...seen, elements: []}, {...allowed, elements: []});
    assert.deepEqual([seen.handlers, seen.links, seen.comments], [[], [], null]);
}

async function opened(name) {
    const page = await browser.open(name);
    const report = new ReportPage(page);
    if (await report.hasChanges()) {
        await report.openEverything();
    }
    return {page, report};
}

const textOf = (page) => page.evaluate(() => document.body.textContent);

// Searches a text, and goes to the one row that has it.
async function find(page, report, text) {
    await report.search(text);
    assert.equal(await report.shown(), 1, text);
    await report.rows().first().click();
}

test('hostile names are found and shown as the texts that they are', async () => {
    const {page, report} = await opened('hostile');
    for (const text of hostile.texts.map(hostile.shown)) {
        await find(page, report, text);
        assert.ok((await report.rows().first().textContent()).includes(text), text);
        assert.ok((await report.chosenPath()).includes(text.replaceAll('"', '\\"')), text);
        assert.doesNotMatch((await textOf(page)).replaceAll('\n', ''), /\p{Cc}|\p{Bidi_Control}/u, text);
    }
});

test('control characters, and a key of 10,000 characters, are found and shown as texts', async () => {
    const {page, report} = await opened('hostile-library');
    for (const text of ['\\x1b[31mred\\x07\\x08', 'two\\r\\nlines\\tand a tab', 'delete\\x7f', hostile.long]) {
        await find(page, report, text);
        assert.ok((await report.chosenPath()).includes(text), text.slice(0, 100));
    }
    await page.locator('#log').scrollIntoViewIfNeeded();
    await page.locator('#log-5').waitFor();
    assert.match(await page.locator('#log-5').textContent(), /not UTF-8: \\xff\\xc3\(/);
    assert.ok((await page.locator('#log-4').textContent()).includes(hostile.long));
});

test('the name of the file is shown as text', async () => {
    const page = await browser.open('hostile');
    assert.ok((await textOf(page)).includes('<svg onload=alert(6)>"\'&amp;'));
    assert.match(await page.title(), /<svg onload=alert\(6\)>/);
});

const harmlessOnes = {hostile: 'edge-router', 'hostile-library': 'edge-router', 'hostile-ended': 'ended'};

for (const [name, harmless] of Object.entries(harmlessOnes)) {
    test(`the report "${name}" has no element, handler or link that another has not`, async () => {
        const {page} = await opened(name);
        await expectNothingInjected(page, (await opened(harmless)).page);
    });
}

// Opens a page that was changed so that it escapes less, with its scripts allowed whatever their hash is.
async function withPlanted(change, look) {
    const bad = await launch();
    try {
        const html = fs.readFileSync(reports.file('hostile', 'html'), 'utf8');
        const planted = change(html);
        assert.notEqual(planted, html, 'there was nothing to change');
        const file = path.join(reports.folder, 'planted.html');
        fs.writeFileSync(file, planted);
        const {page, heard} = await openFile(bad, file, {bypassCSP: true});
        await look(page, heard);
    } finally {
        await bad.close();
    }
}

test('test of the test: a name that the writer does not escape is noticed', async () => {
    const unescaped = (html) => html.replaceAll('&lt;svg onload=alert(6)&gt;', '<svg onload=alert(6)>');
    await withPlanted(unescaped, async (page, heard) => {
        const harmless = await browser.open('edge-router');
        await assert.rejects(expectNothingInjected(page, harmless), /onload|svg/);
        assert.match(heard.join('\n'), /dialog: 6/);
    });
});

test('test of the test: a text that the script takes for markup is noticed', async () => {
    const markup = (html) => html.replace(/return element\(.bdi., \{\}, text\);/,
        'const made = element("bdi", {}); made.innerHTML = text; return made;');
    await withPlanted(markup, async (page, heard) => {
        const report = new ReportPage(page);
        await report.ready();
        await find(page, report, hostile.texts[0]);
        const harmless = await browser.open('edge-router');
        await assert.rejects(expectNothingInjected(page, harmless));
        assert.match(heard.join('\n'), /dialog: 1/);
    });
});
