# kx7text - tests of kx7conv's documents: the options are the same everywhere, and the recipes run.
import os
import re
import shutil
import subprocess
import unittest

from program import KX7CONV, ROOT, Test, run

MAN_PAGE = ROOT / "share/man/man1/kx7conv.1"
COMPLETION = ROOT / "share/bash-completion/completions/kx7conv"


class Options(Test):
    help = run("--help")[1].decode()
    options = set(re.findall(r"^ +(-\w)\b", help, re.M)) | set(re.findall(r"^ +(?:-\w, )?(--[\w-]+)", help, re.M))

    def testThereAreSome(self):
        self.assertGreater(len(self.options), 30)
        self.assertLess({"-f", "--from", "-c", "-0", "--files-from", "--guess", "-h"}, self.options)

    def testTheManPageNamesTheSame(self):
        text = MAN_PAGE.read_text().replace("\\-", "-")
        heads = re.findall(r"^\.TP\n((?:\\fB|).*)$", text, re.M)
        named = set(re.findall(r"\\fB(-[\w-]+)\\fR", "\n".join(heads)))
        self.assertEqual(named, self.options)
        values = dict(re.findall(r"\\fB(--[\w-]+)\\fR(?: |\[=)\\fI([\w+]+)", "\n".join(heads)))
        self.assertEqual(values, dict(re.findall(r"^ .*?(--[\w-]+)(?: |\[=)([A-Z][\w+]*|json)", self.help, re.M)))

    def complete(self, *words):
        script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _kx7conv; printf "%s\\n" '
                  '"${COMPREPLY[@]}"')
        environment = os.environ | {"PATH": f"{os.path.dirname(KX7CONV)}:{os.environ['PATH']}"}
        done = subprocess.run(["bash", "-c", script, "bash", COMPLETION, "kx7conv", *words], capture_output=True,
                              text=True, env=environment, cwd=self.folder, check=True)
        self.assertEqual(done.stderr, "")
        return set(done.stdout.split())

    def testTheCompletionNamesTheSame(self):
        self.assertEqual(self.complete("-") - {"--stats=json", "--list=json"}, self.options)
        self.assertEqual(self.complete("-f", "1251", "--er"), {"--errors"})

    def testTheCompletionKnowsValues(self):
        self.assertEqual(self.complete("--from", "wcp125"), {f"WCP125{digit}" for digit in range(9)})
        self.assertEqual(self.complete("-t", "6500"), {"65001"})
        self.assertEqual(self.complete("-t", "utf-1"), {"UTF-16", "utf-16le"})
        for option in ("--errors", "--bom", "--progress"):
            values = self.complete(option, "")
            self.assertGreater(len(values), 1)
            for value in values:
                self.assertEqual(run("-f", "utf8", option, value)[0], 0)
            self.assertNotEqual(run("-f", "utf8", option, "nothing")[0], 0)
        self.file("one", b"")
        (self.folder / "two").mkdir()
        self.assertEqual(self.complete("-o", ""), {"one", "two"})
        self.assertEqual(self.complete("--output-dir", ""), {"two"})
        self.assertEqual(self.complete(""), {"one", "two"})


class Recipes(Test):
    recipes = re.findall(r"^```sh\n(.*?)^```", (ROOT / "docs/scale.md").read_text(), re.M | re.S)

    def convert(self, recipe):
        lines = [f"строка {i}\n" for i in range(20000)]
        text = "".join(lines)
        self.file("big.txt", text.encode("cp1251"))
        (self.folder / "in").mkdir()
        for i in range(300):
            self.file(f"in/{i}.txt", lines[i].encode("cp1251"))
        # Smaller pieces than the document's, so that there are several.
        recipe = re.sub(r"--block \d+M", "--block 50k", recipe)
        environment = os.environ | {"PATH": f"{os.path.dirname(KX7CONV)}:{os.environ['PATH']}", "HOME": str(self.folder)}
        done = subprocess.run(["bash", "-euo", "pipefail", "-c", recipe], cwd=self.folder, env=environment,
                              capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""), recipe)
        if "big" in recipe:
            self.assertEqual((self.folder / "big.utf8.txt").read_bytes(), text.encode())
        if "out" in recipe:
            self.assertEqual(len(os.listdir(self.folder / "out")), 300)
            for i in range(300):
                self.assertEqual((self.folder / f"out/{i}.txt").read_bytes(), lines[i].encode())

    def testThereIsOneOfEachKind(self):
        found = [kind for recipe in self.recipes for kind in ("-j 0", "xargs", "--pipepart", "--pipe ") if kind in recipe]
        self.assertEqual(found, ["-j 0", "xargs", "--pipepart", "--pipe "])

    def testThoseOfTheProgramItselfAndOfXargs(self):
        self.convert(self.recipes[0])
        shutil.rmtree(self.folder / "in")
        shutil.rmtree(self.folder / "out")
        self.convert(self.recipes[1])

    @unittest.skipUnless(shutil.which("parallel"), "no GNU parallel")
    def testThoseOfParallel(self):
        for recipe in self.recipes[2:]:
            self.convert(recipe)
            shutil.rmtree(self.folder / "in")


if __name__ == "__main__":
    unittest.main()
