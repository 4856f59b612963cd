// The tree of changes as one sees it: filtered, opened, and chosen from by keyboard and pointer.
/* global ChangeDetail, ChangeLines, Elements, Filter, Model, Tree, Windowed */
/* exported ChangesView */

class ChangesView {
    static FILTERS = ['filter-fate', 'filter-step', 'filter-finding'];

    constructor(model) {
        this.model = model;
        this.rows = Model.countRows(model);
        this.tree = Elements.byId('tree');
        this.lines = [];
        this.chosen = 0;
        this.list = new Windowed(this.tree, (at) => this.draw(at), () => this.chosen);
        this.listenToTree();
        this.listenToFilters();
        this.apply();
    }

    draw(at) {
        return ChangeLines.draw(this.view, this.lines[at], {at, chosen: at === this.chosen, counts: this.counts});
    }

    // --- filters

    static form() {
        const numberIn = (id) => Number(Elements.byId(id).value);
        return {
            query: Elements.byId('search').value.trim(),
            fate: numberIn('filter-fate'),
            step: numberIn('filter-step'),
            finding: numberIn('filter-finding'),
        };
    }

    setFilter(filter) {
        const wanted = {...Filter.none, ...filter};
        Elements.byId('search').value = wanted.query;
        for (const id of ChangesView.FILTERS) {
            const value = wanted[id.slice('filter-'.length)];
            Elements.byId(id).value = value === 0 ? '' : String(value);
        }
        this.apply();
    }

    apply() {
        this.view = Tree.view(this.model, ChangesView.form());
        this.counts = Tree.countGroups(this.view);
        this.lines = [];
        this.chosen = 0;
        this.arrange();
        const {grouped, counted, byId} = Elements;
        const all = counted(this.rows, 'changed row', 'changed rows');
        byId('matches').textContent = this.view.filtered ? `${grouped(this.view.count)} of ${all}` : all;
        byId('clear').disabled = !this.view.filtered;
    }

    listenToFilters() {
        const {byId} = Elements;
        byId('search').addEventListener('input', () => this.apply());
        ChangesView.FILTERS.forEach((id) => byId(id).addEventListener('change', () => this.apply()));
        byId('clear').addEventListener('click', () => {
            this.setFilter(Filter.none);
            byId('search').focus();
        });
        byId('open-all').addEventListener('click', () => this.openWhole(true));
        byId('close-all').addEventListener('click', () => this.openWhole(false));
    }

    // --- what is open

    // Draws the lines that are open now, and keeps the chosen one.
    arrange() {
        const focused = this.tree.contains(document.activeElement);
        const line = this.lines[this.chosen];
        this.lines = Tree.lines(this.view);
        this.chosen = Math.max(0, this.lines.indexOf(line));
        this.list.show(this.lines.length);
        this.tree.classList.toggle('empty', this.lines.length === 0);
        this.tell();
        if (focused) {
            this.focus();
        }
    }

    openWhole(all) {
        this.view = Tree.openedWhole(this.view, all);
        this.arrange();
    }

    isOpen() {
        return Tree.isOpen(this.view, this.lines[this.chosen]);
    }

    setOpen(open) {
        Tree.setOpen(this.view, this.lines[this.chosen], open);
        this.arrange();
    }

    // --- the chosen line

    choose(at) {
        const before = this.chosen;
        this.chosen = Math.max(0, Math.min(at, this.lines.length - 1));
        this.list.reveal(this.chosen);
        this.list.redraw(before);
        this.list.redraw(this.chosen);
        this.tell();
        this.focus();
    }

    focus() {
        this.list.element(this.chosen)?.focus({preventScroll: true});
    }

    tell() {
        const line = this.lines[this.chosen];
        if (line === undefined || Tree.isGroup(line)) {
            ChangeDetail.clear();
        } else {
            ChangeDetail.show(this.model, Tree.rowOf(line));
        }
    }

    // Shows a row by its number. False where the page does not have it.
    reveal(number) {
        const place = number - 1;
        if (place < 0 || place >= this.model.rows.length) {
            return false;
        }
        if (this.view.shown[place] === 0) {
            this.setFilter(Filter.none);
        }
        Tree.reveal(this.view, place);
        this.arrange();
        this.choose(this.lines.indexOf(Tree.lineOfRow(place)));
        this.list.centre(this.chosen);
        return true;
    }

    // --- keyboard and pointer

    right() {
        if (this.isOpen()) {
            this.choose(this.chosen + 1);
        } else {
            this.setOpen(true);
        }
    }

    left() {
        if (this.isOpen()) {
            this.setOpen(false);
        } else {
            this.choose(Tree.lineAround(this.view, this.lines, this.chosen));
        }
    }

    listenToTree() {
        const onLine = (act) => () => this.lines.length > 0 && act();
        const turn = onLine(() => this.setOpen(!this.isOpen()));
        Elements.onKeys(this.tree, {
            ArrowDown: onLine(() => this.choose(this.chosen + 1)),
            ArrowUp: onLine(() => this.choose(this.chosen - 1)),
            ArrowRight: onLine(() => this.right()),
            ArrowLeft: onLine(() => this.left()),
            Home: onLine(() => this.choose(0)),
            End: onLine(() => this.choose(this.lines.length - 1)),
            PageDown: onLine(() => this.choose(this.chosen + this.list.linesInView())),
            PageUp: onLine(() => this.choose(this.chosen - this.list.linesInView())),
            Enter: turn,
            ' ': turn,
        });
        this.tree.addEventListener('click', (event) => {
            const line = event.target.closest('.line');
            if (line !== null) {
                this.choose(Number(line.dataset.at));
                turn();
            }
        });
    }
}
