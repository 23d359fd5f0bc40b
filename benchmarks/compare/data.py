# SPDX-License-Identifier: MIT
# Makes the data of the comparison, the same each time. The keys of a section are unique.
import random
import re

WORDS = """address backup buffer cache client color connect count debug default device dir enable file filter font
    format host image interval key language level limit log max memory min mode module name network output path port
    prefix proxy queue rate retry server size socket speed start status timeout user""".split()
ENTRIES_PER_SECTION = 20
COLUMNS = 10
MARKS = "=;,.(){}+-\":"

choices = random.Random(1)
pick = choices.choice


def some(count):
    return choices.choices(WORDS, k=count)


def digits(longest):
    return str(choices.randrange(10 ** choices.randint(1, longest)))


def value():
    kinds = (lambda: digits(6), lambda: pick(("true", "false")), lambda: "/usr/" + "/".join(some(2)),
             lambda: ".".join(digits(3) for _ in range(3)), lambda: " ".join(some(2)))
    return pick(kinds)()


VALUES = [value() for _ in range(10000)]
NUMBERS = [digits(10) for _ in range(10000)]


def entry(number):
    return f"{pick(WORDS)}-{pick(WORDS)}-{number}={pick(VALUES)}\n"


def comment():
    return f"# the {' '.join(some(choices.randint(6, 11)))}\n"


def flat(lines):
    """One section, a fifth of it comments and a tenth blank."""
    yield "[main]\n"  # the others take no entry outside a section
    for number in range(1, lines):
        kind = choices.randrange(10)
        yield "\n" if kind == 0 else comment() if kind < 3 else entry(number)


def sections(count):
    """A comment before each, and a blank line after it."""
    for number in range(count):
        entries = "".join(map(entry, range(ENTRIES_PER_SECTION)))
        yield f"{comment()}section {pick(WORDS)}-{number} {{\n{entries}}}\n\n"


def csv(size):
    """Records of some 145 bytes, without quotes, until there are so many bytes."""
    while size > 0:
        fields = [pick(NUMBERS if column % 3 == 0 else VALUES) for column in range(COLUMNS)]
        for column in range(1, COLUMNS, 2):
            fields[column] += " " + " ".join(some(2))
        record = ",".join(fields) + "\n"
        size -= len(record)
        yield record


def tokens(size):
    """Lines of words, numbers, punctuation and blanks, until there are so many bytes."""
    while size > 0:
        line = pick(("", "  ", "    "))
        for _ in range(choices.randint(2, 9)):
            line += pick(WORDS) if choices.random() < 2 / 3 else digits(6)
            line += pick(MARKS) if choices.random() < 1 / 2 else ""
            line += " " if choices.random() < 7 / 8 else "\t"
        size -= len(line) + 1
        yield line + "\n"


def make(kind, size, path):
    """Sections in the library's form, and in PATH.ini for the others."""
    choices.seed(1)
    with open(path, "w") as file:
        file.writelines({"flat": flat, "sections": sections, "csv": csv, "tokens": tokens}[kind](size))
    if kind == "sections":
        with open(path) as file, open(path + ".ini", "w") as ini:
            ini.write(re.sub(r"section (\S+) {", r"[\1]", file.read()).replace("}\n", ""))
