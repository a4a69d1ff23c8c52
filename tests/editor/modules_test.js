// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

import {Rows} from '/tests/test_rows.js';
import {jsonTextRows} from '/tests/json_text_rows.js';
import {latestRows, moduleRows} from '/tests/module_rows.js';

const rows = new Rows();
jsonTextRows(rows);
moduleRows(rows);
await latestRows(rows);
document.querySelector('#report').textContent = rows.failures.length === 0
    ? `passed ${rows.count}`
    : `failed ${rows.failures.length} of ${rows.count}\n${rows.failures.slice(0, 20).join('\n')}`;
