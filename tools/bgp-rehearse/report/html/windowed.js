// A list of lines of one height in an element that scrolls, of which only those are drawn that are in view.
/* global Elements */
/* exported Windowed */

class Windowed {
    static AROUND = 8; // lines drawn above and below what is in view

    static MOST_PIXELS = 8000000; // browsers end somewhat above; a higher list scrolls in proportion

    static MOST_PRINTED = 2000;

    // `draw(at)` makes the element of a line. `kept()` is the line that stays drawn wherever one scrolls, as it may
    // have the focus; -1 for none.
    constructor(scroller, draw, kept) {
        this.scroller = scroller;
        this.draw = draw;
        this.kept = kept;
        this.count = 0;
        this.height = 1; // of a line
        this.drawn = new Map();
        this.printing = false;
        this.space = Elements.element('div', {class: 'space', role: 'presentation'});
        scroller.replaceChildren(this.space);
        scroller.addEventListener('scroll', () => this.paint(), {passive: true});
        new ResizeObserver(() => this.fit()).observe(scroller);
        window.addEventListener('beforeprint', () => this.print(true));
        window.addEventListener('afterprint', () => this.print(false));
    }

    // Draws all anew, of so many lines.
    show(count) {
        this.count = count;
        this.measure();
        this.drawn.forEach((line) => line.remove());
        this.drawn.clear();
        this.space.style.height = `${this.pixels()}px`;
        this.paint();
    }

    // After the size has changed, and with it perhaps that of a line.
    fit() {
        const hadFocus = this.element(this.kept())?.matches(':focus');
        this.show(this.count);
        if (hadFocus) {
            this.element(this.kept())?.focus({preventScroll: true});
        }
    }

    // Draws a line anew, where it is drawn.
    redraw(at) {
        const line = this.drawn.get(at);
        if (line !== undefined) {
            const fresh = this.draw(at);
            this.drawn.set(at, fresh);
            line.replaceWith(fresh);
            this.place(fresh, at);
        }
    }

    element(at) {
        return this.drawn.get(at) ?? null;
    }

    // Scrolls so that a line is in view.
    reveal(at) {
        const top = at * this.height;
        const seen = this.scroller.clientHeight;
        if (top < this.offset()) {
            this.scrollTo(top);
        } else if (top + this.height > this.offset() + seen) {
            this.scrollTo(top + this.height - seen);
        }
        this.paint();
    }

    // Scrolls so that a line is in the middle.
    centre(at) {
        this.scrollTo(at * this.height - this.scroller.clientHeight / 2);
        this.paint();
    }

    linesInView() {
        return Math.max(1, Math.floor(this.scroller.clientHeight / this.height) - 1);
    }

    pixels() {
        return Math.min(this.count * this.height, Windowed.MOST_PIXELS);
    }

    // How many pixels of the lines stand for one of the scroller's.
    proportion() {
        const seen = this.scroller.clientHeight;
        return this.pixels() <= seen ? 1 : (this.count * this.height - seen) / (this.pixels() - seen);
    }

    // How far the lines are scrolled, in their own pixels.
    offset() {
        return this.scroller.scrollTop * this.proportion();
    }

    scrollTo(offset) {
        this.scroller.scrollTop = offset / this.proportion();
    }

    measure() {
        const probe = Elements.element('div', {class: 'line', 'aria-hidden': 'true'}, 'x');
        this.space.append(probe);
        this.height = Math.max(1, probe.getBoundingClientRect().height);
        probe.remove();
    }

    place(line, at) {
        line.style.top = `${at * this.height - this.offset() + this.scroller.scrollTop}px`;
    }

    // The lines that are to be drawn, in their order.
    wanted() {
        const first = this.printing ? 0 : Math.max(0, Math.floor(this.offset() / this.height) - Windowed.AROUND);
        const end = Math.ceil((this.offset() + this.scroller.clientHeight) / this.height) + Windowed.AROUND;
        const last = Math.min(this.count, this.printing ? Windowed.MOST_PRINTED : end);
        const lines = Array.from({length: Math.max(0, last - first)}, (_, line) => first + line);
        const kept = this.kept();
        if (kept >= 0 && kept < first) {
            lines.unshift(kept);
        } else if (kept >= last && kept < this.count) {
            lines.push(kept);
        }
        return lines;
    }

    paint() {
        const wanted = this.wanted();
        const stay = new Set(wanted);
        for (const [at, line] of this.drawn) {
            if (!stay.has(at)) {
                line.remove();
                this.drawn.delete(at);
            }
        }
        let before = null;
        for (const at of wanted) {
            before = this.drawAfter(before, at);
            this.place(before, at);
        }
    }

    drawAfter(before, at) {
        const there = this.drawn.get(at);
        if (there !== undefined) {
            return there;
        }
        const line = this.draw(at);
        this.drawn.set(at, line);
        if (before === null) {
            this.space.prepend(line);
        } else {
            before.after(line);
        }
        return line;
    }

    print(on) {
        this.printing = on;
        this.paint();
    }
}
