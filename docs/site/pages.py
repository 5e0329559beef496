# SPDX-License-Identifier: Apache-2.0
"""Lays out the pages of the site for Sphinx.

Usage: pages.py XML DIRECTORY, from the root of the source tree

XML is what Doxygen made of the public headers. A page has the path of what it shows, so that the
links of the guides hold: include/mdm/ipc.h.rst is the page of include/mdm/ipc.h.
"""
import re
import shutil
import sys
from pathlib import Path
from xml.etree import ElementTree

from pygments.lexers import find_lexer_class_for_filename

# Besides the guides: what they show or link to.
DIRECTORIES = ['examples', 'docs/debugging', 'docs/other-languages']
FILES = ['LICENSE', 'docs/architecture.dot', 'docs/performance/measured.json']


def read(path):
    return Path(path).read_text(encoding='utf-8')


def heading(text, underline='='):
    return f'{text}\n{underline * len(text)}\n\n'


def toctree(entries, options=''):
    return f'.. toctree::\n{options}\n' + ''.join(f'   {entry}\n' for entry in entries) + '\n'


class Site:
    """The directory of the pages."""

    def __init__(self, directory):
        self.directory = Path(directory)

    def write(self, path, text):
        target = self.directory / path
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_text(text, encoding='utf-8')

    def copy(self, path, target):
        (self.directory / target).parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(path, self.directory / target)


# The README is the front page, and a directory is shown by its index.
def with_links_into_the_site(text):
    text = re.sub(r'\]\(((?:\.\./)*)README\.md', r'](\1index.md', text)
    return re.sub(r'\]\((?!https?:)([^)#]+)/\)', r'](\1/index)', text)


def lay_out_guides(site):
    front_page = read('README.md') + read('docs/site/contents.md')
    site.write('index.md', with_links_into_the_site(front_page))
    guides = {*Path().glob('*.md'), *Path('docs').glob('*.md')}
    for guide in guides - {Path('README.md'), Path('docs/reference.md')}:
        site.write(guide, with_links_into_the_site(read(guide)))
    for picture in Path('docs').rglob('*.svg'):
        site.copy(picture, picture)


def is_text(path):
    return b'\0' not in path.read_bytes()


def lay_out_source(site, path):
    lexer = find_lexer_class_for_filename(path.name)
    language = lexer.aliases[0] if lexer else 'none'
    # A file at the path of the link would become a download.
    site.copy(path, 'tree' / path)
    site.write(f'{path}.rst', ':orphan:\n\n' + heading(str(path)) +
               f'.. literalinclude:: /tree/{path}\n   :language: {language}\n   :force:\n')


def lay_out_directory(site, directory):
    texts, binaries, directories = [], [], []
    for path in sorted(directory.iterdir()):
        if path.is_dir():
            lay_out_directory(site, path)
            directories.append(f'{path.name}/ <{path.name}/index>')
        elif is_text(path):
            lay_out_source(site, path)
            texts.append(f'{path.name} <{path.name}>')
        else:
            site.copy(path, 'tree' / path)
            binaries.append(f'- :download:`{path.name} </tree/{path}>`\n')
    site.write(directory / 'index.rst', ':orphan:\n\n' + heading(f'{directory}/') +
               toctree(directories + texts, '   :maxdepth: 1\n') + ''.join(binaries))


def tidy(xml):
    """Removes private members, and the absolute path in the anchor of docs/reference.md."""
    for path in xml.glob('*.xml'):
        tree = ElementTree.parse(path)
        for section in tree.iter('sectiondef'):
            for member in section.findall('memberdef[@prot="private"]'):
                section.remove(member)
        for anchor in tree.iter('anchor'):
            anchor.set('id', re.sub('_1md_.*', '_1text', anchor.get('id')))
        tree.write(path, encoding='utf-8')


def headers(xml):
    """What Doxygen says of each public header, by the header's name."""
    files = ElementTree.parse(xml / 'index.xml').iterfind('compound[@kind="file"]')
    found = [ElementTree.parse(xml / f'{file.get("refid")}.xml').find('compounddef')
             for file in files if not file.findtext('name').endswith('.md')]
    return {file.find('location').get('file'): file for file in found}


def header_part(name, *sections):
    return f'.. doxygenfile:: {name}\n   :sections: {" ".join(sections)}\n\n'


