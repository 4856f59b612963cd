// The chosen change, whole: its keypath, its values, its steps with their part of the log, its findings.
/* global ChangeLines, Elements, Model */
/* exported ChangeDetail */

const ChangeDetail = (() => {
    'use strict';

    const {element, foreign, byId} = Elements;

    // A title behind that of its step, and where the log of that begins.
    function step(model, number) {
        const [name, title, line] = model.steps[number];
        if (name === '') {
            return null;
        }
        const log = element('a', {href: `#log-${line}`}, 'its log');
        return element(
            'p', {class: 'step'},
            'by ', element('a', {href: `#step-${number}`}, title), ...(line === 0 ? [] : [', ', log]),
        );
    }

    function leaves(model, row) {
        const items = row.leaves.map((leaf) => element(
            'div', {class: 'leaf'},
            element('dt', {}, leaf.name),
            element('dd', {}, ChangeLines.values(leaf), leaf.step === row.step ? null : step(model, leaf.step)),
        ));
        return items.length === 0 ? null : element('dl', {}, ...items);
    }

    function finding(number) {
        const title = byId(`finding-${number}-title`);
        return element('li', {}, element('a', {href: `#finding-${number}`}, title.textContent));
    }

    function findings(model, row) {
        const links = [];
        model.findings.forEach((rows, place) => {
            if (rows.includes(row.number)) {
                links.push(finding(place + 1));
            }
        });
        return links.length === 0 ? null : element('ul', {class: 'findings'}, ...links);
    }

    function path(what, keypath) {
        return element('p', {class: 'path'}, what, element('code', {}, foreign(keypath)));
    }

    function show(model, place) {
        const row = Model.told(model, place);
        const fate = model.fates[row.fate];
        const parts = [
            element('h3', {}, foreign(row.words)),
            element('p', {class: 'fate'}, ChangeLines.mark(fate), ` ${fate}`),
            row.from === '' ? null : path('from ', row.from),
            path(row.from === '' ? '' : 'to ', row.path),
            step(model, row.step),
            leaves(model, row),
            findings(model, row),
            element('p', {class: 'anchor'}, element('a', {href: `#row-${row.number}`}, 'link to this change')),
        ];
        byId('detail').replaceChildren(...parts.filter((part) => part !== null));
    }

    function clear() {
        const hint = 'Choose a row to see its keypath, its values, its step and its findings.';
        byId('detail').replaceChildren(element('p', {class: 'hint'}, hint));
    }

    return {show, clear};
})();
