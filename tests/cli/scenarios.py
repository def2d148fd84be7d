# kx7text - what the tests of kx7conv's faults share: system calls and how they can fail, runs over three files and what
# may have become of the files after one.
import os
import re
import signal

from program import IO

MEMORY = ["ENOMEM"]
PATHS = ["EACCES", "ELOOP", "ENOENT", "ENAMETOOLONG", "ENOTDIR", "ESTALE"]
DESCRIPTORS = ["EMFILE", "ENFILE"]
ENTRIES = ["ENOSPC", "EDQUOT", "EROFS", "EPERM", "EIO"]
ATTRIBUTES = ["EOPNOTSUPP", "ENOSPC", "EPERM", "EACCES", "EIO", "ERANGE", "EDQUOT"]

# What each kind of call can fail with; the kinds are those of faults.cpp.
REASONS = {
    "open": [*PATHS, "EINTR", "EIO", *DESCRIPTORS, "EPERM", "EROFS", "ENXIO", "ETXTBSY", *MEMORY],
    "open-folder": [*PATHS, "EINTR", "EIO", *DESCRIPTORS, "EPERM", *MEMORY],
    "create": ["EEXIST", *PATHS, "EINTR", *ENTRIES, *DESCRIPTORS, *MEMORY],
    "tmpfile": ["EOPNOTSUPP", "EISDIR", "EINVAL", *PATHS, "EINTR", *ENTRIES, *DESCRIPTORS, *MEMORY],
    "read": ["EIO", "EINTR", "EAGAIN", "EISDIR", "ESTALE", *MEMORY],
    "write": ["ENOSPC", "EINTR", "EAGAIN", "EIO", "EDQUOT", "EFBIG", "EPERM", "ESTALE", *MEMORY],
    "close": ["EIO", "EINTR", "ENOSPC", "EDQUOT"],
    "close-input": ["EIO", "EINTR"],
    "fstat": ["EIO", "ESTALE", *MEMORY],
    "stat": ["EACCES", "EIO", "ELOOP", "ESTALE", *MEMORY],
    "readlink": ["EACCES", "EIO", "ELOOP", "ESTALE", *MEMORY],
    "realpath": ["EACCES", "EIO", "ENOENT", *MEMORY],
    "link": ["EEXIST", "EMLINK", "EXDEV", "EOPNOTSUPP", *PATHS, *ENTRIES, *MEMORY],
    "rename": ["EBUSY", "EXDEV", "ETXTBSY", "EINVAL", *PATHS, *ENTRIES, *MEMORY],
    "unlink": ["EACCES", "EBUSY", "EIO", "EPERM", "EROFS", "ENOENT", *MEMORY],
    "mkdir": ["EACCES", "ENOTDIR", *ENTRIES, *MEMORY],
    "fsync": ["EIO", "EINTR", "ENOSPC", "EDQUOT", "EROFS", "EINVAL"],
    "ftruncate": ["EIO", "EINTR", "EFBIG"],
    "fchmod": ["EPERM", "EIO", "EROFS"],
    "fchown": ["EPERM", "EIO", "EROFS", "EDQUOT", "EINVAL"],
    "utimens": ["EPERM", "EACCES", "EROFS", "EIO"],
    "fadvise": ["EINVAL", "EIO"],
    "opendir": ["EACCES", "ENOENT", *DESCRIPTORS, *MEMORY],
    "readdir": ["EIO", "ENOENT"],
    "listxattr": ATTRIBUTES,
    "getxattr": ["ENODATA", *ATTRIBUTES],
    "setxattr": ATTRIBUTES,
    "getrandom": ["EINTR", "EAGAIN", "ENOSYS"],
    "poll": ["EINTR", *MEMORY],
}

# These change nothing.
HARMLESS = {(kind, reason) for kind in ("fadvise", "close-input") for reason in REASONS[kind]}
HARMLESS |= {(kind, "EINTR") for kind in ("open", "open-folder", "create", "tmpfile", "read", "write", "close", "fsync", "poll")}
HARMLESS |= {("read", "EAGAIN"), ("write", "EAGAIN"), ("tmpfile", "EOPNOTSUPP"), ("tmpfile", "EISDIR"),
             ("listxattr", "EOPNOTSUPP"), ("getxattr", "ENODATA"), ("getxattr", "EOPNOTSUPP")}

