// Makes elements of text nodes; nothing is ever made of markup.
/* exported Elements */

const Elements = (() => {
    'use strict';

    // What is no node becomes text; null is left out, of attributes too.
    function element(name, attributes, ...content) {
        const made = document.createElement(name);
        for (const [attribute, value] of Object.entries(attributes)) {
            if (value !== null) {
                made.setAttribute(attribute, value);
            }
        }
        made.append(...content.filter((each) => each !== null));
        return made;
    }

    // A text of the configuration or the library: whatever direction it has, what is around it keeps its own.
    function foreign(text) {
        return element('bdi', {}, text);
    }

    function byId(id) {
        return document.getElementById(id);
    }

    function grouped(number) {
        return number.toLocaleString('en-US');
    }

    function counted(number, one, many) {
        return `${grouped(number)} ${number === 1 ? one : many}`;
    }

    // Calls what stands for the key that was pressed, unless that means something to the browser.
    function onKeys(target, keys) {
        target.addEventListener('keydown', (event) => {
            if (keys[event.key] !== undefined && !event.ctrlKey && !event.altKey && !event.metaKey) {
                event.preventDefault();
                keys[event.key]();
            }
        });
    }

    return {element, foreign, byId, grouped, counted, onKeys};
})();
