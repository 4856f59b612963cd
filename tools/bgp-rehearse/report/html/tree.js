// The tree of changes as a list of lines: groups of rows, rows, and their leaves; what is closed has none below it.
// Nothing here touches the document.
//
// A view of it is {model, found, count, shown, filtered, all, groups, rows}: what a filter found and how many rows that
// is, what is shown with it, whether there is a filter, whether all is open, and the groups and rows that the reader
// opened or closed against that.
/* global Filter, Model */
/* exported Tree */

const Tree = (() => {
    'use strict';

    const FEW = 40; // rows that need no closed groups

    // A line is one number: a group is below zero; from zero on come rows and, behind each, its leaves.
    const LEAVES = 512; // more than a row has

    const lineOfGroup = (group) => -1 - group;
    const lineOfRow = (place) => place * LEAVES;
    const isGroup = (line) => line < 0;
    const isRow = (line) => line >= 0 && line % LEAVES === 0;
    const groupOf = (line) => -1 - line;
    const rowOf = (line) => Math.floor(line / LEAVES);
    const leafOf = (line) => (line % LEAVES) - 1;

    // The rows around one that was found are shown, too.
    function withAround(model, found) {
        const shown = found.slice();
        for (let place = 0; place < found.length; ++place) {
            let around = found[place] === 1 ? model.parents[place] : Model.NO_ROW;
            while (around !== Model.NO_ROW && shown[around] === 0) {
                shown[around] = 2;
                around = model.parents[around];
            }
        }
        return shown;
    }

    // What a filter shows, and how many rows it lets through.
    function view(model, filter) {
        const {found, count} = Filter.apply(model, filter);
        return {
            model, found, count,
            shown: withAround(model, found),
            filtered: Filter.isSet(filter),
            all: false,
            groups: new Set(),
            rows: new Set(),
        };
    }

    // The same with all open or all closed.
    function openedWhole(seen, all) {
        const groups = new Set();
        if (!all && isOpenGroup({...seen, all, groups}, 0)) {
            seen.model.groups.forEach((group, number) => groups.add(number));
        }
        return {...seen, all, groups, rows: new Set()};
    }

    function isOpenGroup(seen, group) {
        const byItself = seen.all || seen.filtered || seen.model.rows.length <= FEW;
        return seen.groups.has(group) !== byItself;
    }

    function hasRows(seen, place) {
        return seen.model.parents[place + 1] === place;
    }

    function isOpenRow(seen, place) {
        const byItself = seen.all || hasRows(seen, place);
        return seen.rows.has(place) !== byItself;
    }

    function addRow(seen, place, all) {
        all.push(lineOfRow(place));
        if (!isOpenRow(seen, place)) {
            return false;
        }
        const leaves = Model.countLeaves(seen.model.rows[place]);
        for (let leaf = 1; leaf <= leaves; ++leaf) {
            all.push(lineOfRow(place) + leaf);
        }
        return true;
    }

    function lines(seen) {
        const all = [];
        let group = Model.NO_ROW;
        let openTo = 0; // the deepest rows that nothing around them hides
        for (let place = 0; place < seen.shown.length; ++place) {
            if (seen.shown[place] === 0) {
                continue;
            }
            if (seen.model.groupOf[place] !== group) {
                group = seen.model.groupOf[place];
                openTo = isOpenGroup(seen, group) ? 0 : -1;
                all.push(lineOfGroup(group));
            }
            const depth = seen.model.rows[place][Model.DEPTH];
            if (depth <= openTo) {
                openTo = addRow(seen, place, all) ? depth + 1 : depth;
            }
        }
        return all;
    }

    // How many rows of each group were found, by fate.
    function countGroups({model, found}) {
        const counts = model.groups.map(() => new Array(model.fates.length).fill(0));
        for (let place = 0; place < found.length; ++place) {
            if (found[place] === 1 && Model.isRow(model.rows[place])) {
                ++counts[model.groupOf[place]][model.rows[place][Model.FATE]];
            }
        }
        return counts;
    }

    function isOpen(seen, line) {
        return isGroup(line) ? isOpenGroup(seen, groupOf(line)) : isRow(line) && isOpenRow(seen, rowOf(line));
    }

    function canOpen(seen, line) {
        const place = rowOf(line);
        const holds = () => hasRows(seen, place) || Model.countLeaves(seen.model.rows[place]) > 0;
        return isGroup(line) || (isRow(line) && holds());
    }

    function setOpen(seen, line, open) {
        if (isOpen(seen, line) === open || !canOpen(seen, line)) {
            return;
        }
        const set = isGroup(line) ? seen.groups : seen.rows;
        const member = isGroup(line) ? groupOf(line) : rowOf(line);
        if (!set.delete(member)) {
            set.add(member);
        }
    }

    // From 1: a group, the rows in it, what is in a row.
    function levelOf(seen, line) {
        if (isGroup(line)) {
            return 1;
        }
        return seen.model.rows[rowOf(line)][Model.DEPTH] + (isRow(line) ? 2 : 3);
    }

    // The line that a line lies in; its own where it lies in none.
    function lineAround(seen, all, at) {
        const level = levelOf(seen, all[at]);
        let around = at;
        while (around > 0 && levelOf(seen, all[around]) >= level) {
            --around;
        }
        return around;
    }

    // Opens a row and what is around it.
    function reveal(seen, place) {
        setOpen(seen, lineOfGroup(seen.model.groupOf[place]), true);
        for (let row = place; row !== Model.NO_ROW; row = seen.model.parents[row]) {
            setOpen(seen, lineOfRow(row), true);
        }
    }

    return {
        view, openedWhole, lines, countGroups, isGroup, isRow, groupOf, rowOf, leafOf, lineOfRow, isOpen, canOpen,
        setOpen, levelOf, lineAround, reveal,
    };
})();
