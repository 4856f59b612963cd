// What a line of the tree of changes shows.
/* global Elements, Model, Tree */
/* exported ChangeLines */

const ChangeLines = (() => {
    'use strict';

    const {element, foreign, grouped, counted} = Elements;
    const MARKS = {changed: '~', moved: '→', 'moved and changed': '⇢', removed: '−', new: '+'};

    function mark(fate) {
        return element('span', {class: `mark ${fate.replaceAll(' ', '-')}`, 'aria-hidden': 'true'}, MARKS[fate]);
    }

    // "500000 → 0"; of a new row what is, of a removed one what was.
    function values(leaf) {
        const both = leaf.before !== '' && leaf.after !== '';
        return element(
            'span', {class: 'values'},
            leaf.before === '' ? null : foreign(leaf.before),
            both ? ' → ' : null,
            leaf.after === '' ? null : foreign(leaf.after),
        );
    }

    function fatesOf(model, counts) {
        return counts
            .map((count, fate) => (count === 0 ? '' : `${grouped(count)} ${model.fates[fate]}`))
            .filter((text) => text !== '')
            .join(', ');
    }

    function groupContent(view, line, counts) {
        const group = view.model.groups[Tree.groupOf(line)];
        return [
            element('strong', {}, view.model.lists[group.list][1]),
            element('code', {}, foreign(Model.pathOfGroup(view.model, group))),
            element('span', {class: 'about'}, fatesOf(view.model, counts[Tree.groupOf(line)])),
        ];
    }

    function rowContent(view, line) {
        const row = Model.told(view.model, Tree.rowOf(line));
        const fate = view.model.fates[row.fate];
        const leaves = row.leaves.length === 0 ? '' : `, ${counted(row.leaves.length, 'value', 'values')}`;
        return [
            mark(fate),
            element('span', {class: 'words'}, foreign(row.words)),
            element('span', {class: 'about'}, fate + leaves),
        ];
    }

    function leafContent(view, line) {
        const leaf = Model.told(view.model, Tree.rowOf(line)).leaves[Tree.leafOf(line)];
        return [element('span', {class: 'name'}, leaf.name), values(leaf)];
    }

    function kindOf(line) {
        if (Tree.isGroup(line)) {
            return 'group';
        }
        return Tree.isRow(line) ? 'row' : 'leaf';
    }

    const CONTENTS = {group: groupContent, row: rowContent, leaf: leafContent};

    function classOf(view, line) {
        const context = Tree.isRow(line) && view.shown[Tree.rowOf(line)] === 2;
        return `line ${kindOf(line)}${context ? ' context' : ''}`;
    }

    function opener(opens, open) {
        const sign = open ? '▾' : '▸';
        return element('span', {class: 'opener', 'aria-hidden': 'true'}, opens ? sign : '');
    }

    // The line at a place; it is the chosen one or not. `counts` are those of the groups.
    function draw(view, line, {at, chosen, counts}) {
        const opens = Tree.canOpen(view, line);
        const open = Tree.isOpen(view, line);
        const attributes = {
            class: classOf(view, line),
            role: 'treeitem',
            id: Tree.isRow(line) ? `row-${Tree.rowOf(line) + 1}` : null,
            'data-at': at,
            'data-level': Tree.levelOf(view, line),
            'aria-level': Tree.levelOf(view, line),
            'aria-expanded': opens ? String(open) : null,
            'aria-selected': String(chosen),
            tabindex: chosen ? '0' : '-1',
        };
        return element('div', attributes, opener(opens, open), ...CONTENTS[kindOf(line)](view, line, counts));
    }

    return {draw, mark, values};
})();
