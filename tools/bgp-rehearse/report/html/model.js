"use strict";
// The changed rows as the page has them in its data (README.md tells the layout), and which of them a filter lets through.
// Nothing here touches the document.
/* exported Model */

const Model = (() => {
    const LIST = 0;
    const FATE = 1;
    const STEP = 2;
    const DEPTH = 3;
    const TEXT = 4;
    const LEAF_STEPS = 5;
    const NO_ROW = -1;

    function empty() {
        return {lists: [], fates: [], steps: [], findings: [], rows: [], parents: [], groups: [], groupOf: [], around: []};
    }

    function aroundOf(row) {
        return row[TEXT].slice(0, row[TEXT].indexOf("\n"));
    }

    // Rows that are in no changed row stand in groups: those of one list below the same rows.
    function addToGroup(model, row) {
        const group = model.groups[model.groups.length - 1];
        const around = aroundOf(row);
        if (group === undefined || group.list !== row[LIST] || group.around !== around) {
            model.groups.push({list: row[LIST], around, first: model.rows.length});
        }
    }

    function addRow(model, row) {
        const number = model.rows.length;
        model.around.length = Math.min(model.around.length, row[DEPTH]);
        model.parents.push(model.around.length === 0 ? NO_ROW : model.around[model.around.length - 1]);
        if (row[DEPTH] === 0) {
            addToGroup(model, row);
        }
        model.groupOf.push(model.groups.length - 1);
        model.around.push(number);
        model.rows.push(row);
    }

    // A line of the data: first the names, then rows.
    function take(model, line) {
        if (Array.isArray(line)) {
            for (const row of line) {
                addRow(model, row);
            }
        } else {
            Object.assign(model, line);
        }
    }

    function pathOfList(model, around, list) {
        return around + model.lists[list][2];
    }

    // A row in words: its keypath now and as it was stored, and its leaves.
    function told(model, number) {
        const row = model.rows[number];
        const [around, key, from, words, ...rest] = row[TEXT].split("\n");
        const list = pathOfList(model, around, row[LIST]);
        const leaves = [];
        for (let i = 0; i + 2 < rest.length; i += 3) {
            const step = row[LEAF_STEPS] === undefined ? row[STEP] : row[LEAF_STEPS][i / 3];
            leaves.push({name: rest[i], before: rest[i + 1], after: rest[i + 2], step});
        }
        return {
            number: number + 1,
            list: row[LIST],
            fate: row[FATE],
            step: row[STEP],
            depth: row[DEPTH],
            words: words === "" ? model.lists[row[LIST]][1] : words,
            path: row[LIST] === 0 ? "/" : `${list}{${key}}`,
            from: from === "" ? "" : `${list}{${from}}`,
            leaves,
        };
    }

    // Whether any part of a text is the query, whatever the case of its letters.
    function finder(query) {
        const pattern = new RegExp(query.replace(/[\\^$.*+?()[\]{}|/-]/g, "\\$&"), "i");
        return (text) => pattern.test(text);
    }

    // A keypath finds the row that it names, the rows below it, and the row of the leaf that it names.
    function pathFinder(model, query) {
        const wanted = query.toLowerCase();
        const fits = (path) => path !== "" && (path.toLowerCase().startsWith(wanted) || wanted.startsWith(`${path.toLowerCase()}/`));
        return (number) => {
            const row = told(model, number);
            return fits(row.path) || fits(row.from);
        };
    }

    function queryFinder(model, query) {
        if (query.startsWith("/")) {
            return pathFinder(model, query);
        }
        const finds = finder(query);
        const lists = model.lists.map((list) => finds(list[0]));
        return (number) => lists[model.rows[number][LIST]] || finds(model.rows[number][TEXT]);
    }

    function isOfStep(row, step) {
        return row[STEP] === step || (row[LEAF_STEPS] !== undefined && row[LEAF_STEPS].includes(step));
    }

    // What lies outside of all lists is no row, and has no fate.
    function isRow(row) {
        return row[LIST] !== 0;
    }

    function isFiltered(filter) {
        return filter.query !== "" || filter.fate !== 0 || filter.step !== 0 || filter.finding !== 0;
    }

    // The rows that a filter lets through: 1 for each of them, by number. A filter is {query, fate, step, finding}, "" and 0
    // for none.
    function matches(model, filter) {
        const found = new Uint8Array(model.rows.length);
        const finding = filter.finding === 0 ? null : new Set(model.findings[filter.finding - 1]);
        const finds = filter.query === "" ? null : queryFinder(model, filter.query);
        for (let i = 0; i < found.length; ++i) {
            const row = model.rows[i];
            found[i] =
                (filter.fate === 0 || (row[FATE] === filter.fate && isRow(row))) &&
                (filter.step === 0 || isOfStep(row, filter.step)) &&
                (finding === null || finding.has(i + 1)) &&
                (finds === null || finds(i))
                    ? 1
                    : 0;
        }
        return found;
    }

    return {LIST, FATE, STEP, DEPTH, NO_ROW, empty, take, told, finder, pathOfList, isRow, isFiltered, matches};
})();
