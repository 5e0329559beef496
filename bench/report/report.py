#!/usr/bin/env -S python3 -X utf8
# SPDX-License-Identifier: Apache-2.0
"""Makes docs/performance.md of what measure.sh has measured.

usage: report.py collect RUN_DIR       print the measurements of a run as one JSON text
       report.py page MEASURED_JSON    print the page: page.md.in with its tables
       report.py points MEASURED_JSON OUT_DIR
                                       write the points of the pictures, for gnuplot
"""
import json
import math
import statistics
import sys
from collections import defaultdict
from pathlib import Path

TEMPLATE = Path(__file__).with_name("page.md.in")
PROCESSORS = ("armhf", "x86-64")
WORKS = ("encode", "decode", "open", "seal")
SERIES = {"text": "bytes", "names": "names", "accounts": "accounts"}

# Of each work, the variant by hand and the library's with a silent log.
BY_HAND = {"encode": "baseline", "decode": "baseline", "open": "guarded baseline"}
LIBRARY = {"encode": "silenced", "decode": "silenced", "open": "ipc_open", "seal": "ipc_seal"}
LOGGED = {"encode": "null sink", "decode": "null sink", "open": "null sink",
          "seal": "ipc_seal, null sink"}

# One file for each way of optimising.
COMPILED = {
    "what every byte of a message passes": "src/ipc/mdm_ipc.cpp",
    "the library's other sources without exceptions": "src/log/log.cpp",
    "by hand, trusting": "bench/baseline.cpp",
    "by hand, guarded": "bench/guarded_baseline.cpp",
}


# --- collect ---------------------------------------------------------------------------------


def rows_of(path):
    return [line.split("\t") for line in path.read_text().splitlines()]


def benchmark_runs(path):
    """The runs of Google Benchmark's output, in the order in which they were registered."""
    result = json.loads(path.read_text())
    runs = [run for run in result["benchmarks"] if run["run_type"] == "iteration"]
    if not runs:
        sys.exit(f"{path}: no benchmark has run")
    return result["context"], sorted(runs, key=lambda run: run["family_index"])


def times_of(path):
    """The processor time of each repetition in ns, by the name of the benchmark."""
    times = defaultdict(list)
    for run in benchmark_runs(path)[1]:
        times[run["name"].split("/repeats:")[0]].append(float(f"{run['cpu_time']:.4g}"))
    return {name: sorted(values) for name, values in times.items()}


def instructions_of(path):
    return {run["name"]: run["instructions"] for run in benchmark_runs(path)[1]}


def flags_of(path):
    """What changes the code, from the commands that have compiled it."""
    commands = {entry["file"]: entry["command"] for entry in json.loads(path.read_text())}
    return [[what, effective_flags(next(command for file, command in commands.items()
                                        if file.endswith(f"/{source}")))]
            for what, source in COMPILED.items()]


def effective_flags(command):
    words = [word for word in command.split() if word.startswith(("-O", "-f", "-m", "-std", "-D"))]
    levels = [word for word in words if word.startswith("-O")]
    return " ".join(levels[-1:] + [word for word in words if word not in levels])


def loads_of(path):
    """What each library costs: the times in microseconds and the memory in KiB of all loads."""
    loads = {}
    for name, time, memory in rows_of(path):
        times, memories = loads.setdefault(Path(name).name, [[], []])
        times.append(float(time))
        memories.append(int(memory))
    return {name: [sorted(times), sorted(memories)] for name, (times, memories) in loads.items()}


def numbers_of(row):
    return [int(word) if word.isdigit() else word for word in row]


def collect(run_dir):
    context = benchmark_runs(run_dir / "time.json")[0]
    return {
        "machine": rows_of(run_dir / "machine.tsv"),
        "flags": flags_of(run_dir / "commands.json"),
        "goals": {name: context[name] for name in ("open goal", "seal goal")},
        "time": times_of(run_dir / "time.json"),
        "instructions": instructions_of(run_dir / "instructions.json"),
        "growth": times_of(run_dir / "growth.json"),
        "growth instructions": instructions_of(run_dir / "growth-instructions.json"),
        "unmapped": times_of(run_dir / "unmapped.json"),
        "memory": [numbers_of(row) for row in rows_of(run_dir / "memory.tsv")],
        "load": loads_of(run_dir / "load.tsv"),
        "size": {processor: [numbers_of(row) for row in rows_of(run_dir / f"size-{processor}.tsv")]
                 for processor in PROCESSORS},
    }


