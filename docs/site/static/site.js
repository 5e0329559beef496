// SPDX-License-Identifier: Apache-2.0
// A search shows lines of the pages that it finds. A page opened as a file cannot fetch them.
"use strict";
if (location.protocol === "file:") {
    DOCUMENTATION_OPTIONS.SHOW_SEARCH_SUMMARY = false;
}
