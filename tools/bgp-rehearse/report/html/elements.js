"use strict";
// Makes elements of text nodes; nothing is ever made of markup.
/* exported Elements */

const Elements = (() => {
    // What is no node becomes text; null is left out. An attribute that is null is left out, too.
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
        return element("bdi", {}, text);
    }

    function byId(id) {
        return document.getElementById(id);
    }

    function grouped(number) {
        return number.toLocaleString("en-US");
    }

    function counted(number, one, many) {
        return `${grouped(number)} ${number === 1 ? one : many}`;
    }

    return {element, foreign, byId, grouped, counted};
})();
