#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the manual: mdoc(7) pages of the public headers and of two pages of docs/.

usage: scripts/manual.py OUTPUT_DIR

Doxygen reads the headers and the Markdown; this script writes its XML as pages. Each header has a
page, and each function a page of its own name that leads there. The same sources make the same
bytes everywhere: nothing of the machine gets into a page.
"""

import datetime
import pathlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

ROOT = pathlib.Path(__file__).resolve().parent.parent

DOXYFILE = """
@INCLUDE               = docs/Doxyfile
OUTPUT_DIRECTORY       = "{directory}"
INPUT                  = include README.md docs/reference.md docs/wire-format.md
USE_MDFILE_AS_MAINPAGE =
GENERATE_HTML          = NO
GENERATE_XML           = YES
XML_PROGRAMLISTING     = NO
JAVADOC_AUTOBRIEF      = NO
FILTER_PATTERNS        = "*.md={filter}"
WARNINGS               = NO
WARN_IF_UNDOCUMENTED   = NO
WARN_IF_DOC_ERROR      = NO
WARN_NO_PARAMDOC       = NO
"""

# Doxygen drops the label of a block, and takes a name behind :: for one of its own.
FILTER = (
    r"sed -e 's/^```hex \(.*\)/*\1*:\n\n```/'"
    r" -e 's|`mdm-common::\([^`]*\)`|<code>mdm-common\\::\1</code>|'"
)

# A header that exports functions has a page with the name of its first function, but for these. Any
# other page is named like its header.
PAGE_NAMES = {"guarded.h": "ipc_open", "log.h": "mdm_log"}

# A paragraph that begins with such a word and a colon becomes a section behind the return values.
SECTIONS = {
    "Memory": "MEMORY",
    "Errors and memory": "ERRORS AND MEMORY",
    "Thread safety": "THREAD SAFETY",
    "Cancellation": "CANCELLATION",
    "Signals": "SIGNALS",
    "Fork": "FORK",
    "The log": "LOG",
}

# What README says to those who have the library installed.
OVERVIEW_SECTIONS = ("A message there and back",)

GUIDES = "/usr/share/doc/libmdm-common-doc/html/"

LINE_WIDTH = 72  # of a table, where a terminal has 80 columns
COLUMN_GAP = 3


# Text as roff reads it.


def escape(text):
    """Plain text: nothing in it is markup."""
    text = text.replace("\\", "\\e")
    text = re.sub(r"\bQ-[A-Z_]+-\d+", lambda name: name[0].replace("-", "\\-"), text)
    return "".join(c if c.isascii() else f"\\[u{ord(c):04X}]" for c in text)


def literal(text):
    """Text with the exact characters of a program."""
    text = escape(text)
    for character, name in (("'", "aq"), ("`", "ga"), ("^", "ha"), ("~", "ti")):
        text = text.replace(character, f"\\({name}")
    return text.replace("-", "\\-")


def text_line(line):
    """A line that roff must not take for a request."""
    return "\\&" + line if line.startswith((".", "'")) else line


def argument(text):
    """One argument of a macro."""
    text = text.replace('"', "\\(dq")
    if re.search(r".[).,:;?!]$", text):
        text += "\\&"
    if re.fullmatch(r"[A-Z%][A-Za-z0-9]{1,2}|[][().,:;?!|]", text):
        return "\\&" + text
    return f'"{text}"' if " " in text or not text else text


# Runs: a piece of text and its macro, or None. Words: the runs between two blanks.


def split_words(runs):
    words, word = [], []
    for text, macro in runs:
        if macro:
            word.append((text, macro))
            continue
        for piece in re.findall(r"\s+|\S+", text):
            if not piece.isspace():
                word.append((piece, None))
            elif word:
                words.append(word)
                word = []
    return words + [word] if word else words


def macro_line(word):
    """A word of which a part has a macro. Marks behind it are arguments of their own."""
    parts = []
    for index, (text, macro) in enumerate(word):
        if macro:
            # No name of one word is parted at the end of a line.
            is_word = macro in ("Dv", "Li", "Pa", "Va", "Vt") and " " not in text
            parts.append(macro + (" \\%" if is_word else " ") + text)
        elif index + 1 == len(word) and re.fullmatch(r"[).,:;?!]+", text):
            parts[-1] += " " + " ".join(text)
        else:
            parts.append("No " + argument(escape(text)))
    return "." + " Ns ".join(parts)


def filled(runs):
    """Lines of text and macros. A sentence begins on a line of its own."""
    lines, line = [], ""
    for word in split_words(runs):
        if any(macro for _, macro in word):
            lines += [line] if line else []
            lines.append(macro_line(word))
            line = ""
            continue
        text = escape("".join(text for text, _ in word))
        if "\\-" in text or "/" in text:
            text = "\\%" + text  # an id or a path stays on a line
        if line and len(line) + 1 + len(text) > 78:
            lines.append(line)
            line = ""
        line = f"{line} {text}" if line else text_line(text)
        if re.search(r"[.?!][\")]*$", text):
            lines.append(line)
            line = ""
    return lines + [line] if line else lines


FONTS = {"Fn": "B", "Xr": "B", "Dv": "R", "Li": "R"}  # in a table; the others are italic


def cell_text(runs):
    """The text of a table's cell, where no macro may stand."""
    result = ""
    for text, macro in runs:
        if not macro:
            result += escape(text)
            continue
        text = re.sub(r'^"(.*)"$', r"\1", text)
        suffix = ""
        if macro == "Xr":
            text, section = text.split(" ")
            suffix = f"({section})"
        if macro == "Fn":
            suffix = "()"
        font = FONTS.get(macro, "I")
        result += f"{text}{suffix}" if font == "R" else f"\\%\\f{font}{text}\\fP{suffix}"
    return " ".join(result.split())


