# SPDX-License-Identifier: Apache-2.0
"""Checks that every link of the pages in a directory leads to a page, a file or an anchor there.

Usage: check_links.py DIRECTORY

Links to other hosts are not followed, but a page must not load anything from one.
"""
import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urlsplit


class Page(HTMLParser):
    """The anchors of a page, and what it links to or loads."""

    def __init__(self, path):
        super().__init__()
        self.anchors, self.links, self.loads = {''}, [], []
        self.feed(path.read_text(encoding='utf-8'))

    def handle_starttag(self, tag, attrs):
        attrs = dict(attrs)
        self.anchors.add(attrs.get('id', ''))
        if tag == 'a':
            self.links.append(attrs.get('href', ''))
        else:
            self.loads += [attrs[name] for name in ('href', 'src', 'data') if attrs.get(name)]


def fault(path, link, pages):
    """What is wrong with a link within the directory."""
    parts = urlsplit(link)
    target = (path.parent / unquote(parts.path)).resolve() if parts.path else path
    if not target.is_file():
        return 'no such file'
    if target in pages and unquote(parts.fragment) not in pages[target].anchors:
        return 'no such anchor'
    return None


def faults(pages):
    for path, page in pages.items():
        inner = [link for link in page.links if not urlsplit(link).scheme]
        for link in sorted({*inner, *page.loads}):
            reason = 'on another host' if urlsplit(link).netloc else fault(path, link, pages)
            if reason:
                yield path, link, reason


def main():
    root = Path(sys.argv[1]).resolve()
    pages = {path: Page(path) for path in sorted(root.rglob('*.html'))}
    found = list(faults(pages))
    for path, link, reason in found:
        print(f'{path.relative_to(root)}: {link}: {reason}', file=sys.stderr)
    sys.exit(1 if found or not pages else 0)


if __name__ == '__main__':
    main()
