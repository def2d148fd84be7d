#!/usr/bin/env python3
"""kx7text tests - the recipes for vcpkg and Conan are well formed and name what exists, and versions agree.

Neither tool is installed here: what they make of the recipes is not tried.
"""
import json
import pathlib
import re
import sys

root = pathlib.Path(__file__).resolve().parents[2]
failures = []


def read(name):
    return (root / name).read_text()


cmake = "\n".join(p.read_text() for p in [root / "CMakeLists.txt", *(root / "cmake").glob("*.cmake")])
options = set(re.findall(r"option\((KX7_\w+)", cmake))
version = re.search(r"project\(kx7text VERSION (\S+)", cmake).group(1)

manifest = json.loads(read("packaging/vcpkg/vcpkg.json"))
port = read("packaging/vcpkg/portfile.cmake")
conan = read("packaging/conan/conanfile.py")
compile(conan, "conanfile.py", "exec")

versions = {
    "vcpkg.json": manifest["version"],
    "conanfile.py": re.search(r'version = "(.+)"', conan).group(1),
    "debian/changelog": re.match(r"kx7text \((.+)-", read("packaging/debian/changelog")).group(1),
    "CHANGELOG.md": re.search(r"^## (\S+)", read("CHANGELOG.md"), re.MULTILINE).group(1),
}
failures += [f"{file} has version {found}, not {version}" for file, found in versions.items() if found != version]
for file, text in (("portfile.cmake", port), ("conanfile.py", conan)):
    failures += [f"{file} sets {name}, which is no option" for name in set(re.findall(r"KX7_\w+", text)) - options]
for feature in re.findall(r"FEATURES (\w+)", port):
    if feature not in manifest["features"]:
        failures.append(f"portfile.cmake asks for feature {feature}, which vcpkg.json lacks")
for pattern in re.findall(r'"([\w.]+/?\*?)"', re.search(r"for pattern in \((.+)\)", conan).group(1)):
    if not (root / pattern.rstrip("*")).exists():
        failures.append(f"conanfile.py exports {pattern}, which is not there")
for target in ("kx7text::kx7text", "kx7text::kx7text_static"):
    if target not in cmake:
        failures.append(f"{target} is no target")
if "kx7text::kx7text" not in conan:
    failures.append("conanfile.py does not name the target kx7text::kx7text")
for failure in failures:
    print(f"recipes.py: {failure}")
sys.exit(1 if failures else 0)