def shown(cell):
    """A cell as a terminal shows it."""
    text = re.sub(r"\\f.|\\[&%]", "", cell).replace("\\-", "-")
    return re.sub(r"\\\(..|\\\[u\w+\]|\\e", "x", text)


def column_widths(rows):
    """The widths of columns that fit on a line, if their longest words do."""
    columns = [[shown(cell) for cell in column] for column in zip(*rows)]
    widths = [max(map(len, column)) for column in columns]
    words = [[word for cell in column for word in cell.split()] for column in columns]
    least = [max(map(len, column), default=1) for column in words]
    room = LINE_WIDTH - COLUMN_GAP * (len(widths) - 1)
    while sum(widths) > room:
        index = max(range(len(widths)), key=lambda i: (widths[i] > least[i], widths[i]))
        if widths[index] <= least[index]:
            break
        widths[index] -= 1
    return widths


def table(rows):
    """Lines for tbl(1). The first row is the head."""
    widths = column_widths(rows)
    head = " ".join(f"lbw({width}n)" for width in widths)
    lines = [".TS", "nokeep;", head, head.replace("b", "") + "."]
    for index, row in enumerate(rows):
        cells = []
        for cell, width in zip(row, widths):
            is_short = len(shown(cell)) <= width
            cells.append(cell if is_short else "T{\n" + text_line(cell) + "\nT}")
        lines += "\t".join(cells).split("\n")
        if index == 0:
            lines.append("_")
    return lines + [".TE"]


def code_text(element):
    """The text of a program: Doxygen writes blanks as elements."""
    lines = []
    for line in element.findall("codeline"):
        for blank in line.iter("sp"):
            blank.text = " "
        lines.append("".join(line.itertext()))
    return "\n".join(lines) or "".join(element.itertext())


def display(code):
    lines = [text_line(literal(line)) for line in code.strip("\n").split("\n")]
    return [".Bd -literal -offset 2n", *lines, ".Ed"]


# What Doxygen found.


