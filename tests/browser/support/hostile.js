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
    'javascript:alert(3)',
    '${alert(4)}{{alert(5)}}',
];

const long = `<i>${'K'.repeat(10000)}</i>`;

// A file's name may hold nearly anything; a slash it may not.
const fileName = '<svg onload=alert(6)>"\'&amp;\u202e\u001b[31m.xml';

const escaped = (text) => text.replace(/[&<>]/g, (one) => `&#${one.codePointAt(0)};`);

// Gives hidden rows of neighbours, which the upgrade moves, the texts as keys and one of them a long value.
function configuration(xml) {
    let next = 0;
    return xml.replace(/<peer>[^<]*<\/peer>/g, (peer) => {
        const text = [...texts, long][next++];
        return text === undefined ? peer : `<peer>${escaped(text)}</peer>`;
    });
}

// Gives a VRF a name whose path is too long for the upgrade, which ends there.
function endingConfiguration(xml) {
    return xml.replace(/\bblue\b/g, escaped(long));
}

module.exports = {configuration, endingConfiguration, fileName, long, texts};
