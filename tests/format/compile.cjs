// SPDX-License-Identifier: Apache-2.0
// Compiles a Kaitai Struct description with each version of the compiler.
// usage: node compile.cjs DESCRIPTION DIRECTORY
// environment: NODE_PATH, where the packages of package.json are
//
// DIRECTORY gets the reader in Python that the older version makes, because the runtime of Debian
// 12 is as old, and the reader in JavaScript that the newer version makes.
'use strict';
const fs = require('fs');
const path = require('path');

let yaml, older, newer;
try {
    yaml = require('js-yaml');
    older = require('kaitai-struct-compiler-0.10');
    newer = require('kaitai-struct-compiler');
} catch (error) {
    console.log(`compile.cjs: Skipped\n${error.message.split('\n')[0]}`);
    process.exit(77);
}

function write(directory, files) {
    for (const [name, text] of Object.entries(files)) {
        fs.writeFileSync(path.join(directory, name), text);
    }
}

async function main(description, directory) {
    const source = yaml.load(fs.readFileSync(description, 'utf8'));
    write(directory, await new older().compile('python', source, null, false));
    write(directory, await newer.compile('javascript', source, null, false));
}

main(...process.argv.slice(2)).catch((error) => {
    console.error(error);
    process.exit(1);
});