class Sources:
    """The declarations by their ids, and the page of each."""

    def __init__(self, directory):
        self.compounds = {}
        for path in sorted(directory.glob("*.xml")):
            for compound in ElementTree.parse(path).iter("compounddef"):
                self.compounds[compound.get("id")] = compound
        headers = self.of_kind("file", ".h") + self.of_kind("file", ".hpp")
        self.headers = sorted(headers, key=file_of)
        self.members = {}
        for compound in self.compounds.values():
            for member in compound.iter("memberdef"):
                self.members.setdefault(member.get("id"), member)
                for value in member.iter("enumvalue"):
                    self.members[value.get("id")] = value
        self.pages = {file_of(header): page_name(header) for header in self.headers}
        self.functions = {
            member.findtext("name"): self.pages[file_of(member)]
            for member in self.members.values()
            if member.get("kind") == "function"
            and file_of(member).endswith(".h")
            and is_documented(member)
        }

    def of_kind(self, kind, suffix):
        found = [c for c in self.compounds.values() if c.get("kind") == kind]
        return [c for c in found if file_of(c).endswith(suffix)]

    def markdown(self, name):
        return next(page for page in self.of_kind("page", name))

    def target(self, reference):
        """The declaration that a reference means."""
        return self.members.get(reference.get("refid"), self.compounds.get(reference.get("refid")))

    def page_of(self, reference):
        identifier = reference.get("refid")
        for compound in self.compounds.values():
            if identifier == compound.get("id") or identifier.startswith(compound.get("id") + "_1"):
                return self.pages.get(file_of(compound))
        return None


def file_of(element):
    location = element.find("location")
    return "" if location is None else location.get("file")


def stem_of(header):
    name = pathlib.PurePosixPath(file_of(header)).name
    return name if name.endswith(".hpp") else name.removesuffix(".h")


def page_name(header):
    path = pathlib.PurePosixPath(file_of(header))
    functions = members_of(header, "function")
    is_exported = path.parent.name == "mdm" and path.suffix == ".h"
    if path.name in PAGE_NAMES:
        return PAGE_NAMES[path.name]
    if is_exported and functions and path.name not in ("types.h", "message.h"):
        return functions[0].findtext("name")
    return "mdm_" + stem_of(header)


def members_of(compound, kind):
    """The members in the order of the source. What has no text is no part of the interface."""
    found = [m for m in compound.findall("sectiondef/memberdef") if m.get("kind") == kind]
    if kind in ("function", "define"):
        found = [m for m in found if is_documented(m)]
    return sorted(found, key=lambda m: int(m.find("location").get("line")))


def flat(element):
    return " ".join("".join(element.itertext()).split()) if element is not None else ""


def type_of(element):
    """A type in plain C."""
    text = flat(element.find("type"))
    text = re.sub(r"< ([^<>]*) >", r"<\1>", text)
    return re.sub(r"\s*([*&]+)$", r" \1", text)


def declared(type_text, name):
    return type_text + ("" if type_text.endswith(("*", "&")) else " ") + name


def arguments_of(function):
    arguments = []
    for parameter in function.findall("param"):
        name = parameter.findtext("declname") or ""
        kind = type_of(parameter)
        arguments.append(declared(kind, name) if name else kind)
    return arguments or (["void"] if file_of(function).endswith(".h") else [])


def documentation(element):
    """The paragraphs of a comment."""
    for part in ("briefdescription", "detaileddescription"):
        description = element.find(part)
        yield from description if description is not None else ()


def is_documented(element):
    return next(documentation(element), None) is not None


def is_described(function):
    """Whether its comment has more than parameters and what it returns."""
    return any(
        (paragraph.text or "").strip()
        or any(child.tag not in ("parameterlist", "simplesect") for child in paragraph)
        for paragraph in documentation(function)
    )


def find_documented(element, tag, kind):
    return [
        found
        for part in ("briefdescription", "detaileddescription")
        for found in element.findall(f"{part}//{tag}[@kind='{kind}']")
    ]


# Pages.


