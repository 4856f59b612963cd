"use strict";
// What the page does once it is there: takes its data, shows changes and log, and follows links to rows and lines.
/* global Elements, Model, Unpack, ChangesView, LogView */

(() => {
    const {byId} = Elements;

    async function loadChanges() {
        const data = byId("changes-data");
        if (data === null) {
            return null;
        }
        const model = Model.empty();
        byId("changes-view").hidden = false;
        await Unpack.forEachLine(data.textContent, (line) => Model.take(model, line));
        data.remove();
        return {model, view: ChangesView.over(model)};
    }

    async function loadLog() {
        const data = byId("log-data");
        if (data === null) {
            return null;
        }
        const log = {lines: [], parts: []};
        byId("log-view").hidden = false;
        await Unpack.forEachLine(data.textContent, (line) => {
            if (Array.isArray(line)) {
                line.forEach((each) => log.lines.push(each));
            } else {
                log.parts = line.parts;
            }
        });
        data.remove();
        return LogView.over(log);
    }

    // The log is large, and looked at last.
    function once(load) {
        let loaded = null;
        return () => {
            loaded = loaded ?? load();
            return loaded;
        };
    }

    function whenNear(section, act) {
        const observer = new IntersectionObserver(
            (entries) => {
                if (entries.some((entry) => entry.isIntersecting)) {
                    observer.disconnect();
                    act();
                }
            },
            {rootMargin: "50%"},
        );
        observer.observe(section);
    }

    function openDetails(target) {
        for (let around = target; around !== null; around = around.parentElement) {
            if (around.localName === "details") {
                around.open = true;
            }
        }
    }

    const changes = once(loadChanges);
    const log = once(loadLog);

    async function follow(hash) {
        const [, what, number] = /^#(row|log)-(\d+)$/.exec(hash) ?? [];
        if (what === "row") {
            const loaded = await changes();
            if (loaded !== null && !loaded.view.reveal(Number(number))) {
                byId("matches").textContent = `Change ${number} is not in this page.`;
            }
            byId("changes").scrollIntoView();
        } else if (what === "log") {
            const view = await log();
            if (view !== null) {
                byId("log").scrollIntoView();
                view.reveal(Number(number));
            }
        } else if (hash.length > 1) {
            const target = byId(hash.slice(1));
            if (target !== null) {
                openDetails(target);
            }
        }
    }

    async function filterBy(link) {
        const {model, view} = await changes();
        view.setFilter({
            fate: link.dataset.fate === undefined ? 0 : model.fates.indexOf(link.dataset.fate),
            finding: link.dataset.finding === undefined ? 0 : Number(link.dataset.finding),
        });
    }

    document.addEventListener("click", (event) => {
        const link = event.target.closest("a");
        if (link === null) {
            return;
        }
        if (link.dataset.fate !== undefined || link.dataset.finding !== undefined) {
            filterBy(link);
        } else if (link.hash !== "" && link.hash === location.hash) {
            follow(link.hash); // which no event tells of
        }
    });

    document.addEventListener("keydown", (event) => {
        const typing = event.target.closest("input, select, textarea") !== null;
        const search = byId("search");
        if (event.key === "/" && !typing && search !== null && !event.ctrlKey && !event.altKey && !event.metaKey) {
            event.preventDefault();
            search.focus();
            search.select();
        }
    });

    addEventListener("hashchange", () => follow(location.hash));
    changes().then(() => follow(location.hash));
    if (byId("log-data") !== null) {
        whenNear(byId("log"), log);
    }
})();
