# SPDX-License-Identifier: MIT
# chart.py < TABLE > SVG: draws the table of compare.py, our time and the limit in proportion to the fastest peer's.
import math
import sys

UNITS = {"µs": 1e-6, "ms": 1e-3, "s": 1}
# A line for each row, from a hundredth of the peer's time to ten times as much.
LABELS = ["1/100", "1/10", "as fast as the fastest peer", "10 times"]
DECADES_BELOW, DECADES_ABOVE = 2, 1
LEFT, DECADE, LINE_HEIGHT, TOP = 330, 170, 22, 60
RIGHT = LEFT + (DECADES_BELOW + DECADES_ABOVE) * DECADE


def seconds(cell):
    return None if cell == "-" else float(cell.split()[0]) * UNITS[cell.split()[1]]


def place(ratio):
    return LEFT + DECADE * (DECADES_BELOW + max(-DECADES_BELOW, min(DECADES_ABOVE, math.log10(ratio))))


rows = [[cell.strip() for cell in line.split("|")[1:-1]] for line in sys.stdin if line.startswith("| ")][1:]
bottom = TOP + LINE_HEIGHT * len(rows)
print(f'<svg xmlns="http://www.w3.org/2000/svg" width="{RIGHT + 190}" height="{bottom + 14}" font-family="sans-serif" '
      f'font-size="12">\n<rect width="100%" height="100%" fill="#fff"/>\n'
      f'<text x="10" y="20" font-size="14">CPU time in proportion to the fastest peer: blue is faster, red slower; '
      f'the black mark is the physical limit</text>')
for i, label in enumerate(LABELS):
    x = LEFT + i * DECADE
    print(f'<line x1="{x}" y1="{TOP - 10}" x2="{x}" y2="{bottom}" stroke="{"#444" if i == DECADES_BELOW else "#ccc"}"/>\n'
          f'<text x="{x}" y="{TOP - 16}" text-anchor="middle">{label}</text>')
for i, (title, ours, peer, name, ratio, limit, *_) in enumerate(rows):
    ours, peer, limit = map(seconds, (ours, peer, limit))
    if peer is None:
        continue
    y, end, one = TOP + i * LINE_HEIGHT, place(ours / peer), place(1)
    print(f'<text x="{LEFT - 10}" y="{y + 10}" text-anchor="end">{title}</text>\n'
          f'<rect x="{min(end, one):.1f}" y="{y}" width="{abs(end - one):.1f}" height="12" '
          f'fill="{"#2b7bba" if end <= one else "#d1495b"}"/>')
    if limit is not None:
        print(f'<rect x="{place(limit / peer) - 1.5:.1f}" y="{y - 2}" width="3" height="16" fill="#222"/>')
    print(f'<text x="{RIGHT + 10}" y="{y + 10}">{ratio} {name}</text>')
print("</svg>")