def text_of(measured):
    """JSON with a line for each measurement."""
    parts = []
    for name, entries in measured.items():
        is_list = isinstance(entries, list)
        lines = ([json.dumps(entry) for entry in entries] if is_list else
                 [f"{json.dumps(key)}: {json.dumps(value)}" for key, value in entries.items()])
        begin, end = "[]" if is_list else "{}"
        parts.append(f"{json.dumps(name)}: {begin}\n" + ",\n".join(lines) + f"\n{end}")
    return "{\n" + ",\n".join(parts) + "\n}\n"


# --- numbers ---------------------------------------------------------------------------------


def significant(number):
    """Three digits, or all of them before the point."""
    if number == 0:
        return "0"
    decimals = max(0, 2 - math.floor(math.log10(abs(number))))
    return f"{number:,.{decimals}f}"


def quartiles(values):
    if len(values) == 1:
        return values * 3
    return statistics.quantiles(values, n=4, method="inclusive")


def ratios(times, others):
    """Quartiles of the ratio of any repetition to any repetition of the other."""
    return quartiles([time / other for time in times for other in others])


def spread(three, decimals=2):
    low, middle, high = (f"{value:.{decimals}f}" for value in three)
    return f"{middle} ({low}–{high})"


def table(heading, rows, alignment="---:"):
    lines = [heading, ["---"] + [alignment] * (len(heading) - 1), *rows]
    return "\n".join("| " + " | ".join(line) + " |" for line in lines)


def size_name(size, unit):
    if unit != "bytes":
        return f"{size:,} {unit if size != 1 else unit[:-1]}"
    for factor, name in ((1 << 20, "MiB"), (1 << 10, "KiB")):
        if size >= factor:
            return f"{size // factor} {name}"
    return f"{size} bytes"


def power(points):
    """The slope of the line through the logarithms; points are pairs of a size and a cost."""
    logs = [(math.log(size), math.log(cost)) for size, cost in points]
    return statistics.linear_regression(*zip(*logs)).slope


# --- the measurements as tables --------------------------------------------------------------


