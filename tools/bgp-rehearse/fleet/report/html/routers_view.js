// The list of routers as one sees it: filtered, and chosen from by keyboard and pointer; the chosen one is told whole.
/* global Elements, FleetModel, LineList */
/* exported RoutersView */

class RoutersView extends LineList {
    static FILTERS = ['verdict', 'kind', 'reason'];

    constructor(model) {
        super(Elements.byId('router-lines'), 0);
        this.model = model;
        this.listen();
        this.apply();
    }

    draw(at) {
        const {element, foreign} = Elements;
        const router = FleetModel.told(this.model, this.places[at]);
        const chosen = at === this.chosen;
        return element(
            'div', {
                class: `line ${router.verdict.toLowerCase()}`, role: 'option', 'data-at': at,
                'aria-selected': String(chosen), tabindex: chosen ? '0' : '-1',
            },
            element('span', {class: 'word'}, router.verdict),
            element('span', {class: 'name'}, foreign(router.name)),
            element('span', {class: 'about'}, foreign(router.sentence)),
        );
    }

    static form() {
        const filter = {query: Elements.byId('search').value.trim()};
        for (const name of RoutersView.FILTERS) {
            filter[name] = Number(Elements.byId(`filter-${name}`).value);
        }
        return filter;
    }

    setFilter(filter) {
        const wanted = {...FleetModel.none, ...filter};
        Elements.byId('search').value = wanted.query;
        for (const name of RoutersView.FILTERS) {
            Elements.byId(`filter-${name}`).value = wanted[name] === 0 ? '' : String(wanted[name]);
        }
        this.apply();
    }

    apply() {
        const filter = RoutersView.form();
        this.places = FleetModel.found(this.model, filter);
        this.chosen = 0;
        this.scroller.scrollTop = 0;
        this.list.show(this.places.length);
        const {grouped, counted, byId} = Elements;
        const all = counted(this.model.routers.length, 'router', 'routers');
        byId('matches').textContent = FleetModel.isSet(filter) ? `${grouped(this.places.length)} of ${all}` : all;
        byId('clear').disabled = !FleetModel.isSet(filter);
        this.tell();
    }

    choose(at) {
        super.choose(at);
        this.list.element(this.chosen).focus({preventScroll: true});
    }

    reason(number) {
        const {element, foreign} = Elements;
        const [severity, finding, text] = this.model.reasons[number - 1];
        return element(
            'li', {class: severity},
            element('a', {href: `#reason-${number}`}, foreign(text)),
            ` (${severity}, `, element('code', {}, finding), ')',
        );
    }

    // The card of the chosen router.
    tell() {
        const {element, foreign, byId} = Elements;
        const place = this.places[this.chosen];
        if (place === undefined) {
            byId('detail').replaceChildren(element('p', {}, 'No router is like that.'));
            return;
        }
        const router = FleetModel.told(this.model, place);
        const backup = {
            whole: 'All of its backup was rehearsed.',
            partly: 'Parts of its backup, in other modules, were left out.',
            refused: 'Its backup could not be rehearsed.',
        };
        byId('detail').replaceChildren(
            element('h3', {}, foreign(router.name)),
            element('p', {}, element('strong', {}, router.verdict), ' ', foreign(router.sentence)),
            element('p', {}, backup[router.kind]),
            element('ul', {class: 'findings'}, ...router.reasons.map((each) => this.reason(each))),
            element('p', {}, 'Its full report:'),
            element('code', {class: 'command', tabindex: '0'}, router.command),
        );
    }

    listen() {
        const {byId} = Elements;
        byId('search').addEventListener('input', () => this.apply());
        RoutersView.FILTERS.forEach((name) => byId(`filter-${name}`).addEventListener('change', () => this.apply()));
        byId('clear').addEventListener('click', () => this.setFilter(FleetModel.none));
    }
}
