"use strict";
// A list of lines of one height in an element that scrolls, of which only those are drawn that are in view.
/* global Elements */
/* exported Windowed */

const Windowed = (() => {
    const AROUND = 8; // lines drawn above and below what is in view
    const MOST_PIXELS = 8000000; // browsers end somewhat above; a higher list scrolls in proportion

    // `draw(number)` makes the element of a line. `kept()` is the number of a line that stays drawn wherever one scrolls, as it
    // may have the focus; -1 for none.
    function over(scroller, draw, kept) {
        const space = Elements.element("div", {class: "space", role: "presentation"});
        const drawn = new Map();
        let count = 0;
        let height = 1; // of a line
        scroller.replaceChildren(space);

        function measure() {
            const probe = Elements.element("div", {class: "line", "aria-hidden": "true"}, "x");
            space.append(probe);
            height = Math.max(1, probe.getBoundingClientRect().height);
            probe.remove();
        }

        // How far the lines are scrolled, in their own pixels.
        function offset() {
            const whole = count * height;
            const high = Math.min(whole, MOST_PIXELS);
            const seen = scroller.clientHeight;
            return high <= seen ? 0 : (scroller.scrollTop * (whole - seen)) / (high - seen);
        }

        function place(line, number) {
            line.style.top = `${number * height - offset() + scroller.scrollTop}px`;
        }

        function paint() {
            const first = Math.max(0, Math.floor(offset() / height) - AROUND);
            const last = Math.min(count, Math.ceil((offset() + scroller.clientHeight) / height) + AROUND);
            for (const [number, line] of drawn) {
                if ((number < first || number >= last) && number !== kept()) {
                    line.remove();
                    drawn.delete(number);
                }
            }
            let before = null;
            const wanted = kept() >= 0 && kept() < count && (kept() < first || kept() >= last) ? [kept()] : [];
            for (let number = first; number < last; ++number) {
                wanted.push(number);
            }
            for (const number of wanted.sort((left, right) => left - right)) {
                if (!drawn.has(number)) {
                    const line = draw(number);
                    drawn.set(number, line);
                    before === null ? space.prepend(line) : before.after(line);
                }
                before = drawn.get(number);
                place(before, number);
            }
        }

        // Draws all anew, of so many lines.
        function show(lines) {
            count = lines;
            measure();
            drawn.forEach((line) => line.remove());
            drawn.clear();
            space.style.height = `${Math.min(count * height, MOST_PIXELS)}px`;
            paint();
        }

        // Draws a line that is in view anew.
        function redraw(number) {
            const line = drawn.get(number);
            if (line !== undefined) {
                const fresh = draw(number);
                drawn.set(number, fresh);
                line.replaceWith(fresh);
                place(fresh, number);
            }
        }

        // Scrolls so that a line is in view.
        function reveal(number) {
            const top = number * height;
            const seen = scroller.clientHeight;
            const at = offset();
            if (top >= at && top + height <= at + seen) {
                return;
            }
            const wanted = top < at ? top : top + height - seen;
            const whole = count * height;
            const high = Math.min(whole, MOST_PIXELS);
            scroller.scrollTop = whole <= seen ? 0 : (wanted * (high - seen)) / (whole - seen);
            paint();
        }

        // Scrolls so that a line is in the middle.
        function centre(number) {
            reveal(Math.max(0, number - Math.floor(scroller.clientHeight / height / 2)));
            reveal(Math.min(count - 1, number + Math.floor(scroller.clientHeight / height / 2)));
            reveal(number);
        }

        const linesInView = () => Math.max(1, Math.floor(scroller.clientHeight / height) - 1);

        scroller.addEventListener("scroll", paint, {passive: true});
        new ResizeObserver(() => show(count)).observe(scroller);
        return {show, redraw, reveal, centre, linesInView, element: (number) => drawn.get(number)};
    }

    return {over};
})();