class Measured:
    def __init__(self, path):
        entries = json.loads(path.read_text())
        self.machine = entries["machine"]
        self.flags = entries["flags"]
        self.goals = entries["goals"]
        self.time = entries["time"]
        self.instructions = entries["instructions"]
        self.growth = entries["growth"]
        self.growth_instructions = entries["growth instructions"]
        self.unmapped = entries["unmapped"]
        self.memory = entries["memory"]
        self.load = entries["load"]
        self.size = {name: dict(rows) for name, rows in entries["size"].items()}

    def messages(self, work):
        """The messages of a work, in their order."""
        names = [name.split("/")[0] for name in self.time if name.startswith(f"{work} ")]
        return [name.removeprefix(f"{work} ") for name in dict.fromkeys(names)]

    def ratio(self, work, message, variant, base):
        name = f"{work} {message}"
        return ratios(self.time[f"{name}/{variant}"], self.time[f"{name}/{base}"])

    def instruction_ratio(self, work, message, variant, base):
        name = f"{work} {message}"
        if f"{name}/{base}" not in self.instructions:
            return "not counted"
        return f"{self.instructions[f'{name}/{variant}'] / self.instructions[f'{name}/{base}']:.2f}"

    def growing(self, series):
        """The sizes of a series of messages."""
        messages = (name.split("/")[0].split() for name in self.growth)
        return sorted({int(size) for _, its_series, size in messages if its_series == series})

    def growth_time(self, work, series, size, variant):
        return statistics.median(self.growth[f"{work} {series} {size}/{variant}"])

    def memory_of(self, message, work, who):
        """The bytes and blocks that the result holds, and the most bytes while it was made."""
        for name, _, _, its_work, its_who, *numbers in self.memory:
            if (name, its_work, its_who) == (message, work, who):
                return numbers
        sys.exit(f"no memory was measured of: {work} {message}, {who}")

    # The tables: each has its place in the template.

    def table_machine(self):
        return table(["", "here"], self.machine, "---")

    def table_flags(self):
        return table(["sources", "flags"],
                     [[what, f"`{flags}`"] for what, flags in self.flags], "---")

    def limit_table(self, work, variant, base, heading):
        return table(
            ["message", heading, "ratio of time", "ratio of instructions"],
            [[message,
              significant(statistics.median(self.time[f"{work} {message}/{base}"])),
              spread(self.ratio(work, message, variant, base)),
              self.instruction_ratio(work, message, variant, base)]
             for message in self.messages(work)])

    def table_encode(self):
        return self.limit_table("encode", "silenced", "baseline", "by hand, ns")

    def table_decode(self):
        return self.limit_table("decode", "silenced", "baseline", "by hand, ns")

    def table_open(self):
        return self.limit_table("open", "ipc_open", "guarded baseline", "by hand, ns")

    def table_seal(self):
        return self.limit_table("seal", "ipc_seal", "ipc_serialize", "`ipc_serialize`, ns")

    def table_trusting(self):
        return table(
            ["message", "`ipc_open` to `ipc_deserialize`", "by hand: guarded to trusting"],
            [[message, spread(self.ratio("open", message, "ipc_open", "trusting")),
              spread(self.ratio("open", message, "guarded baseline", "trusting baseline"))]
             for message in self.messages("open")])

    def table_logger(self):
        return table(
            ["message", *WORKS],
            [[message, *(spread(self.ratio(work, message, LOGGED[work], LIBRARY[work]))
                         for work in WORKS)]
             for message in self.messages("encode")])

    def growth_columns(self):
        return [(work, variants[work], who) for work in WORKS
                for variants, who in ((LIBRARY, ""), (BY_HAND, "by hand")) if work in variants]

    def growth_heading(self):
        return [f"{work} {who}".strip() for work, _, who in self.growth_columns()]

    def growth_table(self, series):
        unit = SERIES[series]
        return table(
            [f"ns for each of the {unit}", *self.growth_heading()],
            [[size_name(size, unit),
              *(significant(self.growth_time(work, series, size, variant) / size)
                for work, variant, _ in self.growth_columns())]
             for size in self.growing(series)])

    def table_growth_text(self):
        return self.growth_table("text")

    def table_growth_names(self):
        return self.growth_table("names")

    def table_growth_accounts(self):
        return self.growth_table("accounts")

    def large(self, series):
        """The sizes where the fixed cost of a message hardly counts."""
        sizes = self.growing(series)
        return [size for size in sizes if 1000 * size >= sizes[-1]]

    def power_row(self, series, sizes, cost):
        name = f"{series}, {sizes[0]:,} to {size_name(sizes[-1], SERIES[series])}"
        if series == "text":
            name = f"text, {size_name(sizes[0], 'bytes')} to {size_name(sizes[-1], 'bytes')}"
        return [name, *(f"{power([(size, cost(work, size, variant)) for size in sizes]):.2f}"
                        for work, variant, _ in self.growth_columns())]

    def table_powers(self):
        return table(
            ["power of the size, time", *self.growth_heading()],
            [self.power_row(series, self.large(series),
                            lambda work, size, variant, series=series:
                            self.growth_time(work, series, size, variant))
             for series in SERIES])

    def table_instruction_powers(self):
        counted = self.growth_instructions
        rows = []
        for series in ("names", "accounts"):
            sizes = [size for size in self.growing(series)
                     if size >= 100 and f"seal {series} {size}/ipc_seal" in counted]
            rows.append(self.power_row(series, sizes, lambda work, size, variant, series=series:
                                       counted[f"{work} {series} {size}/{variant}"]))
        return table(["power of the size, instructions", *self.growth_heading()], rows)

    def table_unmapped(self):
        names = [f"open text {size}" for size in self.growing("text")[-2:]]
        return table(
            ["text", "usual", "without mappings"],
            [[size_name(int(name.split()[-1]), "bytes"),
              *(spread(ratios(times[f"{name}/ipc_open"], times[f"{name}/guarded baseline"]))
                for times in (self.growth, self.unmapped))]
             for name in names])

    def table_memory(self):
        rows = []
        for message, elements, length in dict.fromkeys((row[0], row[1], row[2])
                                                       for row in self.memory):
            series = message.split()[0]
            decoded = self.memory_of(message, "decode", "library")
            opened = self.memory_of(message, "open", "library")
            by_hand = self.memory_of(message, "open", "by hand")
            shares = [self.memory_of(message, work, "library")[2] for work in ("encode", "seal")]
            shares += [decoded[0], opened[0], by_hand[0]]
            name = size_name(elements, SERIES[series])
            if series == "text":
                name = f"text of {name}"
            rows.append([name, f"{length:,}", *(f"{share / length:.2f}" for share in shares),
                         f"{decoded[1]:,}", f"{opened[1]:,}"])
        return table(["message", "bytes on the wire", "encode", "seal", "decode", "open",
                      "open by hand", "blocks, decode", "blocks, open"], rows)

    def table_size(self):
        names = self.size[PROCESSORS[0]]
        return table(
            ["bytes or number", *PROCESSORS],
            [[("– " if name.startswith(" ") else "") + name.strip(),
              *(f"{self.size[processor][name]:,}" for processor in PROCESSORS)]
             for name in names])

    def table_load(self):
        return table(
            ["library", "time, µs", "private dirty memory, KiB"],
            [[f"`{name}`", spread(quartiles(times), 0), spread(quartiles(memories), 0)]
             for name, (times, memories) in self.load.items()])

    def value(self, name):
        """A number in the text of the template."""
        counts = {
            "repetitions": self.time.values(),
            "growth repetitions": self.growth.values(),
            "loads": (times for times, _ in self.load.values()),
        }
        return str(max(map(len, counts[name]))) if name in counts else self.goals[name]


