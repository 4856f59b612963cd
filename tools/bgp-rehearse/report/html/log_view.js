"use strict";
// The log as one sees it: its lines with their numbers, those with a text alone where one is asked for.
/* global Elements, Model, Windowed */
/* exported LogView */

const LogView = (() => {
    const {element, foreign, byId, grouped, counted} = Elements;

    function over(log) {
        const scroller = byId("log-lines");
        let numbers = log.lines.map((line, number) => number);
        let active = -1;
        const list = Windowed.over(scroller, draw, () => active);

        function draw(at) {
            const number = numbers[at] + 1;
            return element(
                "div",
                {class: at === active ? "line target" : "line", role: "listitem", id: `log-${number}`, "data-line": at},
                element("a", {href: `#log-${number}`, class: "number", tabindex: at === active ? "0" : "-1"}, grouped(number)),
                element("span", {class: "text"}, foreign(log.lines[number - 1])),
            );
        }

        function tell() {
            const number = numbers[active];
            byId("log-line").replaceChildren(
                ...(number === undefined ? [] : [element("strong", {}, `Line ${grouped(number + 1)} `), foreign(log.lines[number])]),
            );
        }

        function show(query) {
            const finds = Model.finder(query);
            const line = numbers[active];
            numbers = [];
            log.lines.forEach((text, number) => {
                if (query === "" || finds(text)) {
                    numbers.push(number);
                }
            });
            active = numbers.indexOf(line);
            byId("log-matches").textContent =
                query === "" ? counted(log.lines.length, "line", "lines") : `${grouped(numbers.length)} of ${counted(log.lines.length, "line", "lines")}`;
            list.show(numbers.length);
            tell();
        }

        function choose(at) {
            const before = active;
            active = Math.max(0, Math.min(at, numbers.length - 1));
            list.redraw(before);
            list.redraw(active);
            list.reveal(active);
            tell();
        }

        // Shows a line, from 1. False where the page does not have it.
        function reveal(number) {
            if (!(number >= 1 && number <= log.lines.length)) {
                return false;
            }
            if (!numbers.includes(number - 1)) {
                byId("log-search").value = "";
                show("");
            }
            choose(numbers.indexOf(number - 1));
            list.centre(active);
            return true;
        }

        const KEYS = {
            ArrowDown: () => choose(active + 1),
            ArrowUp: () => choose(active - 1),
            Home: () => choose(0),
            End: () => choose(numbers.length - 1),
            PageDown: () => choose(active + list.linesInView()),
            PageUp: () => choose(active - list.linesInView()),
        };

        scroller.addEventListener("keydown", (event) => {
            if (KEYS[event.key] !== undefined && numbers.length > 0) {
                event.preventDefault();
                KEYS[event.key]();
            }
        });
        scroller.addEventListener("click", (event) => {
            const line = event.target.closest(".line");
            if (line !== null) {
                choose(Number(line.dataset.line));
            }
        });
        byId("log-search").addEventListener("input", () => show(byId("log-search").value));
        show("");
        return {reveal};
    }

    return {over};
})();
