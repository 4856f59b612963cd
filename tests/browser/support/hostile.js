// Texts that a page may take for something else than text, and configurations that have them as names, values and keys.
'use strict';

const texts = [
    '<img src=x onerror=alert(1)>',
    '</script><script>alert(2)</script>',
    '<!--<script>',
    '--></title></style></textarea><b id=injected>',
    '"\'`&amp;&lt;&',
    '\u202eright to left\u2066isolate',
    '\u009b31mterminal\u200b',
    'java' + 'script:alert(3)',
    '${alert(4)}{{alert(5)}}',
];

const long = `<i>${'K'.repeat(10000)}</i>`;

// A file's name may hold nearly anything; a slash it may not.
const fileName = '<svg onload=alert(6)>"\'&amp;\u202e\u001b[31m.xml';

const escaped = (text) => text.replace(/[&<>]/g, (one) => `&#${one.codePointAt(0)};`);

// Gives hidden rows of neighbours, which the upgrade moves, the texts as keys. The path of the long one is too long for
// it: that row stays.
function configuration(xml) {
    let next = 0;
    return xml.replace(/<peer>[^<]*<\/peer>/g, (peer) => {
        const text = [...texts, long][next++];
        return text === undefined ? peer : `<peer>${escaped(text)}</peer>`;
    });
}

// Gives a VRF the long name: no path holds it, and the upgrade ends.
function endingConfiguration(xml) {
    return xml.replace(/\bblue\b/g, escaped(long));
}

// As reports show a text: what a terminal would act on, or what turns the direction of writing, is made visible.
const shown = (text) => text.replace(/[\u0080-\u009f\u061c\u200e\u200f\u2028-\u202e\u2066-\u2069]/g,
    (one) => `\\u{${one.codePointAt(0).toString(16).padStart(4, '0')}}`);

module.exports = {configuration, endingConfiguration, fileName, long, shown, texts};
