# kx7text - what the tests of kx7conv share: they run the program that the environment variable KX7CONV names.
import os
import pathlib
import subprocess
import tempfile
import unittest

KX7CONV = os.environ["KX7CONV"]
ROOT = pathlib.Path(__file__).resolve().parents[2]
SAMPLES = ROOT / "samples"
SANITIZED = "KX7_SANITIZED" in os.environ

BAD_DATA = 1
USAGE = 2
IO = 3


def run(*arguments, data=b"", **options):
    """Runs the program over `data` and returns its exit status, its output and its messages."""
    done = subprocess.run([KX7CONV, *map(str, arguments)], input=data, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          timeout=120, **options)
    return done.returncode, done.stdout, done.stderr.decode()


def listed():
    """The character sets of --list: (number, name)."""
    status, output, _ = run("--list")
    assert status == 0
    return [(int(number), name) for number, name, *_ in (line.split("\t") for line in output.decode().splitlines())]


class Test(unittest.TestCase):
    base = None  # the folder that the tests' own one is in

    def setUp(self):
        folder = tempfile.TemporaryDirectory(dir=self.base)
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def file(self, name, data):
        (self.folder / name).write_bytes(data)
        return name

    def expect(self, arguments, data, output, status=0, messages="", **options):
        foundStatus, foundOutput, foundMessages = run(*arguments, data=data, **options)
        self.assertEqual((foundStatus, foundMessages), (status, messages), arguments)
        if foundOutput != output:  # where, since to compare and print long outputs takes for ever
            pairs = zip(foundOutput, output)
            at = next((i for i, (a, b) in enumerate(pairs) if a != b), min(len(foundOutput), len(output)))
            self.fail(f"{arguments}: {len(foundOutput)} bytes of output for {len(output)}, from byte {at} on "
                      f"{foundOutput[at:at + 20]} for {output[at:at + 20]}")


def preloaded(library, **variables):
    """The environment with a library before the C library."""
    return os.environ | {"LD_PRELOAD": os.environ[library], "ASAN_OPTIONS": "verify_asan_link_order=0"} | variables


def inMemory(test):
    """The same tests where files are in memory."""
    if not os.access("/dev/shm", os.W_OK):
        return None
    return type(test.__name__ + "InMemory", (test,), {"base": "/dev/shm"})


def asUser(user, *groups):
    """The options of run() for an ordinary user, whose group has the same number."""
    def become():
        os.setgroups(groups)
        os.setgid(user)
        os.setuid(user)
    return {"preexec_fn": become}


needsRoot = unittest.skipUnless(os.getuid() == 0, "takes root to become other users")