class Page:
    """The lines of one page."""

    def __init__(self, sources, name, section, source):
        self.sources = sources
        self.name = name
        self.source = source
        self.section = section
        self.lines = []
        self.see_also = set()

    def add(self, *lines):
        self.lines += lines

    def heading(self, title, *, level="Sh"):
        self.add(f".{level} {title}")

    def begin_paragraph(self):
        if not self.lines[-1].startswith((".Sh", ".Ss", ".It", ".Pp")):
            self.add(".Pp")

    # Text.

    def function_run(self, name):
        page = self.sources.functions[name]
        if page == self.name:
            return name, "Fn"
        self.see_also.add((3, page))
        return f"{name} 3", "Xr"

    def reference_run(self, reference):
        target, text = self.sources.target(reference), flat(reference)
        page = self.sources.page_of(reference)
        if page and page != self.name:
            self.see_also.add((3, page))
        kind = None if target is None else target.get("kind")
        if kind == "function" and text.removesuffix("()") in self.sources.functions:
            return self.function_run(text.removesuffix("()"))
        macros = {"function": "Li", "file": "Pa", "define": "Dv", None: "Dv", "variable": "Va"}
        return argument(escape(text)), macros.get(kind, "Vt")

    def code_run(self, text):
        name = text.removesuffix("()")
        if name in self.sources.functions:
            return self.function_run(name)
        if re.fullmatch(r"[A-Z][A-Z0-9_]+\*?", text):
            return argument(text), "Dv"
        is_path = "/" in text and not " " in text
        is_name = re.fullmatch(r"\*?[A-Za-z_][\w.]*", text)
        return argument(literal(text)), "Pa" if is_path else "Va" if is_name else "Li"

    def plain_runs(self, text):
        """References are made of pages such as printf(3) and of functions such as g_free()."""
        for index, piece in enumerate(re.split(r"\b([a-z_]\w*\([1-8]?\))", text or "")):
            name, _, rest = piece.partition("(")
            if index % 2 == 0:
                yield piece, None
            elif rest == ")":
                yield self.function_run(name) if name in self.sources.functions else (name, "Fn")
            else:
                yield f"{name} {rest[0]}", "Xr"

    def runs(self, element):
        """The text of an element without blocks in it."""
        yield from self.plain_runs(element.text)
        for child in element:
            yield from self.child_runs(child)
            yield from self.plain_runs(child.tail)

    def child_runs(self, child):
        if child.tag == "ref":
            yield self.reference_run(child)
        elif child.tag == "computeroutput" and len(child) == 1 and flat(child) == flat(child[0]):
            yield from self.child_runs(child[0])
        elif child.tag == "computeroutput":
            yield self.code_run(flat(child))
        elif child.tag in ("emphasis", "bold"):
            yield argument(escape(flat(child))), "Em" if child.tag == "emphasis" else "Sy"
        else:
            yield from self.runs(child)

    # Blocks.

    def text(self, runs):
        lines = filled(runs)
        if lines:
            self.begin_paragraph()
            self.add(*lines)

    def paragraphs(self, elements):
        for element in elements:
            self.paragraph(element)

    def paragraph(self, element):
        """A paragraph of Doxygen's may have blocks among its text."""
        blocks = {
            "itemizedlist": self.bullets,
            "orderedlist": self.bullets,
            "table": self.table,
            "programlisting": self.code,
            "verbatim": self.code,
            "parameterlist": None,
            "simplesect": None,
        }
        runs = list(self.plain_runs(element.text))
        for child in element:
            if child.tag in blocks:
                self.text(runs)
                runs = []
                if blocks[child.tag]:
                    blocks[child.tag](child)
            else:
                runs += self.child_runs(child)
            runs += self.plain_runs(child.tail)
        self.text(runs)

    def bullets(self, element):
        self.add(".Bl -bullet -width 2n")
        for item in element.findall("listitem"):
            self.add(".It")
            self.paragraphs(item)
        self.add(".El")

    def table(self, element):
        rows = []
        for row in element.findall("row"):
            paragraphs = [entry.find("para") for entry in row.findall("entry")]
            rows.append([cell_text(self.cell(p)) if p is not None else "" for p in paragraphs])
        self.begin_paragraph()
        self.add(*table(rows))

    def cell(self, paragraph):
        return self.runs(paragraph)

    def code(self, element):
        text = code_text(element)
        for name in re.findall(r"\b(\w+)\(", text):
            if name in self.sources.functions:
                self.function_run(name)
        self.add(*display(text))

    def tagged(self, items):
        """A list of tags, each with a function that writes its text."""
        self.add(".Bl -tag -width Ds")
        for tag, write in items:
            self.add(f".It {tag}")
            write()
        self.add(".El")

    # The parts of a page.

    def written(self):
        lines = ["'\\\" t", '.\\" SPDX-License-Identifier: Apache-2.0']
        lines.append(f'.\\" Made of {self.source}.')
        lines.append(f".Dd {release_date()}")
        lines.append(".ds doc-volume-operating-system libmdm-common")  # or groff says BSD
        lines.append(f".Dt {self.name.upper()} {self.section}")
        lines.append(f".Os libmdm-common {version()}")
        return "\n".join([*lines, *self.lines]) + "\n"

    def name_section(self, names, description):
        self.heading("NAME")
        for name in names[:-1]:
            self.add(f".Nm {name} ,")
        self.add(f".Nm {names[-1]}", f".Nd {escape(description)}")

    def see_also_section(self):
        others = self.see_also - {(self.section, self.name)}
        pages = sorted(others, key=lambda page: (page[0], page[1].lower()))
        self.heading("SEE ALSO")
        for index, (section, name) in enumerate(pages):
            self.add(f".Xr {name} {section}" + (" ," if index + 1 < len(pages) else ""))


