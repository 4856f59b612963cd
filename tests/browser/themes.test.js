// Light, dark and on paper.
'use strict';

const assert = require('node:assert/strict');
const {test} = require('node:test');

const {useBrowser} = require('./support/browser');
const {ReportPage} = require('./support/report_page');

const browser = useBrowser();

// How bright the page's ground and its text are, from 0 to 1.
const brightness = () => {
    const canvas = document.createElement('canvas').getContext('2d', {willReadFrequently: true});
    const of = (color) => {
        canvas.fillStyle = '#fff';
        canvas.fillRect(0, 0, 1, 1);
        canvas.fillStyle = color;
        canvas.fillRect(0, 0, 1, 1);
        const [red, green, blue] = canvas.getImageData(0, 0, 1, 1).data;
        return (red + green + blue) / 765;
    };
    const ground = [document.body, document.documentElement].map((each) => getComputedStyle(each).backgroundColor)
        .find((color) => color !== 'rgba(0, 0, 0, 0)');
    return {ground: of(ground ?? 'Canvas'), text: of(getComputedStyle(document.body).color)};
};

test('the dark theme is dark and the light one light, and the page follows a change', async () => {
    const page = await browser.open('edge-router', {colorScheme: 'light'});
    const light = await page.evaluate(brightness);
    assert.ok(light.ground > 0.8 && light.text < 0.3, JSON.stringify(light));
    await page.emulateMedia({colorScheme: 'dark'});
    const dark = await page.evaluate(brightness);
    assert.ok(dark.ground < 0.25 && dark.text > 0.7, JSON.stringify(dark));
});

test('on paper the page is light, whole and without what only a screen can do', async () => {
    const page = await browser.open('edge-router', {colorScheme: 'dark'});
    await page.emulateMedia({media: 'print', colorScheme: 'dark'});
    const paper = await page.evaluate(brightness);
    assert.ok(paper.ground > 0.8 && paper.text < 0.3, JSON.stringify(paper));
    const report = new ReportPage(page);
    assert.equal(await report.searchField().isVisible(), false);
    assert.match(await page.locator('body').innerText(), /Verdict|REVIEW/);
    const pdf = await page.pdf({format: 'A4'});
    assert.ok(pdf.length > 10000);
});