# There may be another way to the same result, or something is not kept, which may be told; or the file fails.
EITHER = {(kind, reason)
          for kind in ("open-folder", "stat", "fstat", "readlink", "realpath", "link", "unlink", "mkdir", "fchmod", "fchown", "utimens",
                       "listxattr", "getxattr", "setxattr", "getrandom", "readdir", "poll")
          for reason in REASONS[kind]}
EITHER |= {("open", reason) for reason in ("ENOENT", "ELOOP", "ENXIO", "ENOTDIR")}
EITHER |= {("create", "EEXIST"), ("tmpfile", "EINVAL"), ("tmpfile", "EPERM"), ("fsync", "EINVAL"), ("rename", "EINVAL")}

TEXTS = {name: f"{name}Γειά\n" * count for name, count in (("a", 3), ("b", 20000), ("c", 3))}
OLD = {name: text.encode("cp1253") for name, text in TEXTS.items()}
NEW = {name: text.encode() for name, text in TEXTS.items()}
ALL = b"".join(NEW.values())
OLDER = b"older"  # backup
UNFINISHED = re.compile(r"\.kx7conv-[\w-]+")
STDOUT = "standard output"


class Part:
    """What is written as a whole: a file, or a file and its backup. `names`: one of them is in the message if it fails."""

    def __init__(self, names, failed, done, unfinished=None):
        self.names = set(names)
        self.failed = failed  # {path: whether this content, None for no file, is right after a failure}
        self.done = done      # {path: the content}
        self.unfinished = unfinished or failed  # the same as `failed` of a run that is killed

    def isFailed(self, files, isKilled):
        expected = self.unfinished if isKilled else self.failed
        return all(isRight(files.get(path)) for path, isRight in expected.items())

    def isDone(self, files):
        return all(files.get(path) == content for path, content in self.done.items())


def oneOf(*contents):
    return lambda content: content in contents


def written(path, old, new, *names):
    return Part({path, *names}, {path: oneOf(old)}, {path: new})


def withBackup(path, old, new, oldBackup, *names):
    # The old text has its second name before the new text takes its place.
    backup = f"{path}.bak"
    return Part({path, *names}, {path: oneOf(old), backup: oneOf(oldBackup)}, {path: new, backup: old},
                {path: oneOf(old), backup: oneOf(oldBackup, old)})


def endsEarly(output):
    """Whether it is the output of all files, of which each may end early."""
    for text in NEW.values():
        output = output[len(os.path.commonprefix([output, text])):]
    return output == b""


class Scenario:
    """A run over the files a, b and c, which is a link to real/c, in the current folder."""

    INPUTS = {"a": OLD["a"], "b": OLD["b"], "real/c": OLD["c"]}

    def __init__(self, arguments, parts, files=None, always=None):
        self.arguments = arguments.split()
        self.parts = parts
        self.files = self.INPUTS | (files or {})
        self.always = always  # a fault of every run
        self.writable = set().union(*(part.failed for part in parts))
        self.known = set().union(*(part.names for part in parts), {".", "real"})
        self.writesOutput = STDOUT in self.writable
        self.keepsOld = any(path.endswith(".bak") for path in self.writable)

    def prepare(self):
        for path, content in self.files.items():
            os.makedirs(os.path.dirname(path) or ".", exist_ok=True)
            with open(path, "wb") as file:
                file.write(content)
        os.symlink("real/c", "c")

    def found(self):
        """{path: content} of all files but the link."""
        files = {}
        for folder, _, names in os.walk("."):
            for name in names:
                path = os.path.normpath(f"{folder}/{name}")
                if path != "c" or not os.path.islink(path):
                    with open(path, "rb") as file:
                        files[path] = file.read()
        return files

    def statuses(self, kind, reason):
        if reason == "KILL":
            return [-signal.SIGKILL]
        if reason == "STOP" or (kind, reason) in HARMLESS:
            return [0]
        return [0, IO] if (kind, reason) in EITHER else [IO]

    def wrong(self, kind, reason, status, messages):
        """
        What is wrong with the status, the messages and the files after a run with that fault; empty if nothing is.
        KILL: it ended before the call; STOP: it was stopped before the call, and continued.
        """
        isKilled = reason == "KILL"
        if status not in self.statuses(kind, reason):
            return f"status {status}"
        named = set()
        for line in messages.splitlines():
            names = {name for name in self.known if line.startswith((f"kx7conv: {name}: ", f"kx7conv: ./{name}: "))}
            if not names:
                return f"a message about nothing known: {line}"
            named |= names
        if self.statuses(kind, reason) == [0] and messages:
            return f"a message although nothing fails: {messages}"
        if status == IO and not named:
            return "no message"
        files = self.found()
        for part in self.parts:
            mayFail = isKilled or (status == IO and named & part.names)
            if not part.isDone(files) and not (mayFail and part.isFailed(files, isKilled)):
                return f"neither the old file nor the new one, or without a message: {sorted(part.done)}; {messages}"
        for path, content in self.files.items():
            if path not in self.writable and files.get(path) != content:
                return f"changed: {path}"
        if not os.path.islink("c") or os.readlink("c") != "real/c":
            return "the link is another"
        left = sorted(set(files) - set(self.files) - self.writable)
        # What cannot be removed stays: an unfinished file and a second name of the old one or of the older backup.
        unfinished = [path for path in left if UNFINISHED.fullmatch(os.path.basename(path))]
        old = [path for path in unfinished if self.keepsOld and files[path] in (*OLD.values(), OLDER)]
        if (isKilled or kind == "unlink") and left == unfinished and len(left) <= 1 + min(len(old), 1):
            return ""
        return f"left over: {left}" if left else ""


