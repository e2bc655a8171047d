// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Reads what described-service prints. Fails when the document is no OpenAPI, or when one of its
// schemas takes a body that the service refuses, or the other way round.

import { Validator } from '@seriousme/openapi-schema-validator';
import Ajv from 'ajv/dist/2020.js';
import addFormats from 'ajv-formats';
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';

const { document, tries } = JSON.parse(readFileSync(0, 'utf8'));

const validator = new Validator();
const result = await validator.validate(structuredClone(document));
assert.ok(result.valid, JSON.stringify(result.errors, null, 2));
assert.equal(validator.version, '3.1');

const ajv = new Ajv({ allErrors: true });
addFormats(ajv);
for (const { method, path, body, isTaken } of tries) {
    const { content } = document.paths[path][method].requestBody;
    const { schema } = Object.values(content)[0];
    assert.equal(ajv.validate(schema, body), isTaken, `${method} ${path} ${JSON.stringify(body)}`);
}
assert.ok(tries.some(({ isTaken }) => isTaken) && tries.some(({ isTaken }) => !isTaken));
console.log(`${Object.keys(document.paths).length} paths and ${tries.length} bodies are as described`);
