#!/usr/bin/env python3
"""kx7text tests - reads the includes of the library and of kx7conv: they go down only, and in no circle.

    layers.py [--graph]    --graph also prints the files after each arrow

Prints how many files of each layer include files of each other. Fails where one includes a file of a layer above its
own, where kx7conv includes an internal header, or files include each other in a circle.
"""

import re
import sys
from collections import defaultdict
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]

# The order of the layers, the lowest first. It is written here and nowhere else.
LAYERS = ["base", "tables", "kernels", "converters", "text", "charset", "convert", "cli"]

# What of kx7conv includes internal headers: the published operations take no pieces.
INTERNAL_CLI = "cli/LiteralTranscoder"

# Headers beside the folders.
LAYER_OF_FILE = {"kx7/Export.h": "base", "kx7/convert.h": "convert", "kx7/kx7.h": "convert"}

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


def layer_of(path):
    """The layer of a file, by its path from the root."""
    if path in LAYER_OF_FILE:
        return LAYER_OF_FILE[path]
    parts = path.split("/")
    return parts[0] if parts[0] == "cli" else parts[1]


def is_other_path(path, text):
    """The header is one include: another path of a header that has moved, which may have moved up."""
    statements = [line for line in text.splitlines() if line.strip() and not line.startswith("//")]
    return path.endswith(".h") and len(statements) == 1 and INCLUDE.match(statements[0]) is not None


def includes_of(files):
    """For each file the files of the project that it includes."""
    graph = {}
    for path in files:
        text = (ROOT / path).read_text(encoding="utf-8")
        targets = set()
        for name in INCLUDE.findall(text):
            beside = str((Path(path).parent / name).as_posix())
            target = name if name.startswith("kx7/") else beside
            if target not in files:
                sys.exit(f"layers.py: {path} includes {name}, which is no file of the project")
            targets.add(target)
        graph[path] = set() if is_other_path(path, text) else targets
    return graph


def is_internal(path):
    """As list.sh says it: the first line of the header has "(internal)" in it."""
    return "(internal)" in (ROOT / path).read_text(encoding="utf-8").split("\n", 1)[0]


def circle_in(graph):
    """Files that include each other in a circle; empty where there are none."""
    done = set()
    for start in graph:
        trail, iterators = [start], [iter(sorted(graph[start]))]
        while trail:
            following = next(iterators[-1], None)
            if following is None:
                done.add(trail.pop())
                iterators.pop()
            elif following in trail:
                return trail[trail.index(following):] + [following]
            elif following not in done:
                trail.append(following)
                iterators.append(iter(sorted(graph[following])))
    return []


def main():
    files = {str(path.relative_to(ROOT).as_posix())
             for folder in ("kx7", "cli") for pattern in ("*.h", "*.cpp", "*.inc")
             for path in (ROOT / folder).rglob(pattern)}
    unknown = sorted(path for path in files if layer_of(path) not in LAYERS)
    if unknown:
        sys.exit(f"layers.py: {unknown[0]} is in no layer")
    graph = includes_of(files)

    arrows = defaultdict(list)
    for path, targets in sorted(graph.items()):
        for target in sorted(targets):
            if layer_of(target) != layer_of(path):
                arrows[layer_of(path), layer_of(target)].append(f"{path} includes {target}")
    up = []
    for (above, below), rows in sorted(arrows.items(), key=lambda arrow: [LAYERS.index(name) for name in arrow[0]]):
        print(f"{above:<10} -> {below:<10} {len(rows):3}")
        if "--graph" in sys.argv[1:]:
            print("".join(f"    {row}\n" for row in rows), end="")
        if LAYERS.index(below) > LAYERS.index(above):
            up += rows
    for row in up:
        print(f"layers.py: goes up: {row}")
    inside = [f"{path} includes {target}" for path, targets in sorted(graph.items()) for target in sorted(targets)
              if layer_of(path) == "cli" and not path.startswith(INTERNAL_CLI) and is_internal(target)]
    for row in inside:
        print(f"layers.py: is internal: {row}")
    circle = circle_in(graph)
    if circle:
        print("layers.py: a circle: " + " -> ".join(circle))
    print(f"{len(files)} files, {len(up)} includes that go up, {1 if circle else 0} circles")
    return 1 if up or inside or circle else 0


if __name__ == "__main__":
    sys.exit(main())
