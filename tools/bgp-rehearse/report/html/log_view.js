// The log as one sees it: its lines with their numbers, or those that have a text.
/* global Elements, Filter, LineList */
/* exported LogView */

class LogView extends LineList {
    constructor(log) {
        super(Elements.byId('log-lines'), -1);
        this.log = log;
        Elements.byId('log-search').addEventListener('input', (event) => this.search(event.target.value));
        this.search('');
    }

    draw(at) {
        const {element, foreign, grouped} = Elements;
        const number = this.places[at] + 1;
        const chosen = at === this.chosen;
        return element(
            'div', {class: chosen ? 'line target' : 'line', role: 'listitem', id: `log-${number}`, 'data-at': at},
            element('a', {href: `#log-${number}`, class: 'number', tabindex: chosen ? '0' : '-1'}, grouped(number)),
            element('span', {class: 'text'}, foreign(this.log.lines[number - 1])),
        );
    }

    search(query) {
        const finds = Filter.finder(query);
        const place = this.places[this.chosen];
        this.places = [];
        this.log.lines.forEach((text, at) => {
            if (finds(text)) {
                this.places.push(at);
            }
        });
        this.chosen = this.places.indexOf(place);
        this.list.show(this.places.length);
        const {grouped, counted, byId} = Elements;
        const all = counted(this.log.lines.length, 'line', 'lines');
        byId('log-matches').textContent = query === '' ? all : `${grouped(this.places.length)} of ${all}`;
        this.tell();
    }

    // The chosen line may be wider than the list.
    tell() {
        const {element, foreign, grouped, byId} = Elements;
        const place = this.places[this.chosen];
        const parts = place === undefined ? [] : [
            element('strong', {}, `Line ${grouped(place + 1)} `), foreign(this.log.lines[place]),
        ];
        byId('log-line').replaceChildren(...parts);
    }

    // Shows a line by its number. False where the page does not have it.
    reveal(number) {
        if (number < 1 || number > this.log.lines.length) {
            return false;
        }
        if (!this.places.includes(number - 1)) {
            Elements.byId('log-search').value = '';
            this.search('');
        }
        this.choose(this.places.indexOf(number - 1));
        this.list.centre(this.chosen);
        return true;
    }
}
