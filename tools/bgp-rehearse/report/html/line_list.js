// A list of lines of which one is chosen, by keyboard or pointer: the log, and the routers of a fleet.
/* global Elements, Windowed */
/* exported LineList */

// Whoever extends it has draw(at), which makes the element of a line with the attribute data-at, and tell(), which says
// what is to be said of the chosen one.
class LineList {
    constructor(scroller, chosen) {
        this.places = []; // of the lines that are shown
        this.chosen = chosen; // among them; -1 for none
        this.scroller = scroller;
        this.list = new Windowed(scroller, (at) => this.draw(at), () => this.chosen);
        this.listenForChoice();
    }

    choose(at) {
        const before = this.chosen;
        this.chosen = Math.max(0, Math.min(at, this.places.length - 1));
        this.list.redraw(before);
        this.list.reveal(this.chosen);
        this.list.redraw(this.chosen);
        this.tell();
    }

    listenForChoice() {
        const onLine = (act) => () => this.places.length > 0 && act();
        Elements.onKeys(this.scroller, {
            ArrowDown: onLine(() => this.choose(this.chosen + 1)),
            ArrowUp: onLine(() => this.choose(this.chosen - 1)),
            Home: onLine(() => this.choose(0)),
            End: onLine(() => this.choose(this.places.length - 1)),
            PageDown: onLine(() => this.choose(this.chosen + this.list.linesInView())),
            PageUp: onLine(() => this.choose(this.chosen - this.list.linesInView())),
        });
        this.scroller.addEventListener('click', (event) => {
            const line = event.target.closest('.line');
            if (line !== null) {
                this.choose(Number(line.dataset.at));
            }
        });
    }
}
