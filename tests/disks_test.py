#!/usr/bin/env python3
"""Moves to file systems of the test's own: full ones, limited ones, and ones whose power is cut.

    tests/disks_test.py KOFS

Power is cut by copying the image of a mounted file system: the copy is what a disk would have. Needs root, to mount.
"""
import contextlib
import os
import pathlib
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

KOFS = pathlib.Path(sys.argv.pop(1)).resolve()
ENVIRONMENT = {**os.environ, "LC_ALL": "C"}


def run(*command):
    return subprocess.run([str(part) for part in command], check=True, capture_output=True, text=True)


@contextlib.contextmanager
def mounted(place, *options):
    place.mkdir(exist_ok=True)
    run("mount", *options, place)
    try:
        yield place
    finally:
        run("umount", place)


class Moves(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="ko-test-")).resolve()
        self.addCleanup(shutil.rmtree, self.folder)

    def move(self, source, target, **more):
        """The message of `kofs rename`; empty if it succeeds."""
        done = subprocess.run([KOFS, "rename", source, target], env={**ENVIRONMENT, "HOME": str(self.folder)},
                              capture_output=True, text=True, **more)
        self.assertEqual(done.returncode != 0, bool(done.stderr))
        return done.stderr.replace(f"{self.folder}/", "")

    def tmpfs(self, name, size):
        return mounted(self.folder / name, "-t", "tmpfs", "-o", f"size={size}", "none")

    def test_lose_nothing_in_a_cut_of_power(self):
        for name in "from", "to":
            with open(self.folder / f"{name}.img", "wb") as image:
                image.truncate(8 << 20)
            run("mkfs.ext4", "-q", "-F", image.name)
        contents = {"file": "precious", **{f"tree/{number}": f"content {number}" for number in range(30)}}
        with mounted(self.folder / "from", "-o", "loop", self.folder / "from.img") as source, \
                mounted(self.folder / "to", "-o", "loop", self.folder / "to.img") as target:
            (source / "tree").mkdir()
            for name, content in contents.items():
                (source / name).write_text(content)
            run("sync", "-f", source)
            for name in "file", "tree":
                self.assertEqual(self.move(source / name, target / name), "")
            run("sync", "-f", source)  # as any other program may do
            for name in "from", "to":
                shutil.copyfile(self.folder / f"{name}.img", self.folder / f"{name} after.img")
        with mounted(self.folder / "to", "-o", "loop", self.folder / "to after.img") as target:
            self.assertEqual({name: (target / name).read_text() for name in contents}, contents)

    def test_say_why_a_copy_is_short(self):
        big = self.folder / "big"
        big.write_bytes(bytes(300_000))
        (self.folder / "tree").mkdir()
        for name in "a", "b":
            (self.folder / "tree" / name).write_bytes(bytes(40_000))
        with self.tmpfs("small", "64k") as small:
            self.assertEqual(self.move(big, small / "big"), "kofs rename: big: No space left on device\n")
            (small / "big").unlink(missing_ok=True)
            self.assertEqual(self.move(self.folder / "tree", small / "tree"),
                             "kofs rename: tree: No space left on device\n")

        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (100_000, 100_000))

        with self.tmpfs("large", "4m") as large:
            self.assertEqual(self.move(big, large / "big", preexec_fn=limit), "kofs rename: big: File too large\n")
        self.assertEqual(big.stat().st_size, 300_000)
        self.assertEqual(sum(file.stat().st_size for file in (self.folder / "tree").iterdir()), 80_000)

    def test_name_what_stays(self):
        (self.folder / "tree" / "mount").mkdir(parents=True)
        with self.tmpfs("target", "1m") as target, self.tmpfs("tree/mount", "1m"):
            # Busy; libc++ goes on, and reports the directory above as not empty.
            self.assertRegex(self.move(self.folder / "tree", target / "tree"),
                             "^kofs rename: tree, target/tree: tree/mount: (Device or resource busy|Directory not empty)\n$")
            self.assertTrue((target / "tree/mount").is_dir())


def reason_to_skip():
    if os.geteuid() != 0:
        return "only root may mount"
    if not shutil.which("mkfs.ext4"):
        return "there is no mkfs.ext4"
    with tempfile.TemporaryDirectory() as folder:
        image = pathlib.Path(folder) / "image"
        image.write_bytes(bytes(1 << 20))
        try:
            run("mkfs.ext4", "-q", "-F", image)
            with mounted(pathlib.Path(folder) / "place", "-o", "loop", image):
                return None
        except subprocess.CalledProcessError as failed:
            return "images can't be mounted: " + failed.stderr.strip().replace("\n", " ")


if __name__ == "__main__":
    if reason := reason_to_skip():
        print("Skipped:", reason)
    else:
        unittest.main()