class HeaderPage(Page):
    """The page of a header."""

    def __init__(self, sources, header):
        super().__init__(sources, page_name(header), 3, "include/" + file_of(header))
        self.header = header
        self.is_cpp = file_of(header).endswith(".hpp")
        functions = [] if self.is_cpp else members_of(header, "function")
        self.functions = sorted(functions, key=lambda f: f.findtext("name") != self.name)
        self.see_also = {(7, "mdm-common")}
        for include in header.findall("includes"):
            if include.text in sources.pages and include.text != "mdm/api.h":
                self.see_also.add((3, sources.pages[include.text]))

    def make(self):
        paragraphs = list(documentation(self.header))
        self.name_section(self.names(), summary(paragraphs[0]))
        self.heading("LIBRARY")
        self.add("libmdm-common", ".Pq Fl lmdm-common , No pkg-config name Sy mdm-common")
        self.synopsis()
        self.heading("DESCRIPTION")
        example, sections, paragraphs = sorted_out(paragraphs)
        self.paragraphs(paragraphs)
        for function in self.functions:
            self.function(function)
        self.return_values()
        if self.is_cpp:
            self.cpp_declarations()
        self.types()
        self.constants()
        for title, members in sections:
            self.heading(title)
            self.paragraphs(members)
        if example is not None:
            self.heading("EXAMPLES")
            self.code(example)
        self.see_also_section()
        return self.written()

    def names(self):
        names = [function.findtext("name") for function in self.functions]
        return [self.name] + [name for name in dict.fromkeys(names) if name != self.name]

    def synopsis(self):
        self.heading("SYNOPSIS")
        self.add(f".In {file_of(self.header)}")
        for function in self.functions:
            self.add(f".Ft {argument(type_of(function))}", f".Fo {function.findtext('name')}")
            self.add(*(f".Fa {argument(a)}" for a in arguments_of(function)), ".Fc")

    def function(self, function):
        """What a function does; without a description, what it returns."""
        self.heading(function.findtext("name") + "()", level="Ss")
        self.paragraphs(documentation(function))
        if not is_described(function):
            self.returned(function)
        self.parameters(function)


    def returned(self, function):
        for returned in find_documented(function, "simplesect", "return"):
            self.text([("Returns ", None), *lowered(self.runs(returned.find("para")))])

    def parameters(self, function):
        items = []
        for parameter in function.iter("parameteritem"):
            names = [flat(name) for name in parameter.iter("parametername")]
            paragraphs = parameter.find("parameterdescription")
            items.append(("Fa " + " , ".join(names), lambda p=paragraphs: self.paragraphs(p)))
        if items:
            self.tagged(items)

    def return_values(self):
        """Functions that return the same stand together. Some are described by it already."""
        groups = {}
        for function in filter(is_described, self.functions):
            for returned in find_documented(function, "simplesect", "return"):
                group = groups.setdefault(flat(returned), (returned, []))
                group[1].append(function.findtext("name"))
        if not groups:
            return
        self.heading("RETURN VALUES")
        self.tagged(
            ("Fn " + " , Fn ".join(names), lambda r=returned: self.paragraphs(r))
            for returned, names in groups.values()
        )

    # Types and constants.

    def types(self):
        records = [
            self.sources.compounds[inner.get("refid")]
            for inner in self.header.findall("innerclass")
            if not self.is_cpp
        ]
        enums = [e for e in members_of(self.header, "enum") if not is_anonymous(e)]
        names = {record.findtext("compoundname") for record in records}
        names |= {enum.findtext("name") for enum in enums}
        written = [(line_of(record), self.record, record) for record in records]
        if not self.is_cpp:
            for typedef in members_of(self.header, "typedef"):
                if not names & set(flat(typedef.find("type")).split()):
                    written.append((line_of(typedef), self.typedef, typedef))
            written += [(line_of(enum), self.enum, enum) for enum in enums]
        if written:
            self.heading("TYPES")
        for _, write, element in sorted(written, key=lambda entry: entry[0]):
            write(element)

    def record(self, record):
        name = record.findtext("compoundname")
        typedef = next(
            (
                t.findtext("name")
                for t in members_of(self.header, "typedef")
                if name in flat(t.find("type")).split()
            ),
            name,
        )
        fields = members_of(record, "variable")
        fields.sort(key=lambda f: [int(f.find("location").get(k)) for k in ("line", "column")])
        self.heading(typedef, level="Ss")
        lines = [f"    {declared(type_of(f), f.findtext('name'))};" for f in fields]
        head = f"typedef {record.get('kind')} {name} {{"
        self.add(*display("\n".join([head, *lines, f"}} {typedef};"])))
        self.paragraphs(documentation(record))
        self.documented([(f"Va {f.findtext('name')}", f) for f in fields])

    def documented(self, members):
        """A list of members with their texts. Neighbours may share a text."""
        groups = []
        for tag, member in members:
            text = "".join(flat(p) for p in documentation(member))
            if groups and groups[-1][0] == text:
                groups[-1][1].append(tag)
            else:
                groups.append((text, [tag], member))
        self.tagged(
            (" , ".join(tags), lambda m=member: self.paragraphs(documentation(m)))
            for _, tags, member in groups
        )

    def typedef(self, typedef):
        self.heading(typedef.findtext("name"), level="Ss")
        definition = flat(typedef.find("definition"))
        self.add(*display(re.sub(r" ?\( ?\* ?(\w+)\) ?", r" (*\1)", definition) + ";"))
        self.paragraphs(documentation(typedef))
        self.parameters(typedef)
        self.returned(typedef)

    def enum(self, enum):
        if not is_anonymous(enum):
            self.heading(self.enum_name(enum), level="Ss")
        self.paragraphs(documentation(enum))
        values = enum.findall("enumvalue")
        texts = {"".join(flat(p) for p in documentation(value)) for value in values}
        if len(texts) > 1 or len(values) == 1:
            self.documented([("Dv " + name_and_value(v).replace(" ", "\\~"), v) for v in values])
            return
        self.paragraphs(documentation(values[0]))
        self.add(*display("\n".join(name_and_value(value) for value in values)))

    def enum_name(self, enum):
        names = [
            t.findtext("name")
            for t in members_of(self.header, "typedef")
            if enum.findtext("name") in flat(t.find("type")).split()
        ]
        return names[0] if names else enum.findtext("name")

    def constants(self):
        enums = [e for e in members_of(self.header, "enum") if is_anonymous(e)]
        defines = members_of(self.header, "define")
        if enums or defines:
            self.heading("CONSTANTS" if enums or not self.functions else "MACROS")
        for enum in enums:
            self.enum(enum)
        if defines:
            self.tagged(
                (define_tag(d), lambda d=d: self.paragraphs(documentation(d))) for d in defines
            )

    # C++.

    def cpp_declarations(self):
        scopes = [
            self.sources.compounds[inner.get("refid")]
            for inner in self.header.findall("innernamespace")
        ]
        found = {m.get("id"): m for scope in scopes for m in scope.iter("memberdef")}
        members = [m for m in found.values() if file_of(m) == file_of(self.header)]
        self.heading("FUNCTIONS")
        for member in sorted(members, key=line_of):
            if member.get("kind") == "function":
                self.heading(f"mdm::{member.findtext('name')}()", level="Ss")
                self.cpp_member(member)
        self.heading("CLASSES")
        for inner in self.header.findall("innerclass"):
            if inner.get("prot") == "public":
                self.cpp_class(self.sources.compounds[inner.get("refid")])
        constants = [m for m in members if m.get("kind") == "variable" and is_documented(m)]
        if constants:
            self.heading("CONSTANTS")
            tags = [f"Li {argument(escape(flat(c.find('definition'))))}" for c in constants]
            self.documented(list(zip(tags, constants)))

    def cpp_member(self, member):
        self.add(*display(prototype(member)))
        self.paragraphs(documentation(member))
        self.parameters(member)
        self.returned(member)

    def cpp_class(self, record):
        """A class with its public members: functions one by one, data as one list."""
        self.heading(plain_name(record.findtext("compoundname")), level="Ss")
        self.paragraphs(documentation(record))
        members = [m for m in record.iter("memberdef") if m.get("prot") == "public"]
        members = sorted((m for m in members if is_documented(m)), key=line_of)
        data = [m for m in members if m.get("kind") == "variable"]
        for member in members:
            if member.get("kind") == "function":
                self.cpp_member(member)
        if data:
            self.documented([(f"Li {argument(escape(prototype(m)))}", m) for m in data])