def header_page(name, header):
    page = f'.. _{header.get("id")}:\n\n' + heading(name)
    if header.find('innernamespace') is not None:
        return page + f'.. doxygenfile:: {name}\n'
    # The records stand before the functions, which Breathe would show first.
    return (page + header_part(name, 'briefdescription', 'detaileddescription', 'innerclass',
                               'public-attrib', 'user-defined') +
            header_part(name, 'enum', 'typedef', 'define', 'func'))


def lay_out_headers(site, xml):
    pages = headers(xml)
    for name, header in pages.items():
        site.write(f'include/{name}.rst', header_page(name, header))
    bodies = sorted(name for name in pages if name.startswith('mdm/body/'))
    others = sorted(name for name in pages if name not in bodies)
    site.write('docs/reference.rst', heading('API reference') +
               '.. doxygenpage:: index\n   :content-only:\n\n' +
               toctree([f'/include/{name}' for name in others] +
                       ['mdm/body/ </include/mdm/body/index>'], '   :hidden:\n'))
    site.write('include/mdm/body/index.rst', heading('mdm/body/') +
               toctree([f'/include/{name}' for name in bodies], '   :maxdepth: 1\n'))


def wire_format_sections():
    """The section of each category, from the table of the categories."""
    links = re.findall(r'\[([a-z_, ]+)\]\((#[a-z_-]+)\) \|', read('docs/wire-format.md'))
    return {name: f'wire-format.md{target}' for names, target in links
            for name in names.split(', ')}


def header_of(category):
    word = re.compile(rf'\bMDM_TYPE_{category.upper()}\b')
    [header] = [path for path in Path('include/mdm/body').iterdir() if word.search(read(path))]
    return header.relative_to('include')


def categories():
    """What `mdm-msg forms` prints: for each category its message types and its forms."""
    found = {}
    for line in read('tests/tools/golden/forms.txt').splitlines():
        if category := re.fullmatch(r'(\w+): message types? (.*)', line):
            forms = []
            found[category[1]] = category[2], forms
        elif form := re.fullmatch(r'  \w+\.(\w+) +(?:type )?([\d, to]+|any.* type)', line):
            forms.append(form.groups())
    return found


def row(*cells):
    return f'| {" | ".join(cells)} |\n'


def table(*heads):
    return row(*heads) + row(*['---'] * len(heads))


class CategoryIndex:
    """The page docs/categories.md."""

    def __init__(self, xml):
        types = ElementTree.parse(xml / 'types_8h.xml')
        self.meanings = {value.findtext('name'): value.find('briefdescription')
                         for value in types.iter('enumvalue')}
        index = ElementTree.parse(xml / 'index.xml')
        self.functions = {member.findtext('name')
                          for member in index.iterfind('.//member[@kind="function"]')}
        self.sections = wire_format_sections()

    def form(self, category, form, discriminators):
        enumerator = f'MDM_FORM_{category}_{form}'.upper()
        meaning = ''.join(self.meanings[enumerator].itertext()).strip()
        named = {f'mdm_{category}_set_{form}', f'mdm_{category}_{form}'} & self.functions
        assert named, f'no function fills or reads {category}.{form}'
        return row(f'{{c:enumerator}}`{form} <{enumerator}>`', discriminators, meaning,
                   ', '.join(f'{{c:func}}`{name}`' for name in sorted(named)))

    def page(self):
        overview, details = '', ''
        for category, (types, forms) in categories().items():
            header = header_of(category)
            places = (f'[{header}](../include/{header})',
                      f'[{category} in bytes]({self.sections[category]})')
            overview += row(f'[{category}](#{category})', types, *places)
            details += (f'\n## {category}\n\nMessage types {types}: {", ".join(places)}.\n\n' +
                        table('Form', '`type`', 'Payload', 'Functions') +
                        ''.join(self.form(category, *form) for form in forms))
        return ('# Policy categories\n\nThe message type selects the category, and the `type` of '
                'the body selects the form of the payload.\n\n' +
                table('Category', 'Message types', 'Header', 'Wire format') + overview + details)


def main():
    xml, site = Path(sys.argv[1]), Site(sys.argv[2])
    tidy(xml)
    lay_out_guides(site)
    lay_out_headers(site, xml)
    site.write('docs/categories.md', CategoryIndex(xml).page())
    for directory in DIRECTORIES:
        lay_out_directory(site, Path(directory))
    for file in FILES:
        lay_out_source(site, Path(file))


if __name__ == '__main__':
    main()
