"use strict";
// The tree of changes as a list of lines: groups of rows, rows, and their leaves; what is closed has none below it. Nothing
// here touches the document.
/* global Model */
/* exported Tree */

const Tree = (() => {
    const FEW = 40; // rows that need no closed groups

    // A line is one number: a group below zero; a row, or a leaf of it, from zero.
    const LEAVES = 512; // more than a row has

    const lineOfGroup = (group) => -1 - group;
    const lineOfRow = (row) => row * LEAVES;
    const isGroup = (line) => line < 0;
    const groupOf = (line) => -1 - line;
    const rowOf = (line) => Math.floor(line / LEAVES);
    const leafOf = (line) => (line % LEAVES) - 1;
    const isRow = (line) => line >= 0 && line % LEAVES === 0;

    // What the reader has opened or closed, against what is open by itself.
    function begin() {
        return {all: false, groups: new Set(), rows: new Set()};
    }

    function isOpenGroup(view, group) {
        const byItself = view.state.all || view.filtered || view.model.rows.length <= FEW;
        return view.state.groups.has(group) !== byItself;
    }

    function hasRows(view, row) {
        return row + 1 < view.model.rows.length && view.model.parents[row + 1] === row;
    }

    function isOpenRow(view, row) {
        const byItself = view.state.all || hasRows(view, row);
        return view.state.rows.has(row) !== byItself;
    }

    // The rows around one that was found are shown, too.
    function withAround(model, found) {
        const shown = found.slice();
        for (let i = 0; i < found.length; ++i) {
            for (let around = model.parents[i]; found[i] === 1 && around !== Model.NO_ROW && shown[around] === 0; around = model.parents[around]) {
                shown[around] = 2;
            }
        }
        return shown;
    }

    function countLeaves(text) {
        let lines = 0;
        for (let at = text.indexOf("\n"); at >= 0; at = text.indexOf("\n", at + 1)) {
            ++lines;
        }
        return (lines - 3) / 3;
    }

    function addLeaves(model, row, lines) {
        const leaves = countLeaves(model.rows[row][4]);
        for (let leaf = 0; leaf < leaves; ++leaf) {
            lines.push(lineOfRow(row) + leaf + 1);
        }
    }

    // view: {model, found, shown, state, filtered}
    function lines(view) {
        const all = [];
        let group = -1;
        let groupIsOpen = false;
        let closedAt = Infinity; // the depth of a closed row around
        for (let row = 0; row < view.shown.length; ++row) {
            if (view.shown[row] === 0) {
                continue;
            }
            if (view.model.groupOf[row] !== group) {
                group = view.model.groupOf[row];
                groupIsOpen = isOpenGroup(view, group);
                all.push(lineOfGroup(group));
            }
            const depth = view.model.rows[row][Model.DEPTH];
            closedAt = depth <= closedAt ? Infinity : closedAt;
            if (!groupIsOpen || closedAt !== Infinity) {
                continue;
            }
            all.push(lineOfRow(row));
            if (isOpenRow(view, row)) {
                addLeaves(view.model, row, all);
            } else {
                closedAt = depth;
            }
        }
        return all;
    }

    // How many rows of each group were found, by fate.
    function countGroups(model, found) {
        const counts = model.groups.map(() => new Array(model.fates.length).fill(0));
        for (let row = 0; row < found.length; ++row) {
            if (found[row] === 1) {
                ++counts[model.groupOf[row]][model.rows[row][Model.FATE]];
            }
        }
        return counts;
    }

    function toggle(set, member) {
        if (!set.delete(member)) {
            set.add(member);
        }
    }

    function isOpen(view, line) {
        return isGroup(line) ? isOpenGroup(view, groupOf(line)) : isRow(line) && isOpenRow(view, rowOf(line));
    }

    function canOpen(view, line) {
        return isGroup(line) || (isRow(line) && (hasRows(view, rowOf(line)) || countLeaves(view.model.rows[rowOf(line)][4]) > 0));
    }

    function setOpen(view, line, open) {
        if (isOpen(view, line) !== open && canOpen(view, line)) {
            toggle(isGroup(line) ? view.state.groups : view.state.rows, isGroup(line) ? groupOf(line) : rowOf(line));
        }
    }

    // From 1: a group, the rows in it, what is in a row.
    function levelOf(view, line) {
        if (isGroup(line)) {
            return 1;
        }
        return view.model.rows[rowOf(line)][Model.DEPTH] + (isRow(line) ? 2 : 3);
    }

    // Opens what is around a row.
    function reveal(view, row) {
        setOpen(view, lineOfGroup(view.model.groupOf[row]), true);
        for (let around = view.model.parents[row]; around !== Model.NO_ROW; around = view.model.parents[around]) {
            setOpen(view, lineOfRow(around), true);
        }
    }

    return {begin, withAround, lines, countGroups, isGroup, isRow, groupOf, rowOf, leafOf, lineOfRow, isOpen, canOpen, setOpen, levelOf, reveal};
})();
