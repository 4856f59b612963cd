// Which rows a filter lets through: {query, fate, step, finding}, "" and 0 for none. Nothing here touches the document.
/* global Model */
/* exported Filter */

const Filter = (() => {
    'use strict';

    const none = {query: '', fate: 0, step: 0, finding: 0};

    function isSet(filter) {
        return filter.query !== '' || filter.fate !== 0 || filter.step !== 0 || filter.finding !== 0;
    }

    // Whether the query is a part of a text, whatever the case of its letters.
    function finder(query) {
        const pattern = new RegExp(query.replace(/[\\^$.*+?()[\]{}|/-]/g, '\\$&'), 'i');
        return (text) => pattern.test(text);
    }

    // A keypath finds the row that it names, those below it, and the row of the leaf that it names.
    function pathFinder(model, query) {
        const wanted = query.toLowerCase();
        const fits = (path) => {
            const lower = path.toLowerCase();
            return path !== '' && (lower.startsWith(wanted) || wanted.startsWith(`${lower}/`));
        };
        return (place) => {
            const {path, from} = Model.paths(model, model.rows[place]);
            return fits(path) || fits(from);
        };
    }

    // A key is found in braces, too, as reports show it.
    function textFinder(model, query) {
        const finds = finder(query.replace(/^\{|\}$/g, ''));
        const lists = model.lists.map(([path]) => finds(path));
        return (place) => {
            const row = model.rows[place];
            return lists[row[Model.LIST]] || finds(row[Model.TEXT]);
        };
    }

    function stepFinder(model, step) {
        return (place) => {
            const row = model.rows[place];
            const leaves = row[Model.LEAF_STEPS];
            return row[Model.STEP] === step || (leaves !== undefined && leaves.includes(step));
        };
    }

    function fateFinder(model, fate) {
        return (place) => model.rows[place][Model.FATE] === fate && Model.isRow(model.rows[place]);
    }

    function findingFinder(model, finding) {
        const numbers = new Set(model.findings[finding - 1]);
        return (place) => numbers.has(place + 1);
    }

    // The cheap ones first.
    function finders(model, {query, fate, step, finding}) {
        const all = [];
        if (fate !== 0) {
            all.push(fateFinder(model, fate));
        }
        if (step !== 0) {
            all.push(stepFinder(model, step));
        }
        if (finding !== 0) {
            all.push(findingFinder(model, finding));
        }
        if (query !== '') {
            all.push(query.startsWith('/') ? pathFinder(model, query) : textFinder(model, query));
        }
        return all;
    }

    // 1 for each row that is let through, by place; and how many rows these are.
    function apply(model, filter) {
        const found = new Uint8Array(model.rows.length);
        const all = finders(model, filter);
        let count = 0;
        for (let place = 0; place < found.length; ++place) {
            if (all.every((finds) => finds(place))) {
                found[place] = 1;
                count += Model.isRow(model.rows[place]) ? 1 : 0;
            }
        }
        return {found, count};
    }

    return {none, isSet, finder, apply};
})();