def page(measured):
    """The template; "@table NAME@" stands for a table, "@value NAME@" for a number."""
    parts = TEMPLATE.read_text().split("@")
    for index in range(1, len(parts), 2):
        kind, name = parts[index].split(" ", 1)
        parts[index] = (measured.value(name) if kind == "value" else
                        getattr(measured, f"table_{name}")())
    return "".join(parts)


# --- the points of the pictures --------------------------------------------------------------


def points_of_ratios(measured):
    """A line a message: its name, and for each work three quartiles."""
    return [[message, *(value for work, base in BY_HAND.items()
                        for value in measured.ratio(work, message, LIBRARY[work], base))]
            for message in measured.messages("encode")]


def points_of_growth(measured, series):
    """A line a size: the size, and each column's median time in ns."""
    return [[size, *(measured.growth_time(work, series, size, variant)
                     for work, variant, _ in measured.growth_columns())]
            for size in measured.growing(series)]


def points_of_memory(measured, series):
    """A line a size: bytes on the wire, and the bytes of what is sealed, decoded and opened."""
    messages = dict.fromkeys((row[0], row[2]) for row in measured.memory
                             if row[0].split()[0] == series)
    return [[length, measured.memory_of(message, "seal", "library")[2],
             *(measured.memory_of(message, work, "library")[0] for work in ("decode", "open"))]
            for message, length in messages]


def points_of_size(measured):
    """A line a processor: its name and the text of each folder, below a line of their names."""
    folders = [name for name in measured.size[PROCESSORS[0]] if name.startswith(" ")]
    return [["processor", *(folder.strip() for folder in folders)],
            *([processor, *(measured.size[processor][folder] for folder in folders)]
              for processor in PROCESSORS)]


def write_points(measured, out_dir):
    tables = {"ratios": points_of_ratios(measured), "size": points_of_size(measured)}
    for series in SERIES:
        tables[f"growth-{series}"] = points_of_growth(measured, series)
        tables[f"memory-{series}"] = points_of_memory(measured, series)
    for name, rows in tables.items():
        lines = ("\t".join(map(str, row)) for row in rows)
        (out_dir / f"{name}.tsv").write_text("\n".join(lines) + "\n")


def main(verb, path, *out_dir):
    if verb == "collect":
        sys.stdout.write(text_of(collect(Path(path))))
    elif verb == "page":
        sys.stdout.write(page(Measured(Path(path))))
    elif verb == "points":
        write_points(Measured(Path(path)), Path(*out_dir))
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    try:
        main(*sys.argv[1:])
    except FileNotFoundError as error:
        sys.exit(f"report.py: {error.filename} is missing")
    except KeyError as error:
        sys.exit(f"report.py: the measurements lack {error}")
