# kx7text - tests of kx7conv: nobody gains a right to a text by its conversion, and nothing else is lost by it.
import os
import shutil
import subprocess
import unittest

from program import KX7CONV, Test, asUser, inMemory, needsRoot, preloaded

SOURCE = b"\xd0"
RESULT = "Π".encode()
OWNER, OTHER, GROUP = 1001, 1002, 1003


class Rights(Test):
    def setUp(self):
        super().setUp()
        self.folder.chmod(0o777)
        # Whoever runs it can reach it.
        self.program = shutil.copy(KX7CONV, self.folder / "program")

    def add(self, name, mode=0o644, owner=0, group=0, data=SOURCE):
        path = self.folder / name
        path.write_bytes(data)
        if os.getuid() == 0:
            os.chown(path, owner, group)
        path.chmod(mode)
        return path

    def convert(self, *arguments, status=0, messages="", **options):
        done = subprocess.run([self.program, "-f", "1253", *arguments], cwd=self.folder, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, timeout=60, **options)
        self.assertEqual((done.returncode, done.stderr.decode()), (status, messages))

    def mode(self, name):
        return (self.folder / name).stat().st_mode & 0o7777

    def setAcl(self, entries, name, *options):
        subprocess.run(["setfacl", *options, "-m", entries, name], cwd=self.folder, check=True)

    def acl(self, name):
        text = subprocess.check_output(["getfacl", "-cnpE", name], cwd=self.folder, text=True)
        return [line for line in text.splitlines() if line]


class Replaced(Rights):
    def testAnAccessControlListIsKept(self):
        for arguments in (["-i", "a"], ["-o", "a", "b"], ["-i.bak", "a"]):
            self.add("a", 0o600)
            self.add("b")
            self.setAcl(f"u:{OTHER}:r,g:{GROUP}:rw,m::rw", "a")
            before = self.acl("a")
            self.convert(*arguments)
            self.assertEqual((self.acl("a"), self.mode("a"), (self.folder / "a").read_bytes()), (before, 0o660, RESULT))

    def testWhatTheFolderGivesToNewFilesIsNotAddedToAnOldOne(self):
        self.setAcl(f"u:{OTHER}:rw", ".", "-d")
        self.add("a", 0o640)
        subprocess.run(["setfacl", "-b", "a"], cwd=self.folder, check=True)
        (self.folder / "a").chmod(0o640)
        self.convert("-i", "a")
        self.assertEqual(self.acl("a"), ["user::rw-", "group::r--", "other::---"])

    def testAttributesAreKept(self):
        path = self.add("a")
        os.setxattr(path, "user.origin", b"x" * 2000)
        os.setxattr(path, "user.empty", b"")
        if os.getuid() == 0:
            os.setxattr(path, "trusted.label", b"label")
            os.setxattr(path, "security.label", b"secret")
        before = {name: os.getxattr(path, name) for name in os.listxattr(path)}
        self.convert("-i", "a")
        self.assertEqual({name: os.getxattr(path, name) for name in os.listxattr(path)}, before)

    def testTimesAreKeptInPlaceOnly(self):
        path = self.add("a")
        old = self.add("old")
        for changed in (path, old):
            os.utime(changed, ns=(10**18 + 1, 10**18 + 3))
        self.convert("-i", "a")
        self.assertEqual((path.stat().st_atime_ns, path.stat().st_mtime_ns), (10**18 + 1, 10**18 + 3))
        self.convert("-o", "old", self.add("b"))
        self.assertGreater(old.stat().st_mtime_ns, 10**18 + 3)

    @needsRoot
    def testAGroupThatCannotBeKeptLeavesItsRightsToNobody(self):
        for before, after in ((0o664, 0o644), (0o674, 0o644), (0o604, 0o600), (0o6775, 0o755)):
            path = self.add("a", before, 0, GROUP)
            self.convert("-i", "a", messages="kx7conv: a: not kept: owner, group\n", **asUser(OWNER))
            self.assertEqual((path.stat().st_uid, path.stat().st_gid, self.mode("a")), (OWNER, OWNER, after))
            path.unlink()
            path = self.add("a", before & 0o770, OWNER, GROUP)
            self.convert("-i", "a", messages="kx7conv: a: not kept: group\n", **asUser(OWNER))
            self.assertEqual((path.stat().st_gid, self.mode("a") & 0o2077), (OWNER, 0))
            path.unlink()

    @needsRoot
    def testAGroupThatOneBelongsToIsKept(self):
        path = self.add("a", 0o2664, 0, GROUP)
        self.convert("-i", "a", messages="kx7conv: a: not kept: owner\n", **asUser(OWNER, GROUP))
        self.assertEqual((path.stat().st_gid, self.mode("a")), (GROUP, 0o2664))

    @needsRoot
    def testOwnerAndGroupAreKept(self):
        path = self.add("a", 0o6754, OTHER, GROUP)
        self.convert("-i", "a")
        self.assertEqual((path.stat().st_uid, path.stat().st_gid, self.mode("a")), (OTHER, GROUP, 0o6754))

    @needsRoot
    def testAnAccessControlListLosesTheRightsOfALostGroup(self):
        self.add("a", 0o600, 0, GROUP)
        self.setAcl(f"u:{OWNER}:r,u:{OTHER}:rw,g::rw,o::r", "a")
        self.convert("-i", "a", messages="kx7conv: a: not kept: owner, group\n", **asUser(OWNER))
        self.assertEqual(self.acl("a"), ["user::rw-", f"user:{OWNER}:r--", f"user:{OTHER}:rw-", "group::r--",
                                         "mask::rw-", "other::r--"])

    @needsRoot
    def testNobodyGainsARightByALostGroupOfAnAccessControlList(self):
        for entries, after in ((f"u:{OWNER}:r,g::rw,m::r,o::rw", ["group::r--", "mask::r--", "other::r--"]),
                               (f"g:{OWNER}:-,g::rw,m::rw,o::rw",
                                ["group::---", f"group:{OWNER}:---", "mask::rw-", "other::rw-"]),
                               (f"g:{OTHER}:r,g::rw,m::rw,o::rw",
                                ["group::r--", f"group:{OTHER}:r--", "mask::rw-", "other::rw-"])):
            path = self.add("a", 0o600, OTHER, GROUP)
            self.setAcl(f"u:{OWNER}:r,{entries}", "a", "-n")
            self.convert("-i", "a", messages="kx7conv: a: not kept: owner, group\n", **asUser(OWNER))
            self.assertEqual(self.acl("a"), ["user::rw-", f"user:{OWNER}:r--", *after], entries)
            path.unlink()

    def testWithoutItsAccessControlListAFileIsNotOpenToWhoeverItShutOut(self):
        environment = preloaded("KX7CONV_SWAPS", KX7CONV_NO_ACL="1")
        for entries, after in ((f"u:{OTHER}:-,g::r,o::r", 0o600), (f"u:{OTHER}:rw,g::r,o::r", 0o644),
                               (f"u:{OTHER}:rw,g::-,o::-", 0o600)):
            self.add("a")
            self.setAcl(entries, "a")
            self.convert("-i", "a", messages="kx7conv: a: not kept: access control list\n", env=environment)
            self.assertEqual((self.mode("a"), os.listxattr(self.folder / "a")), (after, []), entries)
            (self.folder / "a").unlink()


