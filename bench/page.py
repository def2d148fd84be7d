#!/usr/bin/python3
# kx7text benchmarks - makes docs/performance.md and its charts of what `kx7_bench --write` has measured.
#
#     page.py FOLDER     with machine.txt, cases.csv and floors.csv in it; the page is FOLDER.md, the charts lie in FOLDER
import collections
import csv
import pathlib
import statistics
import sys

import matplotlib

matplotlib.use("svg")
# Without a date or random names, the same figures give the same files.
matplotlib.rcParams.update({"svg.hashsalt": "kx7text", "svg.fonttype": "none", "font.size": 9, "axes.axisbelow": True,
                            "axes.spines.top": False, "axes.spines.right": False})
from matplotlib import pyplot  # noqa: E402

NOTES = pathlib.Path(__file__).parent / "notes.md"
COLOURS = {"AVX-512": "#1b6ca8", "AVX2": "#6fb1e0", "peer": "#b8b8b8"}
KERNELS = {"kx7-avx512": "AVX-512", "kx7-avx2": "AVX2"}
PEERS = ("icu", "iconv")
SCRIPTS = ["ascii", "english", "french", "german", "greek", "cyrillic", "hebrew", "arabic", "thai", "korean", "japanese",
           "chinese", "emoji"]
SIZES = ["16B", "64B", "4KiB", "1MiB"]
SINGLE_BYTE = "single byte"
FAMILIES = {
    "UTF-8": {"utf8"},
    "UTF-16, UTF-32": {"utf16", "utf32"},
    SINGLE_BYTE: None,  # all others
    "two bytes": {"932", "936", "949", "950", "big5", "sjis", "euckr", "euccn"},
    "EUC-JP, GB 18030, …": {"eucjp", "sjis2004", "gb18030"},
}


def family(name):
    return next((family for family, names in FAMILIES.items() if names and name in names), SINGLE_BYTE)


def number(text):
    return float(text) if text else None


class Case:
    def __init__(self, row):
        self.operation, self.set, self.script, self.form, self.size = (
            row[key] for key in ("operation", "set", "script", "form", "size"))
        self.bytes = int(row["bytes"])
        self.times = {title: number(row.get(key)) for key, title in KERNELS.items()}
        peers = [time for time in (number(row.get(key)) for key in PEERS) if time]
        self.times["peer"] = min(peers) if peers else None

    def speed(self, who):
        """GB of source a second."""
        return self.bytes / self.times[who] if self.times[who] else 0

    def ratio(self, who):
        """Speed divided by that of the faster peer; None where one is missing."""
        return self.times["peer"] / self.times[who] if self.times[who] and self.times["peer"] else None


def save(figure, path):
    figure.savefig(path, metadata={"Date": None}, bbox_inches="tight")
    pyplot.close(figure)


def drawSpeeds(cases, path):
    """Bars of the conversions between UTF-8 and UTF-16, a group a script."""
    figure, plots = pyplot.subplots(2, 1, figsize=(8, 5), sharex=True)
    for plot, operation, title in zip(plots, ("decode", "encode"), ("UTF-8 to UTF-16", "UTF-16 to UTF-8")):
        found = {case.script: case for case in cases if (case.operation, case.set, case.form, case.size) ==
                 (operation, "utf8", "dense", "1MiB")}
        for at, (who, colour) in enumerate(COLOURS.items()):
            plot.bar([i + (at - 1) * 0.27 for i in range(len(SCRIPTS))],
                     [found[script].speed(who) if script in found else 0 for script in SCRIPTS], 0.27, color=colour,
                     label="faster of ICU and iconv" if who == "peer" else who)
        plot.set_title(title + ", 1 MiB, dense", loc="left")
        plot.set_ylabel("GB of source a second")
        plot.grid(axis="y", color="#e0e0e0")
    plots[0].legend(frameon=False)
    plots[1].set_xticks(range(len(SCRIPTS)), SCRIPTS, rotation=30)
    save(figure, path)