IN_FOLDERS = {"d/a": OLD["a"], "d/sub/b": OLD["b"], "d/sub/c": OLD["c"]}
INTO_FOLDER = [written(f"out/{name}", None, NEW[name], name, "out") for name in "abc"]
IN_PLACE = [written("a", OLD["a"], NEW["a"]), written("b", OLD["b"], NEW["b"]), written("real/c", OLD["c"], NEW["c"], "c")]
WITH_BACKUPS = [withBackup("a", OLD["a"], NEW["a"], None), withBackup("b", OLD["b"], NEW["b"], OLDER),
                withBackup("real/c", OLD["c"], NEW["c"], None, "c")]

SCENARIOS = {
    "InPlace": Scenario("-i a b c", IN_PLACE),
    "InPlaceWithBackups": Scenario("-i.bak a b c", WITH_BACKUPS, {"b.bak": OLDER}),
    "InPlaceInFolders": Scenario(
        "-r -i d", [written("d/a", OLD["a"], NEW["a"], "d"), written("d/sub/b", OLD["b"], NEW["b"], "d/sub", "d"),
                    written("d/sub/c", OLD["c"], NEW["c"], "d/sub", "d")], IN_FOLDERS),
    "InPlaceFromAList": Scenario(
        "-i --files-from list", [Part({*part.names, "list"}, part.failed, part.done) for part in IN_PLACE],
        {"list": b"a\nb\nc\n"}),
    "IntoAFolder": Scenario("--output-dir out a b c", [written("out/a", b"old", NEW["a"], "a", "out"), *INTO_FOLDER[1:]],
                            {"out/a": b"old"}),
    "IntoANewFolder": Scenario("--output-dir out a b c", INTO_FOLDER),
    "IntoAFile": Scenario("-o out a b c", [written("out", b"old", ALL, *"abc")], {"out": b"old"}),
    "IntoANewFile": Scenario("-o out a b c", [written("out", None, ALL, *"abc")]),
    "IntoAnInput": Scenario("-o b a b c", [written("b", OLD["b"], ALL, *"ac")]),
    "IntoALink": Scenario("-o c a b", [written("real/c", OLD["c"], NEW["a"] + NEW["b"], *"abc")]),
    "ToStandardOutput": Scenario("a b c", [Part({*"abc", "(stdout)"}, {STDOUT: endsEarly}, {STDOUT: ALL})]),
    # As on file systems that have no files without a name.
    "InPlaceWithTemporaryNames": Scenario("-i.bak a b c", WITH_BACKUPS, {"b.bak": OLDER}, "tmpfile 0 EOPNOTSUPP"),
    "IntoANewFileWithATemporaryName": Scenario("-o out a b c", [written("out", None, ALL, *"abc")],
                                               always="tmpfile 0 EOPNOTSUPP"),
}