class New(Rights):
    def testAPrivateInputStaysPrivate(self):
        (self.folder / "in/sub/deep").mkdir(parents=True)
        for folder, mode in (("in", 0o750), ("in/sub", 0o700), ("in/sub/deep", 0o500)):
            self.add(f"{folder}/x", 0o600)
            self.add(f"{folder}/y", 0o664)
            (self.folder / folder).chmod(mode)
        for environment in (None, preloaded("KX7CONV_SWAPS", KX7CONV_NO_TMPFILE="1")):
            self.convert("-r", "--output-dir", "out", "in", env=environment)
            for name, mode in ((".", 0o750), ("x", 0o600), ("y", 0o644), ("sub", 0o700), ("sub/x", 0o600),
                               ("sub/y", 0o644), ("sub/deep", 0o700), ("sub/deep/y", 0o644)):
                self.assertEqual(self.mode(f"out/{name}"), mode, name)
            self.assertEqual(sorted(os.listdir(self.folder / "out")), ["sub", "x", "y"])
            shutil.rmtree(self.folder / "out")
            for name in ("x", "y"):
                self.convert("-o", "out", f"in/{name}", env=environment)
                self.assertEqual(self.mode("out"), 0o600 if name == "x" else 0o644)
                (self.folder / "out").unlink()
            self.convert("-o", "out", "in/y", "in/x", env=environment)
            self.assertEqual(self.mode("out"), 0o600)
            (self.folder / "out").unlink()

    def testAPrivateFolderOfAListStaysPrivate(self):
        """Wherever it is in the list: folders in it are not known before they are walked."""
        for folder, mode in (("open", 0o755), ("group", 0o750), ("private", 0o700)):
            (self.folder / folder).mkdir(mode)
            self.add(f"{folder}/{folder}")
            (self.folder / folder).chmod(mode)
        self.add("file")
        for names, mode in (("private", 0o700), ("open private", 0o700), ("private open", 0o700), ("file private", 0o700),
                            ("open group file", 0o750), ("open", 0o755)):
            for jobs in ("1", "3"):
                (self.folder / "list").write_text(names.replace(" ", "\n"))
                self.convert("-r", "-j", jobs, "--output-dir", "out", "--files-from", "list")
                self.assertEqual(sorted(os.listdir(self.folder / "out")), sorted(names.split()))
                self.assertEqual(self.mode("out"), mode, names)
                shutil.rmtree(self.folder / "out")
        self.convert("-r", "--output-dir", "out", "--files-from", "list", "private")
        self.assertEqual(self.mode("out"), 0o700)

    def testAnOutputFolderThatWasThereKeepsItsMode(self):
        for folder, mode in (("private", 0o700), ("out", 0o775)):
            (self.folder / folder).mkdir()
            (self.folder / folder).chmod(mode)
        self.add("private/a")
        (self.folder / "list").write_text("private")
        self.convert("-r", "--output-dir", "out", "--files-from", "list")
        self.assertEqual(self.mode("out"), 0o775)

    def testAnAccessControlListOfTheInputIsNoRightOfItsGroup(self):
        self.add("a", 0o600)
        self.setAcl(f"u:{OTHER}:rw", "a")
        self.convert("-o", "out", "a")
        self.assertEqual(self.mode("out"), 0o600)

    def testWhoIsShutOutByNameIsShutOutOfTheOutput(self):
        for entries, after in ((f"u:{OTHER}:-,o::r", 0o600), (f"g:{OTHER}:-,o::r", 0o600), (f"u:{OTHER}:r,o::r", 0o644),
                               (f"u:{OTHER}:rw,m::-,o::r", 0o600)):
            self.add("a", 0o664)
            self.setAcl(entries, "a", "-n")
            self.convert("-o", "out", "a")
            self.assertEqual(self.mode("out"), after, entries)
            for name in ("a", "out"):
                (self.folder / name).unlink()

    def testAnAccessControlListOfAFolderIsNoRightOfItsGroup(self):
        for folder in ("in", "in/sub"):
            (self.folder / folder).mkdir(0o700)
            self.setAcl(f"u:{OTHER}:rwx", folder)
        self.add("in/sub/a")
        self.convert("-r", "--output-dir", "out", "in")
        self.assertEqual((self.mode("out"), self.mode("out/sub")), (0o700, 0o700))

    def testTheFoldersAccessControlListIsThatOfNewFiles(self):
        for environment in (None, preloaded("KX7CONV_SWAPS", KX7CONV_NO_TMPFILE="1")):
            (self.folder / "out").mkdir()
            self.setAcl(f"u::rwx,u:{OTHER}:rwx,g::r,m::rw,o::r", "out", "-d")
            self.add("open", 0o664)
            self.add("private", 0o600)
            os.close(os.open(self.folder / "out/model", os.O_CREAT | os.O_WRONLY, 0o664))
            for arguments in (["-o", "out/open", "open"], ["--output-dir", "out", "open", "private"]):
                self.convert(*arguments, env=environment)
                self.assertEqual(self.acl("out/open"), self.acl("out/model"))
            self.assertEqual(self.acl("out/private"), ["user::rw-", f"user:{OTHER}:rwx", "group::r--", "mask::---",
                                                       "other::---"])
            shutil.rmtree(self.folder / "out")

    @needsRoot
    def testAFolderThatCannotBeReadNeedsNoReading(self):
        (self.folder / "out").mkdir()
        os.chown(self.folder / "out", OWNER, OWNER)
        (self.folder / "out").chmod(0o300)
        self.add("a")
        self.convert("-o", "out/x", "a", **asUser(OWNER))
        self.convert("--output-dir", "out", "a", **asUser(OWNER))
        self.assertEqual(sorted(os.listdir(self.folder / "out")), ["a", "x"])
        self.add("out/y", 0o644, OWNER, OWNER)
        self.convert("-i", "out/y", **asUser(OWNER))
        self.assertEqual((self.folder / "out/y").read_bytes(), RESULT)


ReplacedInMemory = inMemory(Replaced)
NewInMemory = inMemory(New)

if __name__ == "__main__":
    unittest.main()