def plain_name(name):
    """A name as programs write it: the inner namespace is an inline one."""
    return name.replace("mdm::guarded::", "mdm::")


def prototype(member):
    """A declaration in C++, with a line for each parameter if it is long."""
    parameters = member.findall("templateparamlist/param")
    types = [flat(parameter.find("type")) for parameter in parameters]
    template = ", ".join(text for text in types if " " in text)
    begin = f"template <{template}>\n" if template else ""
    begin += declared(type_of(member), member.findtext("name")).strip()
    if member.get("kind") != "function":
        return begin + ";"
    end = member.findtext("argsstring").rpartition(")")[2]
    end = re.sub(r"^\s*(&*|=)\s*(\w+)$", lambda m: f" {m[1]} {m[2]}".replace("  ", " "), end)
    line = f"{begin}({', '.join(arguments_of(member))}){end};"
    if len(line.split("\n")[-1]) > LINE_WIDTH:
        line = f"{begin}(\n    " + ",\n    ".join(arguments_of(member)) + f"){end};"
    return plain_name(line)


def line_of(element):
    return int(element.find("location").get("line"))


def name_and_value(value):
    initializer = value.findtext("initializer") or ""
    has_number = re.fullmatch(r"= *-?\w+", initializer) and re.search(r"\d", initializer)
    return value.findtext("name") + (" " + initializer if has_number else "")