def drawRatios(cases, path):
    """Least, median and greatest ratio to the faster peer, a line a family, size and kernel set."""
    figure, plots = pyplot.subplots(1, 2, figsize=(8, 4.5), sharey=True)
    groups = [(title, size) for title in FAMILIES for size in SIZES]
    for plot, who in zip(plots, KERNELS.values()):
        for at, (title, size) in enumerate(groups):
            ratios = [case.ratio(who) for case in cases if family(case.set) == title and case.size == size and
                      case.operation in ("decode", "encode", "to-utf8", "from-utf8") and case.ratio(who)]
            if ratios:
                plot.plot([min(ratios), max(ratios)], [at, at], color=COLOURS[who], linewidth=4, solid_capstyle="butt")
                plot.plot(statistics.median(ratios), at, "|", color="black", markersize=8)
        plot.axvline(1, color="#c04040", linewidth=1)
        plot.set_xscale("log", base=2)
        plot.set_xticks([0.5, 1, 2, 4, 8, 16, 32], ["0.5", "1", "2", "4", "8", "16", "32"])
        plot.set_title(who, loc="left")
        plot.set_xlabel("times the speed of the faster of ICU and iconv")
        plot.grid(axis="x", color="#e0e0e0")
    plots[0].set_yticks(range(len(groups)), [(f"{title}   " if size == SIZES[0] else "") + size for title, size in groups])
    plots[0].invert_yaxis()
    save(figure, path)


def floorTable(floors):
    """A row a floor, with the columns of each kernel set."""
    rows = collections.OrderedDict()
    for floor in floors:
        # Two floors have the same title: those of a first load.
        row = rows.setdefault((floor["case"], sum(f["case"] == floor["case"] and f["kernels"] == floor["kernels"]
                                                  for f in floors[:floors.index(floor)])), {})
        row[floor["kernels"]] = floor
    kernels = list(dict.fromkeys(floor["kernels"] for floor in floors))
    yield "| case | " + " | ".join(f"{name}: floor | worst | at 4 KiB" for name in kernels) + " |"
    yield "|---|" + "---|---|---|" * len(kernels)
    for (title, _), row in rows.items():
        cells = []
        for name in kernels:
            floor = row.get(name)
            if not floor:
                cells.append(" | | ")
                continue
            worst = floor["worst"] if floor["met"] == "yes" else f"**{floor['worst'] or 'missing'}**"
            cells.append(f"{floor['floor']} | {worst} | {floor['worst at 4 KiB']}")
        yield f"| {title} | " + " | ".join(cells) + " |"
    for name in kernels:
        judged = [floor for floor in floors if floor["kernels"] == name]
        met = sum(floor["met"] == "yes" for floor in judged)
        yield f"\n{name}: {met} of {len(judged)} floors are met; those that are not are **bold**."


def main(folder):
    folder = pathlib.Path(folder)
    with open(folder / "cases.csv", newline="") as file:
        cases = [Case(row) for row in csv.DictReader(file)]
    with open(folder / "floors.csv", newline="") as file:
        floors = list(csv.DictReader(file))
    drawSpeeds(cases, folder / "utf8.svg")
    drawRatios(cases, folder / "ratios.svg")
    name = folder.name
    page = [
        "# Performance", "",
        "The library beside ICU and glibc iconv, in one process and one run: medians of interleaved rounds. Generated texts,",
        "none of them a short text repeated: dense, and as markup of which two thirds are ASCII.", "",
        f"    ./dev bench --write docs/{name}", "",
        f"Machine: {(folder / 'machine.txt').read_text().strip()}. All figures: [cases.csv]({name}/cases.csv), nanoseconds of a call;",
        f"[floors.csv]({name}/floors.csv), with the case that was the worst.", "",
        f"![Speed of conversions between UTF-8 and UTF-16]({name}/utf8.svg)", "",
        f"![Least, median and greatest ratio to the faster peer]({name}/ratios.svg)", "",
        "## Floors", "",
        "The speed of the library divided by that of the faster of ICU and iconv: the worst of all cases that a floor is for. Texts",
        "have 1 MiB where nothing else is said. Where it is microseconds that count, less is better, and the worst is the slowest.",
        "", *floorTable(floors), "", NOTES.read_text().strip(),
    ]
    folder.with_suffix(".md").write_text("\n".join(page) + "\n")


if __name__ == "__main__":
    main(*sys.argv[1:])
