# SPDX-License-Identifier: MIT
# compare.py PROGRAMS [--quick] [--verbose] [--only GROUP]: makes the data, runs the contenders in turn, each in a
# fresh process, and prints the medians of their CPU times side by side, as a Markdown table.
import argparse
import collections
import mmap
import os
import random
import re
import shutil
import subprocess
import sys
import tempfile
import time

import data

Sizes = collections.namedtuple("Sizes", "lines sections csv_bytes token_bytes rounds warm_bytes rest_seconds")
FULL = Sizes(1000000, 20000, 10**8, 5 * 10**7, rounds=5, warm_bytes=500 << 20, rest_seconds=5)
QUICK = Sizes(100000, 2000, 10**7, 5 * 10**6, rounds=3, warm_bytes=50 << 20, rest_seconds=0.5)
SMALL_LINES = 100
LINES_PER_SECTION = 24  # in our form
PROBES = 1000

# How often the work is done: on so many objects alive at once, so many times in a row in one process, and by how many
# processes for one of the large data, as short runs scatter more. A figure is the mean of so many launches in a row.
Repetition = collections.namedtuple("Repetition", "copies repeats processes launches memory", defaults=[1, "as it is"])
ONCE = Repetition(1, 1, 1, memory="warmed")
AFTER_A_REST = Repetition(1, 1, 1, memory="rested")
DROPPED = Repetition(4, 100, 4)  # the memory of one serves the next
KEPT = Repetition(200, 1, 4)  # each needs memory that nothing has used yet
SMALL_CSV = Repetition(1, 200, 4)
FIRST = Repetition(1, 1, 1, launches=20)

# The contenders, each with its steps in one process; those after a bar are for another one.
OURS = "load lookup walk save save1 edit release|job"
PEER = "load lookup walk save edit release|job"
LIMIT = "load lookup walk save edit|job"
READER = "load lookup release"
KEEPER = "load lookup walk save release"
LARGE_FLAT = {"ours": OURS, "GKeyFile": PEER, "SimpleIni": PEER, "limit": LIMIT, "inih": READER,
              "libini_config": "load save edit release|job", "sed -i": "job"}
COLD_FLAT = {"ours": "job", "GKeyFile": "job", "limit": "job", "sed -i": "job"}
SECTIONS = {"ours": OURS, "GKeyFile": PEER, "SimpleIni": PEER, "limit": LIMIT, "inih": READER, "git config": "job"}
# The buffer of a save in one call, which no peer has, is not to be released with the rest.
SMALL_FLAT = {"ours": "load lookup walk save edit release|load save1|job", "GKeyFile": PEER, "SimpleIni": PEER,
              "limit": LIMIT, "inih": READER, "iniparser": PEER, "libini_config": PEER}
KEPT_FLAT = {"ours": KEEPER, "GKeyFile": KEEPER, "SimpleIni": KEEPER, "limit": "load lookup walk save",
             "inih": READER, "iniparser": KEEPER}
FIRST_USE = dict.fromkeys(SMALL_FLAT, "first")
CSV = {"ours": "read only", "fast-cpp-csv-parser": "read", "libcsv": "read", "limit": "read"}
LEXERS = {"ours": "read", "re2c": "read", "flex": "read", "limit": "read"}

# Contenders that are installed programs; they change the file in place.
TOOLS = {
    "sed -i": lambda file, section, key: ["sed", "-i", f"s/^{key}=.*/{key}=changed-value/", file],
    "git config": lambda file, section, key: ["git", "config", "-f", file, f"{section}.{key}", "changed-value"],
}

# What a row says of its step, in the order of the rows.
LABELS = {"load": ": load", "lookup": ": look up 1,000 keys", "walk": ": walk all", "save": ": save unchanged",
          "save1": ": save in one call", "edit": ": edit + save", "job": ": load + edit + save + release",
          "release": ": release", "first": ": a program that starts, loads, reads a value and ends",
          "read": "", "only": ", not asking the rows for them"}
INSTEAD = {"save1": "save", "only": "read"}  # what the others do where only the library knows a step

# CPU time, and the most memory that was resident by the end of the step.
Figure = collections.namedtuple("Figure", "seconds kib")


def digits(value):
    return f"{value:.{2 if value < 10 else 1 if value < 100 else 0}f}"