def is_anonymous(enum):
    return enum.findtext("name").startswith("@")


def define_tag(define):
    names = [p.findtext("defname") for p in define.findall("param")]
    return "Dv " + define.findtext("name") + (f" Ns Pq {', '.join(names)}" if names else "")


def lowered(runs):
    """A text that goes on with a sentence."""
    for index, (text, macro) in enumerate(runs):
        if index == 0 and not macro:
            text = text[0].lower() + text[1:]
        yield text, macro


def summary(paragraph):
    """The first sentence, as the line of a page's name."""
    sentence = re.split(r"(?<=[^.])\.(?:\s|$)", flat(paragraph), maxsplit=1)[0]
    return sentence if sentence[1:2].isupper() else sentence[0].lower() + sentence[1:]


def sorted_out(paragraphs):
    """The example, the sections and what is left of a header's description."""
    example, sections, rest = None, [], []
    for paragraph in paragraphs:
        found = paragraph.find("programlisting")
        if found is not None:
            example = found
            continue
        label, colon, text = (paragraph.text or "").partition(":")
        if colon and label in SECTIONS:
            text = text.lstrip()
            paragraph.text = text[:1].upper() + text[1:]
            sections.append((SECTIONS[label], [paragraph]))
        else:
            rest.append(paragraph)
    return example, sections, rest


