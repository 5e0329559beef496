// SPDX-License-Identifier: Apache-2.0
// Compiles a Kaitai Struct description with each version of the compiler.
// usage: node compile.cjs DESCRIPTION DIRECTORY
// environment: NODE_PATH, where the packages of package.json are
//
// DIRECTORY gets the reader in Python that the older version makes: the runtime of Debian 12 is as
// old. The newer version compiles for every language that has a type for each value.
'use strict';
const fs = require('fs');
const path = require('path');
const yaml = require('js-yaml');
const older = require('kaitai-struct-compiler-0.10');
const newer = require('kaitai-struct-compiler');

const languages = ['cpp_stl', 'csharp', 'go', 'java', 'javascript', 'python', 'ruby', 'rust'];

async function main(description, directory) {
    const source = yaml.load(fs.readFileSync(description, 'utf8'));
    const files = await new older().compile('python', source, null, false);
    for (const [name, text] of Object.entries(files)) {
        fs.writeFileSync(path.join(directory, name), text);
    }
    for (const language of languages) {
        await newer.compile(language, source, null, false);
    }
}

main(...process.argv.slice(2)).catch((error) => {
    console.error(error);
    process.exit(1);
});
