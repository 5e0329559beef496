# SPDX-License-Identifier: Apache-2.0
"""What Sphinx makes of the pages that pages.py has laid out: scripts/make_site.sh."""
import logging
import os
import re
from pathlib import Path

from pygments.lexers.special import TextLexer

CMAKE = (Path(__file__).parents[2] / 'CMakeLists.txt').read_text(encoding='utf-8')

project = 'libmdm-common'
author = 'the libmdm-common authors'
copyright = author  # pylint: disable=redefined-builtin
version = release = re.search(r'^project\(\S+ VERSION (\S+)', CMAKE, re.MULTILINE).group(1)

extensions = ['myst_parser', 'breathe']
exclude_patterns = ['tree']
myst_heading_anchors = 4
myst_ref_domains = ['std']

breathe_projects = {'mdm': os.environ['MDM_DOXYGEN_OUTPUT'] + '/xml'}
breathe_default_project = 'mdm'
breathe_show_enumvalue_initializer = True
breathe_show_include = False
breathe_domain_by_extension = {'h': 'c', 'hpp': 'cpp'}

# Every link of a text must lead somewhere. The types in a declaration may be of other libraries.
nitpicky = True
nitpick_ignore_regex = [('(c|cpp):identifier', '.*')]

highlight_language = 'none'
html_theme = 'furo'
html_title = f'{project} {version}'
html_static_path = ['static']
html_favicon = 'static/icon.svg'
html_css_files = ['site.css']
html_js_files = ['site.js']
html_copy_source = False
html_use_index = True


class RepeatedNamespace(logging.Filter):
    """Both C++ headers declare something in `mdm`, which Sphinx takes for a repetition."""

    def filter(self, record):
        return not record.getMessage().endswith("Declaration is '.. cpp:type:: mdm'.")


def setup(app):
    # The examples of docs/wire-format.md.
    app.add_lexer('hex', TextLexer)
    logging.getLogger('sphinx.sphinx.domains.cpp').addFilter(RepeatedNamespace())
