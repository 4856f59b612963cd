// A report in a browser, as a reader uses it: searches, filters, opens and goes through it. What elements the page has
// for that is known here.
'use strict';

const {timeEvent} = require('./timing');

const choices = {fate: '#filter-fate', step: '#filter-step', finding: '#filter-finding'};

// What a reader sees of the line of the tree that has the focus; null where none has.
const focusedItem = () => {
    const item = document.activeElement.closest('[role=treeitem]');
    return item && {id: item.id, level: Number(item.ariaLevel), expanded: item.ariaExpanded,
        text: item.querySelector('bdi')?.textContent ?? item.textContent};
};

class ReportPage {
    constructor(page) {
        this.page = page;
    }

    // Waits until the changes can be used; whether the report has any.
    async ready() {
        if (await this.page.locator('#changes-view').count() === 0) {
            return false;
        }
        await this.page.waitForFunction(() => /\d/.test(document.querySelector('#matches').textContent));
        return true;
    }

    async hasChanges() {
        return await this.ready() && await this.shown() > 0;
    }

    searchField() {
        return this.page.locator('#search');
    }

    // Opens all there is to open: the tree, findings, failed writes, lists that did not change.
    async openEverything() {
        await this.page.evaluate(() => document.querySelectorAll('details').forEach((each) => { each.open = true; }));
        await this.page.locator('#open-all').click();
    }

    // What can be chosen of a filter, but for "all".
    async options(of) {
        const told = await this.page.locator(`${choices[of]} option`).evaluateAll((options) =>
            options.map(({value, textContent}) => ({value, text: textContent})));
        return told.filter(({value}) => value !== '');
    }

    // Sets filters by the values or the texts of options; '' takes one off.
    async filter(wanted) {
        for (const [of, value] of Object.entries(wanted)) {
            await this.page.locator(choices[of]).selectOption(value);
        }
    }

    async search(text) {
        await this.searchField().fill(text);
    }

    summary() {
        return this.page.locator('#matches').textContent();
    }

    // How many changes the page says that it shows.
    async shown() {
        const [count] = (await this.summary()).match(/[\d,]+/) ?? ['0'];
        return Number(count.replaceAll(',', ''));
    }

    // The lines of the tree that are rows of what is shown, as far as they are drawn.
    rows() {
        return this.page.locator('#tree .row:not(.context)');
    }

    // Goes to a change by its number, from 1.
    async choose(number) {
        await this.page.evaluate((hash) => { location.hash = hash; }, `#row-${number}`);
        await this.page.locator(`#row-${number}:focus`).waitFor();
    }

    // What is told of the chosen change.
    detail() {
        return this.page.locator('#detail');
    }

    // Its keypath.
    async chosenPath() {
        return (await this.detail().locator('.path code').last().textContent()).trim();
    }

    async focusTree() {
        await this.page.locator('#tree [role=treeitem][tabindex="0"]').focus();
    }

    focusedItem() {
        return this.page.evaluate(focusedItem);
    }

    elements() {
        return this.page.evaluate(() => document.querySelectorAll('*').length);
    }

    timeFilter(of, value) {
        return timeEvent(this.page, choices[of], value, 'change');
    }

    timeSearch(text) {
        return timeEvent(this.page, '#search', text, 'input');
    }
}

module.exports = {ReportPage};
