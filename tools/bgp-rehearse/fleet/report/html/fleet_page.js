// What the page of a fleet does once it is there: takes its data, shows the routers, and follows the counts to them.
/* global Elements, FleetModel, RoutersView, Unpack */

(() => {
    'use strict';

    const {byId} = Elements;

    async function load() {
        const data = byId('fleet-data');
        const model = FleetModel.empty();
        byId('routers-view').hidden = false;
        await Unpack.forEachLine(data.textContent, (line) => FleetModel.take(model, line));
        data.remove();
        return {model, view: new RoutersView(model)};
    }

    const loaded = load();

    // A count leads to the routers that it counts.
    async function filterBy({verdict, kind, reason}) {
        const {model, view} = await loaded;
        view.setFilter({
            verdict: verdict === undefined ? 0 : model.verdicts.indexOf(verdict) + 1,
            kind: kind === undefined ? 0 : model.classes.indexOf(kind) + 1,
            reason: reason === undefined ? 0 : Number(reason),
        });
    }

    function filterReasons() {
        const query = byId('reason-search').value.trim().toLowerCase();
        const severity = byId('reason-severity').value;
        const rows = [...byId('reasons-table').tBodies[0].rows];
        rows.forEach((row) => {
            const fits = severity === '' || row.classList.contains(severity);
            row.hidden = !fits || !row.textContent.toLowerCase().includes(query);
        });
        const shown = rows.filter((row) => !row.hidden).length;
        const all = Elements.counted(rows.length, 'reason', 'reasons');
        byId('reason-matches').textContent = shown === rows.length ? all : `${Elements.grouped(shown)} of ${all}`;
    }

    // A link to a reason must not lead to a row that a filter hides.
    function showReason(hash) {
        if (/^#reason-\d+$/.test(hash) && byId(hash.slice(1))?.hidden) {
            byId('reason-search').value = '';
            byId('reason-severity').value = '';
            filterReasons();
            byId(hash.slice(1)).scrollIntoView();
        }
    }

    document.addEventListener('click', (event) => {
        const link = event.target.closest('a');
        if (link === null) {
            return;
        }
        const {verdict, kind, reason} = link.dataset;
        if (verdict !== undefined || kind !== undefined || reason !== undefined) {
            filterBy(link.dataset);
        } else {
            showReason(link.hash);
        }
    });

    document.addEventListener('keydown', (event) => {
        const typing = event.target.closest('input, select, textarea') !== null;
        if (event.key === '/' && !typing && !event.ctrlKey && !event.altKey && !event.metaKey) {
            event.preventDefault();
            byId('search').focus();
            byId('search').select();
        }
    });

    if (byId('reasons-table') !== null) {
        byId('reason-tools').hidden = false;
        byId('reason-search').addEventListener('input', filterReasons);
        byId('reason-severity').addEventListener('change', filterReasons);
        filterReasons();
    }
})();
