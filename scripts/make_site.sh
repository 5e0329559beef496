#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Makes the site: the guides, the examples and the API reference, as static pages.
#
# Usage: make_site.sh OUTPUT_DIR
#
# It needs Doxygen, Sphinx with MyST, Breathe and furo, and no network. The same tree makes the same
# bytes anywhere. Warnings and broken links are errors.
set -euo pipefail
[ $# = 1 ] || { echo "usage: make_site.sh OUTPUT_DIR" >&2; exit 2; }
output=$(realpath -m "$1")
cd "$(dirname "$0")/.."

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C.UTF-8 TZ=UTC PYTHONDONTWRITEBYTECODE=1 MDM_DOXYGEN_OUTPUT=$work

doxygen docs/Doxyfile
/usr/bin/python3 docs/site/pages.py "$work/xml" "$work/pages"
rm -rf "$output"
sphinx-build -q -W --keep-going -c docs/site -d "$work/doctrees" "$work/pages" "$output"

# Debian's furo takes a style sheet from the root of a web server, and a script as a module. Pages
# that are opened as files have neither. It also lacks the rules that follow a dark desktop.
mend_theme() {
    local styles=$output/_static/styles scripts=$output/_static/scripts
    cp -L /usr/share/javascript/normalize.css/normalize.css "$styles"
    sed -n '/^@media not print {/,/^$/p' "$styles/furo.css" |
        sed 's/not print/screen and (prefers-color-scheme: dark)/; s/="dark"/="auto"/' \
            >"$work/auto.css"
    sed -i "s|url(/javascript/normalize.css/|url(|; \$r $work/auto.css" "$styles/furo.css"
    sed '/^import Gumshoe/d' "$scripts/furo.js" >"$work/furo.js"
    cat "$scripts/gumshoe-patched.js" "$work/furo.js" >"$scripts/furo.js"
    rm "$scripts/gumshoe-patched.js"
}
mend_theme

/usr/bin/python3 docs/site/check_links.py "$output"

# Files of the theme keep the time of its package, which a package of the site would show.
find "$output" -exec touch {} +