def duration(figure):
    if figure is None:
        return "-"
    factor, unit = (1e6, "µs") if figure.seconds < 1e-3 else (1e3, "ms") if figure.seconds < 10 else (1, "s")
    return f"{digits(figure.seconds * factor)} {unit}"


def ratio(ours, other):
    return digits(ours.seconds / other.seconds) if other else "-"


def memory(figure, lines):
    if figure is None:
        return "-"
    return digits(figure.kib / 1024) + (f" ({figure.kib * 1024 / lines:.0f} B/line)" if lines else "")


# `lines`: of the file, where the memory is told for each of them too.
Scenario = collections.namedtuple("Scenario", "group title program contenders data size repetition lines", defaults=[0])


def scenarios(sizes):
    flat = f"flat, {sizes.lines:,} lines"
    small = f"flat, {SMALL_LINES} lines"
    return [
        Scenario("flat", flat, "keyfile", LARGE_FLAT, "flat", sizes.lines, ONCE, lines=sizes.lines),
        Scenario("flat", flat + ", after a rest", "keyfile", COLD_FLAT, "flat", sizes.lines, AFTER_A_REST),
        Scenario("sections", f"{sizes.sections:,} sections", "keyfile", SECTIONS, "sections", sizes.sections, ONCE,
                 lines=sizes.sections * LINES_PER_SECTION),
        Scenario("small", small + ", dropped", "keyfile", SMALL_FLAT, "flat", SMALL_LINES, DROPPED),
        Scenario("small", small + ", kept", "keyfile", KEPT_FLAT, "flat", SMALL_LINES, KEPT),
        Scenario("small", small, "first", FIRST_USE, "flat", SMALL_LINES, FIRST),
        Scenario("csv", f"CSV, {sizes.csv_bytes // 10**6} MB, all fields", "csv", CSV, "csv", sizes.csv_bytes, ONCE),
        Scenario("csv", "CSV, 15 kB, all fields", "csv", CSV, "csv", 15000, SMALL_CSV),
        Scenario("lexer", f"lexer, {sizes.token_bytes // 10**6} MB, all tokens", "lexer", LEXERS, "tokens",
                 sizes.token_bytes, ONCE),
    ]


def warm_memory(size):
    """Fills memory and frees it again, in a process of its own. A virtual machine that gives free memory back to its host
    would otherwise count the host's work of finding it against whoever comes next."""
    child = os.fork()
    if child == 0:
        block = mmap.mmap(-1, size, flags=mmap.MAP_PRIVATE | mmap.MAP_ANONYMOUS)
        block.madvise(mmap.MADV_HUGEPAGE)
        for page in range(0, size, mmap.PAGESIZE):
            block[page] = 1
        os._exit(0)
    os.waitpid(child, 0)


