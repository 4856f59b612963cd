// The changed rows as the page has them in its data (README.md tells the layout). Nothing here touches the document.
/* exported Model */

const Model = (() => {
    'use strict';

    const LIST = 0;
    const FATE = 1;
    const STEP = 2;
    const DEPTH = 3;
    const TEXT = 4;
    const LEAF_STEPS = 5;
    const NO_ROW = -1;

    function empty() {
        return {
            lists: [], fates: [], steps: [], findings: [], rows: [],
            parents: [], // of each row the changed row that it lies in
            groups: [], // of rows that lie in none: those of one list below the same rows
            groupOf: [],
            trail: [], // the last row, behind those that it lies in
        };
    }

    function isIn(group, row) {
        return group !== undefined && group.list === row[LIST] && row[TEXT].startsWith(group.start);
    }

    function addToGroup(model, row) {
        if (!isIn(model.groups[model.groups.length - 1], row)) {
            const around = row[TEXT].slice(0, row[TEXT].indexOf('\n'));
            model.groups.push({list: row[LIST], around, start: `${around}\n`});
        }
    }

    function addRow(model, row) {
        model.trail.length = Math.min(model.trail.length, row[DEPTH]);
        model.parents.push(model.trail.length === 0 ? NO_ROW : model.trail[model.trail.length - 1]);
        if (row[DEPTH] === 0) {
            addToGroup(model, row);
        }
        model.groupOf.push(model.groups.length - 1);
        model.trail.push(model.rows.length);
        model.rows.push(row);
    }

    // A line of the data: first the names, then rows.
    function take(model, line) {
        if (Array.isArray(line)) {
            line.forEach((row) => addRow(model, row));
        } else {
            Object.assign(model, line);
        }
    }

    // What lies outside of all lists is no row, and has no fate.
    function isRow(row) {
        return row[LIST] !== 0;
    }

    // It comes first, where it has changed.
    function countRows(model) {
        const outside = model.rows.length > 0 && !isRow(model.rows[0]) ? 1 : 0;
        return model.rows.length - outside;
    }

    function countLeaves(row) {
        let lines = 1;
        for (let at = row[TEXT].indexOf('\n'); at >= 0; at = row[TEXT].indexOf('\n', at + 1)) {
            ++lines;
        }
        return (lines - 4) / 3;
    }

    function pathOfGroup(model, group) {
        return group.list === 0 ? '/' : group.around + model.lists[group.list][2];
    }

    function leavesOf(row, texts) {
        const leaves = [];
        for (let i = 0; i < texts.length; i += 3) {
            const step = row[LEAF_STEPS] === undefined ? row[STEP] : row[LEAF_STEPS][i / 3];
            leaves.push({name: texts[i], before: texts[i + 1], after: texts[i + 2], step});
        }
        return leaves;
    }

    // The keypath of a row, and the one that it came from, "" where it has not moved.
    function paths(model, row) {
        const [around, key, from] = row[TEXT].split('\n', 3);
        const list = pathOfGroup(model, {list: row[LIST], around});
        return {
            path: isRow(row) ? `${list}{${key}}` : list,
            from: from === '' ? '' : `${list}{${from}}`,
        };
    }

    // A row in words, by its place, with its leaves.
    function told(model, place) {
        const row = model.rows[place];
        const [, , , words, ...texts] = row[TEXT].split('\n');
        return {
            number: place + 1,
            fate: row[FATE],
            step: row[STEP],
            words: words === '' ? model.lists[row[LIST]][1] : words,
            ...paths(model, row),
            leaves: leavesOf(row, texts),
        };
    }

    return {
        LIST, FATE, STEP, DEPTH, TEXT, LEAF_STEPS, NO_ROW, empty, take, isRow, countRows, countLeaves, pathOfGroup,
        paths, told,
    };
})();
