// What the page does once it is there: takes its data, shows changes and log, and follows links to rows and lines.
/* global ChangesView, Elements, LogView, Model, Unpack */

(() => {
    'use strict';

    const {byId} = Elements;

    // Shows a part with what its data holds; null where the page has none.
    async function load(name, take, show) {
        const data = byId(`${name}-data`);
        if (data === null) {
            return null;
        }
        byId(`${name}-view`).hidden = false;
        try {
            await Unpack.forEachLine(data.textContent, take);
        } catch (error) {
            byId(`${name}-view`).replaceChildren(`This browser cannot read the data: ${error.message}`);
            return null;
        }
        data.remove();
        return show();
    }

    function loadChanges() {
        const model = Model.empty();
        return load('changes', (line) => Model.take(model, line), () => new ChangesView(model));
    }

    function loadLog() {
        const log = {lines: [], parts: []};
        const take = (line) => {
            if (Array.isArray(line)) {
                line.forEach((text) => log.lines.push(text));
            } else {
                Object.assign(log, line);
            }
        };
        return load('log', take, () => new LogView(log));
    }

    function once(act) {
        let done = null;
        return () => {
            done ??= act();
            return done;
        };
    }

    const changes = once(loadChanges);
    const log = once(loadLog);

    function openDetailsAround(target) {
        for (let around = target; around !== null; around = around.parentElement) {
            if (around.localName === 'details') {
                around.open = true;
            }
        }
    }

    async function followRow(number) {
        const view = await changes();
        if (view !== null && !view.reveal(number)) {
            byId('matches').textContent = `Change ${number} is not in this page.`;
        }
        byId('changes').scrollIntoView();
    }

    async function followLine(number) {
        const view = await log();
        byId('log').scrollIntoView();
        if (view !== null && !view.reveal(number)) {
            byId('log-matches').textContent = `Line ${number} is not in this page.`;
        }
    }

    function follow(hash) {
        const [, what, number] = /^#(row|log)-(\d+)$/.exec(hash) ?? [];
        if (what === 'row') {
            followRow(Number(number));
        } else if (what === 'log') {
            followLine(Number(number));
        } else if (hash.length > 1) {
            openDetailsAround(byId(hash.slice(1)));
        }
    }

    async function filterBy({fate, finding}) {
        const view = await changes();
        view?.setFilter({
            fate: fate === undefined ? 0 : view.model.fates.indexOf(fate),
            finding: finding === undefined ? 0 : Number(finding),
        });
    }

    document.addEventListener('click', (event) => {
        const link = event.target.closest('a');
        if (link === null) {
            return;
        }
        if (link.dataset.fate !== undefined || link.dataset.finding !== undefined) {
            filterBy(link.dataset);
        } else if (link.hash !== '' && link.hash === location.hash) {
            follow(link.hash); // no event tells of it
        }
    });

    document.addEventListener('keydown', (event) => {
        const search = byId('search');
        const typing = event.target.closest('input, select, textarea') !== null;
        if (event.key === '/' && !typing && search !== null && !event.ctrlKey && !event.altKey && !event.metaKey) {
            event.preventDefault();
            search.focus();
            search.select();
        }
    });

    // What is folded up on the screen is printed, too.
    function printDetails() {
        const closed = document.querySelectorAll('details:not([open])');
        closed.forEach((details) => {
            details.open = true;
        });
        window.addEventListener('afterprint', () => closed.forEach((details) => {
            details.open = false;
        }), {once: true});
    }

    // The log is long and looked at last: it is taken when one comes near it.
    function takeLogWhenNear() {
        const observer = new IntersectionObserver((entries) => {
            if (entries.some((entry) => entry.isIntersecting)) {
                observer.disconnect();
                log();
            }
        }, {rootMargin: '50%'});
        observer.observe(byId('log'));
    }

    window.addEventListener('beforeprint', printDetails);
    window.addEventListener('hashchange', () => follow(location.hash));
    changes().then(() => follow(location.hash));
    takeLogWhenNear();
})();
