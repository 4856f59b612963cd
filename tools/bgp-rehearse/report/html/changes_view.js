"use strict";
// The tree of changes as one sees it: drawn, chosen from by keyboard and pointer, filtered.
/* global Elements, Model, Tree, Windowed */
/* exported ChangesView */

const ChangesView = (() => {
    const {element, foreign, byId, grouped, counted} = Elements;
    const MARKS = {"changed": "~", "moved": "→", "moved and changed": "⇢", "removed": "−", "new": "+"};
    const kind = (fate) => fate.replaceAll(" ", "-");

    function over(model) {
        const view = {model, found: new Uint8Array(0), shown: new Uint8Array(0), state: Tree.begin(), filtered: false};
        const tree = byId("tree");
        let lines = [];
        let active = 0;
        let counts = [];
        const list = Windowed.over(tree, draw, () => active);

        // --- lines

        function valuesOf(leaf) {
            const parts = [leaf.before === "" ? null : foreign(leaf.before), leaf.before === "" || leaf.after === "" ? null : " → "];
            return element("span", {class: "values"}, ...parts, leaf.after === "" ? null : foreign(leaf.after));
        }

        function contentOfGroup(line) {
            const group = model.groups[Tree.groupOf(line)];
            const path = group.list === 0 ? "/" : Model.pathOfList(model, group.around, group.list);
            const fates = group.list === 0 ? "" : counts[Tree.groupOf(line)]
                .map((count, fate) => (count === 0 ? "" : `${grouped(count)} ${model.fates[fate]}`))
                .filter((text) => text !== "")
                .join(", ");
            return [element("strong", {}, model.lists[group.list][1]), " ", element("code", {}, foreign(path)), element("span", {class: "about"}, fates)];
        }

        function contentOfRow(line) {
            const row = Model.told(model, Tree.rowOf(line));
            const fate = model.fates[row.fate];
            const leaves = row.leaves.length === 0 ? "" : `, ${counted(row.leaves.length, "value", "values")}`;
            return [
                element("span", {class: `mark ${kind(fate)}`, "aria-hidden": "true"}, MARKS[fate]),
                element("span", {class: "words"}, foreign(row.words)),
                element("span", {class: "about"}, fate + leaves),
            ];
        }

        function contentOfLeaf(line) {
            const leaf = Model.told(model, Tree.rowOf(line)).leaves[Tree.leafOf(line)];
            return [element("span", {class: "name"}, leaf.name), valuesOf(leaf)];
        }

        function kindOfLine(line) {
            return Tree.isGroup(line) ? "group" : Tree.isRow(line) ? "row" : "leaf";
        }

        function idOf(line) {
            return Tree.isGroup(line) || !Tree.isRow(line) ? null : `row-${Tree.rowOf(line) + 1}`;
        }

        function draw(number) {
            const line = lines[number];
            const contents = {group: contentOfGroup, row: contentOfRow, leaf: contentOfLeaf};
            const opens = Tree.canOpen(view, line);
            const open = Tree.isOpen(view, line);
            const context = Tree.isRow(line) && view.shown[Tree.rowOf(line)] === 2 ? " context" : "";
            return element(
                "div",
                {
                    class: `line ${kindOfLine(line)}${context}`,
                    role: "treeitem",
                    id: idOf(line),
                    "data-line": number,
                    "data-level": Tree.levelOf(view, line),
                    "aria-level": Tree.levelOf(view, line),
                    "aria-expanded": opens ? String(open) : null,
                    "aria-selected": String(number === active),
                    tabindex: number === active ? "0" : "-1",
                },
                element("span", {class: "opener", "aria-hidden": "true"}, opens ? (open ? "▾" : "▸") : ""),
                ...contents[kindOfLine(line)](line),
            );
        }

        // --- the chosen change

        function rowsOfLeaves(row) {
            return row.leaves.map((leaf) =>
                element(
                    "div",
                    {class: "leaf"},
                    element("dt", {}, leaf.name),
                    element("dd", {}, valuesOf(leaf), leaf.step === row.step ? null : stepWords(leaf.step)),
                ),
            );
        }

        function stepWords(step) {
            const [name, title, line] = model.steps[step] ?? model.steps[0];
            if (step === 0 || name === "") {
                return null;
            }
            const log = line === 0 ? [] : [", ", element("a", {href: `#log-${line}`}, "its part of the log")];
            return element("p", {class: "step"}, "by ", element("a", {href: `#step-${step}`}, title), ...log);
        }

        function findingsOf(row) {
            const links = [];
            model.findings.forEach((rows, finding) => {
                if (rows.includes(row.number)) {
                    const title = byId(`finding-${finding + 1}-title`);
                    links.push(element("li", {}, element("a", {href: `#finding-${finding + 1}`}, title === null ? "" : title.textContent)));
                }
            });
            return links.length === 0 ? null : element("ul", {class: "findings"}, ...links);
        }

        function tellRow(number) {
            const row = Model.told(model, number);
            const fate = model.fates[row.fate];
            byId("detail").replaceChildren(
                element("h3", {}, foreign(row.words)),
                element("p", {class: "fate"}, element("span", {class: `mark ${kind(fate)}`, "aria-hidden": "true"}, MARKS[fate]), ` ${fate}`),
                row.from === "" ? "" : element("p", {class: "path"}, "from ", element("code", {}, foreign(row.from))),
                element("p", {class: "path"}, row.from === "" ? "" : "to ", element("code", {}, foreign(row.path))),
                stepWords(row.step) ?? "",
                element("dl", {}, ...rowsOfLeaves(row)),
                findingsOf(row) ?? "",
                element("p", {class: "anchor"}, element("a", {href: `#row-${row.number}`}, "link to this change")),
            );
        }

        function tell(line) {
            if (line === undefined || Tree.isGroup(line)) {
                byId("detail").replaceChildren(element("p", {class: "hint"}, "Choose a row to see its keypath, its values, its step and its findings."));
            } else {
                tellRow(Tree.rowOf(line));
            }
        }

        // --- choosing

        function choose(number, focus) {
            const before = active;
            active = Math.max(0, Math.min(number, lines.length - 1));
            list.reveal(active);
            list.redraw(before);
            list.redraw(active);
            tell(lines[active]);
            if (focus) {
                list.element(active)?.focus({preventScroll: true});
            }
        }

        function arrange() {
            const focused = tree.contains(document.activeElement);
            const line = lines[active];
            lines = Tree.lines(view);
            const again = lines.indexOf(line);
            active = again < 0 ? 0 : again;
            list.show(lines.length);
            tree.classList.toggle("empty", lines.length === 0);
            tell(lines[active]);
            if (focused) {
                list.element(active)?.focus({preventScroll: true});
            }
        }

        function setOpen(open) {
            Tree.setOpen(view, lines[active], open);
            arrange();
        }

        function around(number) {
            const level = Tree.levelOf(view, lines[number]);
            let at = number;
            while (at > 0 && Tree.levelOf(view, lines[at]) >= level) {
                --at;
            }
            return at;
        }

        function right() {
            const open = Tree.isOpen(view, lines[active]);
            open ? choose(active + 1, true) : setOpen(true);
        }

        function left() {
            const open = Tree.isOpen(view, lines[active]) && Tree.canOpen(view, lines[active]);
            open ? setOpen(false) : choose(around(active), true);
        }

        const KEYS = {
            ArrowDown: () => choose(active + 1, true),
            ArrowUp: () => choose(active - 1, true),
            ArrowRight: right,
            ArrowLeft: left,
            Home: () => choose(0, true),
            End: () => choose(lines.length - 1, true),
            PageDown: () => choose(active + list.linesInView(), true),
            PageUp: () => choose(active - list.linesInView(), true),
            Enter: () => setOpen(!Tree.isOpen(view, lines[active])),
            " ": () => setOpen(!Tree.isOpen(view, lines[active])),
        };

        tree.addEventListener("keydown", (event) => {
            if (KEYS[event.key] !== undefined && lines.length > 0 && !event.ctrlKey && !event.altKey && !event.metaKey) {
                event.preventDefault();
                KEYS[event.key]();
            }
        });

        tree.addEventListener("click", (event) => {
            const line = event.target.closest(".line");
            if (line !== null) {
                choose(Number(line.dataset.line), true);
                setOpen(!Tree.isOpen(view, lines[active]));
            }
        });

        // --- filters

        function filterFromForm() {
            return {
                query: byId("search").value.trim(),
                fate: Number(byId("filter-fate").value),
                step: Number(byId("filter-step").value),
                finding: Number(byId("filter-finding").value),
            };
        }

        function countRows(counts) {
            return model.rows.reduce((sum, row, number) => sum + (Model.isRow(row) && counts(number) ? 1 : 0), 0);
        }

        function apply() {
            const filter = filterFromForm();
            view.filtered = Model.isFiltered(filter);
            view.found = Model.matches(model, filter);
            view.shown = Tree.withAround(model, view.found);
            view.state = Tree.begin();
            counts = Tree.countGroups(model, view.found);
            const found = countRows((row) => view.found[row] === 1);
            const all = counted(countRows(() => true), "changed row", "changed rows");
            byId("matches").textContent = view.filtered ? `${grouped(found)} of ${all}` : all;
            byId("clear").disabled = !view.filtered;
            active = 0;
            lines = [];
            arrange();
        }

        function setFilter(filter) {
            byId("search").value = filter.query ?? "";
            byId("filter-fate").value = filter.fate ? String(filter.fate) : "";
            byId("filter-step").value = filter.step ? String(filter.step) : "";
            byId("filter-finding").value = filter.finding ? String(filter.finding) : "";
            apply();
        }

        function openAll(all) {
            view.state = Tree.begin();
            view.state.all = all;
            if (!all && view.filtered) {
                model.groups.forEach((group, number) => view.state.groups.add(number));
            }
            arrange();
        }

        // Shows a row, from 1, with its leaves. False where the page does not have it.
        function reveal(number) {
            const row = number - 1;
            if (!(row >= 0 && row < model.rows.length)) {
                return false;
            }
            if (view.shown[row] === 0) {
                setFilter({});
            }
            Tree.reveal(view, row);
            Tree.setOpen(view, Tree.lineOfRow(row), true);
            arrange();
            choose(lines.indexOf(Tree.lineOfRow(row)), true);
            list.centre(active);
            return true;
        }

        byId("search").addEventListener("input", apply);
        for (const id of ["filter-fate", "filter-step", "filter-finding"]) {
            byId(id).addEventListener("change", apply);
        }
        byId("clear").addEventListener("click", () => {
            setFilter({});
            byId("search").focus();
        });
        byId("open-all").addEventListener("click", () => openAll(true));
        byId("close-all").addEventListener("click", () => openAll(false));
        apply();
        return {setFilter, reveal};
    }

    return {over};
})();
