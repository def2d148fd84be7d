#!/usr/bin/env python3
"""kx7text fuzzing - makes tests/fuzz/corpus/ anew: of the inputs that ./dev fuzz has kept, those committed and those in
the folders given (each with a folder a target, none in use), the few that reach most.

    tests/fuzz/minimise.py [FOLDER...]
"""
import io
import os
import pathlib
import subprocess
import sys
import tarfile
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
TARGETS = ROOT / "build/fuzz/tests/fuzz"
MOST_FILES = 150
MOST_BYTES = 40_000


def reached(target, folders):
    """Each input with its size and what it reaches: edges, and features, which also count how often."""
    with tempfile.TemporaryDirectory() as place:
        control = pathlib.Path(place) / "control"
        merged = pathlib.Path(place) / "merged"
        merged.mkdir()
        subprocess.run([target, "-merge=1", f"-merge_control_file={control}", merged, *folders], check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                       env={**os.environ, "LANG": "ja_JP.SJIS"})
        lines = control.read_text().splitlines()
    count = int(lines[0])
    inputs = {i: [path, 0, set(), set()] for i, path in enumerate(lines[2:2 + count])}
    for line in lines[2 + count:]:
        kind, number, *values = line.split()
        slot = {"STARTED": 1, "COV": 2, "FT": 3}[kind]
        inputs[int(number)][slot] = int(values[0]) if slot == 1 else set(values)
    return list(inputs.values())


def chosen(inputs):
    """Greedily: edges first, then features; the shorter of two."""
    result, size = [], 0
    for slot in (2, 3):
        seen = set().union(*(entry[slot] for entry in result))
        left = [entry for entry in inputs if entry not in result]
        while left and len(result) < MOST_FILES:
            best = max(left, key=lambda entry: (len(entry[slot] - seen), -entry[1]))
            left.remove(best)
            if not best[slot] - seen:
                break
            if size + best[1] > MOST_BYTES:
                continue
            result.append(best)
            size += best[1]
            seen |= best[slot]
    return result


def main():
    for source in sorted(ROOT.glob("tests/fuzz/*Fuzz.cpp")):
        name = source.stem
        folders = [folder for folder in (TARGETS / "corpus" / name, ROOT / "build/fuzz/corpus" / name,
                                         *(pathlib.Path(given) / name for given in sys.argv[1:])) if folder.is_dir()]
        kept = chosen(reached(TARGETS / name, folders))
        packed = ROOT / "tests/fuzz/corpus" / (name + ".tar.xz")
        packed.parent.mkdir(exist_ok=True)
        texts = sorted(pathlib.Path(entry[0]).read_bytes() for entry in kept)
        with tarfile.open(packed, "w:xz") as archive:
            for number, text in enumerate(texts):
                member = tarfile.TarInfo(f"{number:03}")
                member.size = len(text)
                archive.addfile(member, io.BytesIO(text))
        print(f"{name}: {len(kept)} inputs, {sum(map(len, texts))} bytes, packed {packed.stat().st_size}")


main()