class Comparison:
    """Of the contenders in one scenario, with its data in a folder."""

    def __init__(self, scenario, sizes, programs, folder):
        self.scenario, self.sizes, self.programs = scenario, sizes, programs
        self.file = f"{folder}/{scenario.data}"
        self.ini = self.file + ".ini" if scenario.data == "sections" else self.file  # for the peers
        self.probes = self.file + ".probes"
        self.target = f"{folder}/target"
        data.make(scenario.data, scenario.size, self.file)
        # What each step must find; and section and key of the entry to change.
        self.expected, self.change = self.survey_stream() if scenario.data in ("csv", "tokens") else self.survey_entries()

    def survey_stream(self):
        with open(self.file, "rb") as file:
            text = file.read()
        if self.scenario.data == "csv":
            fields = text.count(b",") + text.count(b"\n")
            return {"read": [fields, len(text) - fields], "only": [fields, 0]}, None
        tokens = sum(1 for _ in re.finditer(rb"[A-Za-z]+|[0-9]+|[^A-Za-z0-9]", text))
        return {"read": [tokens, len(text)]}, None

    def survey_entries(self):
        entries, section = [], ""
        with open(self.ini) as file:
            for line in file:
                if line.startswith("["):
                    section = line[1:-2]
                elif "=" in line and not line.startswith("#"):
                    entries.append((section, *line[:-1].split("=", 1)))
        change = entries[len(entries) // 2]
        choice = random.Random(1)
        sought = choice.choices(choice.sample(entries, min(PROBES, len(entries))), k=PROBES)
        with open(self.probes, "w") as file:
            file.writelines(f"{section} {key}\n" for section, key, _ in [change, *sought])
        walk = [len(entries), sum(len(key) for _, key, _ in entries), sum(ord(value[0]) for _, _, value in entries)]
        return {"walk": walk, "lookup": [sum(len(value) for _, _, value in sought)]}, change[:2]

    def run(self):
        """The figures of each contender by step. A contender that is not installed is left out."""
        figures = {step: collections.defaultdict(list) for step in LABELS}
        contenders = self.scenario.contenders
        for turn in range(1 + self.scenario.repetition.processes * self.sizes.rounds):  # the first only warms up
            for contender in contenders if turn % 2 else reversed(contenders):
                for steps in contenders[contender].split("|"):
                    for step, figure in self.run_process(contender, steps.split()):
                        if turn != 0:
                            figures[step][contender].append(figure)
        return figures

    def run_process(self, contender, steps):
        """Does the steps in a fresh process; gives each with its figure."""
        program, repetition = self.scenario.program, self.scenario.repetition
        file = self.file if contender in ("ours", "limit") else self.ini
        command = [f"{self.programs}/{program}_{contender}"]
        if contender in TOOLS:
            command = TOOLS[contender](self.target, *self.change)
        elif program == "first":
            command += [file, *self.change]
        elif program == "keyfile":
            command += [self.scenario.data, file, self.target, self.probes, repetition.copies, repetition.repeats, *steps]
        else:
            command += [file, repetition.repeats, *steps]
        if shutil.which(command[0]) is None:
            return
        if program == "keyfile":
            shutil.copyfile(file, self.target)
        if repetition.memory == "rested":
            time.sleep(self.sizes.rest_seconds)
        elif repetition.memory == "warmed":
            warm_memory(self.sizes.warm_bytes)
        whole = steps[0] if contender in TOOLS or program == "first" else "process"  # what the process as a whole does
        command = [f"{self.programs}/launch", repetition.launches, whole, *command]
        said = subprocess.run([str(word) for word in command], check=True, stdout=subprocess.PIPE, text=True).stdout
        for step, seconds, kib, *found in map(str.split, said.splitlines()):
            if found and list(map(int, found)) != self.expected[step]:
                sys.exit(f"{contender}: {step}: found {found}, not {self.expected[step]}")
            if step in LABELS:
                yield step, Figure(float(seconds), int(kib))
        if "edit" in steps or "job" in steps:
            with open(self.target, "rb") as target:
                if target.read().count(b"changed-value") != 1:
                    sys.exit(f"{contender} did not save the change")


def print_rows(scenario, figures, verbose):
    """One for each step of ours."""
    medians = {step: {contender: sorted(runs)[len(runs) // 2] for contender, runs in figures[step].items()}
               for step in figures}
    for step, label in LABELS.items():
        title = scenario.title + label
        for contender, runs in figures[step].items() if verbose else ():
            print(f"{title:70} {contender:20}", *(f"{1e6 * run.seconds:.3f}" for run in runs), file=sys.stderr)
        if "ours" not in medians[step]:
            continue
        ours, others = medians[step]["ours"], medians[INSTEAD.get(step, step)]
        name = min(others.keys() - {"ours", "limit"}, key=others.get, default="")
        peer, limit = others.get(name), others.get("limit")
        lines = scenario.lines if step == "load" else 0
        print("|", title, "|", duration(ours), "|", duration(peer), "|", name, "|", ratio(ours, peer), "|", duration(limit),
              "|", ratio(ours, limit), "|", memory(ours, lines), "|", memory(peer, lines), "|", flush=True)


def main():
    parser = argparse.ArgumentParser(prog="compare.py")
    parser.add_argument("programs", help="the folder of the built programs")
    parser.add_argument("--quick", action="store_true", help="a tenth of the data")
    parser.add_argument("--verbose", action="store_true", help="every figure, on stderr")
    parser.add_argument("--only", metavar="GROUP", help="flat, sections, small, csv or lexer")
    options = parser.parse_args()
    os.environ["LC_ALL"] = "C"  # messages and classes of characters: the plain ones are the fastest
    sizes = QUICK if options.quick else FULL
    print("| work item | ours | best peer | | ours / peer | limit | ours / limit | peak MiB, ours | peer |")
    print("|---|--:|--:|---|--:|--:|--:|--:|--:|")
    for scenario in scenarios(sizes):
        if options.only in (None, scenario.group):
            with tempfile.TemporaryDirectory() as folder:
                print_rows(scenario, Comparison(scenario, sizes, options.programs, folder).run(), options.verbose)


main()
