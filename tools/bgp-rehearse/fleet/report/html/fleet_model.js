// The routers of a fleet, and which of them a filter lets through: {query, verdict, kind, reason}, "" and 0 for none,
// places from 1. Nothing here touches the document.
/* exported FleetModel */

const FleetModel = (() => {
    'use strict';

    const VERDICT = 0;
    const KIND = 1; // of the backup
    const TEXT = 2;
    const REASONS = 3;

    const none = {query: '', verdict: 0, kind: 0, reason: 0};

    function empty() {
        return {verdicts: [], classes: [], reasons: [], tail: '', routers: []};
    }

    // Takes a line of the data.
    function take(model, line) {
        if (Array.isArray(line)) {
            line.forEach((router) => model.routers.push(router));
        } else {
            Object.assign(model, line);
        }
    }

    // What is told of a router, by its place.
    function told(model, place) {
        const router = model.routers[place];
        const [name, sentence, command] = router[TEXT].split('\n');
        return {
            name,
            sentence,
            command: `${command} ${model.tail}`,
            verdict: model.verdicts[router[VERDICT]],
            kind: model.classes[router[KIND]],
            reasons: router[REASONS],
        };
    }

    function isSet(filter) {
        return filter.query !== '' || filter.verdict !== 0 || filter.kind !== 0 || filter.reason !== 0;
    }

    // Name and sentence are searched, not the command.
    function finder(query) {
        const pattern = new RegExp(query.replace(/[\\^$.*+?()[\]{}|/-]/g, '\\$&'), 'i');
        return (router) => pattern.test(router[TEXT].slice(0, router[TEXT].lastIndexOf('\n')));
    }

    // The cheap ones first.
    function finders({query, verdict, kind, reason}) {
        const all = [];
        if (verdict !== 0) {
            all.push((router) => router[VERDICT] === verdict - 1);
        }
        if (kind !== 0) {
            all.push((router) => router[KIND] === kind - 1);
        }
        if (reason !== 0) {
            all.push((router) => router[REASONS].includes(reason));
        }
        if (query !== '') {
            all.push(finder(query));
        }
        return all;
    }

    // The places of the routers that are let through.
    function found(model, filter) {
        const all = finders(filter);
        const places = [];
        model.routers.forEach((router, place) => {
            if (all.every((finds) => finds(router))) {
                places.push(place);
            }
        });
        return places;
    }

    return {none, empty, take, told, isSet, found};
})();
