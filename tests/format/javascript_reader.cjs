// SPDX-License-Identifier: Apache-2.0
// Reads messages with a generated reader: a line of hexadecimal digits for each on standard input.
// Prints a JSON array: the offset where the reader has stopped, or null for a whole message.
// usage: node javascript_reader.cjs DIRECTORY
// environment: NODE_PATH, where the packages of package.json are
'use strict';
const fs = require('fs');
const path = require('path');
const {KaitaiStream} = require('kaitai-struct');
const {Mdm} = require(path.resolve(process.argv[2], 'Mdm.js'));

// The stream that was asked for bytes last.
let last;
const ensureBytesLeft = KaitaiStream.prototype.ensureBytesLeft;
KaitaiStream.prototype.ensureBytesLeft = function (count) {
    last = this;
    return ensureBytesLeft.call(this, count);
};

// A number that is wrong has been read. A length field, which ends at 4, and a type, which ends at
// 5, are the fault themselves; elsewhere the fault is what the number counts.
function readBack(error, offset) {
    return error instanceof KaitaiStream.EOFError ? 0 : {4: 4, 5: 1}[offset] || 0;
}

function faultOffset(bytes) {
    try {
        new Mdm(new KaitaiStream(bytes));
        return null;
    } catch (error) {
        const isExpected = error instanceof KaitaiStream.EOFError ||
            error instanceof KaitaiStream.ValidationExprError;
        if (!isExpected) {
            throw error;
        }
        const offset = bytes.byteLength - (last.size - last.pos);
        return offset - readBack(error, offset);
    }
}

const lines = fs.readFileSync(0, 'ascii').split('\n').slice(0, -1);
const offsets = lines.map((line) => faultOffset(Uint8Array.from(Buffer.from(line, 'hex')).buffer));
process.stdout.write(JSON.stringify(offsets));
