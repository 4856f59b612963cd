// Times of a page in units of what the same browser takes at the same time to do a fixed piece of work, so that a slow
// or busy machine fails nothing.
'use strict';

const assert = require('node:assert/strict');

// What a page like this mostly does: it makes and searches texts and objects, and lays out elements.
const work = () => {
    const start = performance.now();
    const rows = Array.from({length: 60000}, (_, n) => ({key: `row ${n * 7919 % 100003}`, value: n}));
    rows.sort((one, other) => (one.key < other.key ? -1 : 1));
    const found = rows.filter(({key}) => key.toLowerCase().includes('99'));
    const list = document.createElement('ul');
    for (const {key} of found.slice(0, 2000)) {
        list.append(Object.assign(document.createElement('li'), {textContent: key}));
    }
    document.body.append(list);
    const height = list.offsetHeight;
    list.remove();
    return height > 0 ? performance.now() - start : NaN;
};

async function middleOf(times, measure) {
    const taken = [];
    for (let time = 0; time < times; ++time) {
        taken.push(await measure());
    }
    return taken.sort((one, other) => one - other)[Math.floor(times / 2)];
}

const eventTime = ([field, value, event]) => new Promise((resolve) => {
    requestAnimationFrame(() => {
        const element = document.querySelector(field);
        const start = performance.now();
        element.value = value;
        element.dispatchEvent(new Event(event, {bubbles: true}));
        requestAnimationFrame(() => setTimeout(() => resolve(performance.now() - start)));
    });
});

async function pieceOfWork(page) {
    return middleOf(5, () => page.evaluate(work));
}

// Milliseconds from an event on a field until what it leads to is on the screen.
function timeEvent(page, field, value, event) {
    return page.evaluate(eventTime, [field, value, event]);
}

function expectWithin(test_, taken, limit, measure, what) {
    const ratio = taken / measure;
    const units = `${ratio.toFixed(1)} units of ${measure.toFixed(0)} ms`;
    test_.diagnostic(`${what}: ${taken.toFixed(0)} ms, ${units} (limit ${limit})`);
    assert.ok(ratio < limit, `${what}: ${ratio.toFixed(1)} times as long as the piece of work, limit ${limit}`);
}

module.exports = {expectWithin, middleOf, pieceOfWork, timeEvent};
