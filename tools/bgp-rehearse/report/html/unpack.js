// The data of the page: JSON lines, compressed by gzip, as base64 in an element.
/* exported Unpack */

const Unpack = (() => {
    'use strict';

    function bytesOf(base64) {
        const binary = atob(base64);
        const bytes = new Uint8Array(binary.length);
        for (let i = 0; i < binary.length; ++i) {
            bytes[i] = binary.charCodeAt(i);
        }
        return bytes;
    }

    // Calls take(value) for each line, parsed. Each line is ended, so that nothing stays behind.
    async function forEachLine(base64, take) {
        const unpacked = new Blob([bytesOf(base64)]).stream().pipeThrough(new DecompressionStream('gzip'));
        const reader = unpacked.pipeThrough(new TextDecoderStream()).getReader();
        let pieces = [];
        for (let piece = await reader.read(); !piece.done; piece = await reader.read()) {
            const lines = piece.value.split('\n');
            for (const line of lines.slice(0, -1)) {
                pieces.push(line);
                take(JSON.parse(pieces.join('')));
                pieces = [];
            }
            pieces.push(lines[lines.length - 1]);
        }
    }

    return {forEachLine};
})();