# The pages of section 7.


class DocumentPage(Page):
    """A page of docs/."""

    def sections(self, element, level="Sh"):
        for child in element:
            if child.tag == "para":
                self.paragraph(child)
            elif child.tag.startswith("sect"):
                title = flat(child.find("title"))
                self.heading(escape(title.upper() if level == "Sh" else title), level=level)
                self.sections(child, "Ss")


def wire_page(sources):
    page = DocumentPage(sources, "mdm-wire", 7, "docs/wire-format.md")
    document = sources.markdown("wire-format.md")
    page.name_section([page.name], summary(document.find("title")))
    page.heading("DESCRIPTION")
    page.sections(document.find("detaileddescription"))
    page.see_also.add((7, "mdm-common"))
    page.see_also_section()
    return page.written()


class OverviewPage(DocumentPage):
    """README's first sections, and a table of the headers."""

    def cell(self, paragraph):
        """A header has its page behind it."""
        for text, macro in self.runs(paragraph):
            yield text, macro
            if text in self.sources.pages:
                yield " (", None
                yield f"{self.sources.pages[text]} 3", "Xr"
                yield ")", None

    def files_section(self):
        self.heading("FILES")
        text = "The guides as web pages, in Debian's package libmdm-common-doc. Pages name a guide"
        text += " by its place in the sources, like "
        guide = [(text, None), ("docs/quirks.md", "Pa"), (".", None)]
        self.tagged([(f"Pa {GUIDES}", lambda: self.text(guide))])


def overview_page(sources):
    page = OverviewPage(sources, "mdm-common", 7, "README.md and docs/reference.md")
    page.name_section([page.name], "the library of a mobile-device-management service")
    readme = sources.markdown("README.md").find("detaileddescription")
    page.heading("DESCRIPTION")
    page.paragraphs(readme.findall("para"))
    chosen = [s for s in readme.iter() if flat(s.find("title")) in OVERVIEW_SECTIONS]
    page.sections(chosen)
    page.heading("HEADERS")
    page.sections(sources.markdown("reference.md").find("detaileddescription"))
    page.files_section()
    page.see_also = {(3, name) for name in sources.pages.values()}
    page.see_also |= {(1, "mdm-msg"), (7, "mdm-wire")}
    page.see_also_section()
    return page.written()


# The whole manual.


def version():
    return re.search(r"project\(\S+ VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text())[1]


def release_date():
    """The day of the release; before it, the date of the program's page."""
    changes = (ROOT / "CHANGELOG.md").read_text(encoding="utf-8")
    day = re.search(rf"^## {re.escape(version())} - (\S+)", changes, re.MULTILINE)[1]
    if day == "unreleased":
        page = (ROOT / "tools/mdm-msg/mdm-msg.1").read_text(encoding="utf-8")
        return re.search(r"^\.Dd (.*)$", page, re.MULTILINE)[1]
    date = datetime.date.fromisoformat(day)
    return f"{date:%B} {date.day}, {date.year}"


def read_sources():
    with tempfile.TemporaryDirectory() as directory:
        settings = DOXYFILE.format(directory=directory, filter=FILTER)
        subprocess.run(["doxygen", "-"], input=settings, text=True, cwd=ROOT, check=True)
        return Sources(pathlib.Path(directory) / "xml")


def write(directory, name, section, text):
    path = directory / f"man{section}" / f"{name}.{section}"
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text, encoding="utf-8")


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: scripts/manual.py OUTPUT_DIR")
    directory = pathlib.Path(sys.argv[1]).resolve()
    sources = read_sources()
    for header in sources.headers:
        page = HeaderPage(sources, header)
        write(directory, page.name, 3, page.make())
    for name, page in sources.functions.items():
        if name != page:
            write(directory, name, 3, f".so man3/{page}.3\n")
    write(directory, "mdm-wire", 7, wire_page(sources))
    write(directory, "mdm-common", 7, overview_page(sources))


if __name__ == "__main__":
    main()
