"""Runs kofs as people and scripts do, in a scratch folder that is the home directory's neighbour.

    kofs_test.py KOFS FOLDER    FOLDER has its manual page and its completions
"""
import contextlib
import errno
import fcntl
import functools
import json
import os
import pty
import re
import select
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import unittest

KOFS, PAGES = map(os.path.abspath, sys.argv[1:3])
ODD = "n\n\x1b\u202e"
ERASED = rb"^(\r[^\r]*\r)+\r +\r$"

# Arguments, exit status, and what is printed: all of it, or a part.
TEXT = [
    ("exists f", 0, "yes\n", ""),
    ("create_directory made", 0, "", ""),
    ("remove-all [a,b] {} ++ -- -x copy", 0, "", ""),
    ("exists a", 0, "yes\n", ""),
    ("status --expand ~", 0, "native form    {home}\n", ""),
    ("absolute ~", 0, "{here}/./~\n", ""),
    ("canonical --expand ~", 0, "{home}\n", ""),
    ("status loop", 1, "symbolic link", "kofs status: loop: "),
    ("explain f//x", 1, "collapsed      1\n", "kofs explain: f//x: Not a directory\n"),
    ("explain \U0001f600\udcff\udcfe", 1, "utf16          \\uD83D\\uDE00\\uFFFD\\uFFFD\n  substituted    4, 5\n",
     "kofs explain: \U0001f600\ufffd\ufffd: Invalid UTF-8\n"),
    ("explain --expand ~/", 0, "expanded       {home}\n", ""),
    ("read-symlink notutf8", 1, "", "kofs read-symlink: notutf8: the result has a name that is not UTF-8\n"),
    ("exists bad\udcff", 1, "", "kofs exists: bad\ufffd: Invalid UTF-8\n"),
    ("relative none /x", 1, "", "kofs relative: none, /x: no relative path leads there\n"),
    ("copy-file none \u00dc/g", 1, "", "kofs copy-file: none: No such file or directory\n"),
    ("copy-file f \u00dc/g", 1, "", "kofs copy-file: \u00dc/g: No such file or directory\n"),
    ("create-symlink f loop", 1, "", "kofs create-symlink: loop: "),
    ("create-symlink a f", 1, "", "kofs create-symlink: f: File exists\n"),
    ("create-directories f/x/y", 1, "", "kofs create-directories: f/x/y: f/x: Not a directory\n"),
    ("--version", 0, "ko::filesystem 1.", ""),
    ("", 2, "", "no command; see kofs --help\n"),
    ("status", 2, "", "kofs status: PATH is required; see kofs status --help\n"),
    ("access --e f", 2, "", "kofs access: no such option: --e; see kofs access --help\n"),
    ("copy f g -rf", 2, "", "kofs copy: no such option: -rf; see kofs copy --help\n"),
    ("remove --file --directory f", 2, "", "--file excludes --directory;"),
    ("permissions f", 2, "", "one of --set, --add and --remove is needed;"),
    ("permissions --set=10000 f", 2, "", "permissions end at 07777: 10000;"),
    ("permissions --add=owner_red f", 2, "", "no such permission: owner_red;"),
    ("list t", 0, "t/x\n", ""),
    ("list --recursive f t", 1, "t/x\n", "kofs list: f: Not a directory\n"),
    ("list odd", 1, "odd/b\n", "kofs list: odd: odd/\ufffd: Invalid UTF-8\n"),
    ("hard-link f ~", 1, "", "kofs hard-link: ~: File exists\n"),
    ("hard-link f name", 0, "", ""),
    ("resize name 5x", 2, "", "no size in bytes: 5x;"),
    ("resize name 5", 0, "", ""),
    ("touch --time=1999-12-31T23:59:59.5Z name", 0, "", ""),
    ("touch --time=now name", 2, "", "no time as 2024-01-31T12:00:00Z: now;"),
    ("list --long --recursive --sort=size t tree", 0, "-rw-r-----           3  2001-09-09T01:46:40Z  tree/sub/old\n", ""),
    ("list --long tree", 0, "lrwxrwxrwx           -  2001-09-09T01:46:40Z  tree/link -> ../f\n", ""),
    ("list --depth 2 --sort=name tree", 0, "tree/a\ntree/link\ntree/sub\ntree/sub/old\n", ""),
    ("list --depth 0 t", 2, "", "no number of levels: 0;"),
    ("list --sort=date t", 2, "", "no order: date;"),
    ("list --long --print0 t", 2, "", "--long excludes --print0;"),
    ("copy --verbose t t2", 1, "", "kofs copy: t, t2: a directory that is not empty: use --recursive\n"),
    ("copy --verbose empty e2", 0, "empty -> e2\n", ""),
    ("copy --recursive --verbose t t2", 0, "t -> t2\nt/x -> t2/x\n", ""),
    ("copy --recursive --overwrite --skip t t2", 2, "", "--overwrite excludes --skip;"),
    ("copy --progress t t3", 2, "", "--progress is for --json;"),
    ("copy --recursive tree c1", 1, "",
     "kofs copy: tree, c1: tree/link: a link: use --copy-links, --skip-links or --follow-links\n"),
    ("copy --recursive --skip-links tree c2", 0, "", ""),
    ("copy --recursive --follow-links tree c3", 1, "", "kofs copy: tree, c3: tree/link: No such file or directory\n"),
    ("copy --recursive --copy-links tree c4", 0, "", ""),
    ("copy --recursive --copy-links --update tree c4", 1, "", "kofs copy: c4: c4/link: File exists, and is not replaced by a link\n"),
    ("copy tree/link c5", 1, "", "a link that leads elsewhere from the working directory: use --copy-links"),
    ("copy to_link c5", 1, "", "kofs copy: to_link, c5: a link to a link is not followed: use --copy-links\n"),
    ("copy --follow-links to_link c5", 1, "", "kofs copy: to_link, c5: a link to a link is not followed\n"),
    ("copy to_f c5", 0, "", ""),
    ("copy --recursive pipes c6", 1, "", "kofs copy: pipes, c6: pipes/\u00dc/pipe: Unsupported file type\n"),
    ("copy --recursive pipes/\u00dc t/x/\u00dc", 1, "", "kofs copy: t/x/\u00dc: Not a directory\n"),
    ("remove-all", 2, "", "PATH is required"),
    ("remove-all --expand ~", 2, "", "no such option: --expand;"),
]

# The same with --json, and what to find: paths into the objects of the lines, and values.
JSON = [
    ("exists f", 0, {"0/result": True, "0/operands/0": "f"}),
    ("exists none", 1, {"0/result": False}),
    ("symlink-status l", 0, {"0/result/type": "symbolic link"}),
    ("symlink-status none", 1, {"0/result": None}),
    ("status-express-light f", 0, {"0/result/size": 3, "0/result/written": "2001-09-09T01:46:40.000000Z"}),
    ("list t", 0, {"0/result/path": "t/x", "0/result/type": "regular file"}),
    ("status f bad\udcff loop", 1, {"0/result/status/mode": "0640", "1/error/class": "InvalidArgument",
                                  "1/operands/0": "bad\ufffd", "2/result/exists": None,
                                  "2/result/symlink_status/type": "symbolic link", "2/result/error/number": errno.ELOOP}),
    ("explain l", 1, {"0/result/elements/0/link": 'a "b"\\\n\u00dc', "0/result/error/number": errno.ENOENT}),
    ("relative /a/b /a", 0, {"0/result": "b", "0/operands/1": "/a"}),
    ("create-directory d f e", 1, {"0/done": True, "0/operands/0": "d", "1/error/class": "FileExistsError",
                                   "1/error/path": "f", "1/error/id": "ko:filesystem:FileExistsError",
                                   "1/error/what": "ko:filesystem:FileExistsError",
                                   "1/error/message": "already exists: f", "1/error/reason": "File exists", "1/error/arguments": [], "1/error/number": 0}),
    ("remove-directory d", 0, {"0/done": True}),
    ("nonsense", 2, {"0/error/class": "usage", "0/command": None}),
    ("current-path --print0", 2, {"0/error/class": "usage"}),
    ("list --long --sort=name same2", 0, {"0/result/path": "same2/home", "0/result/link": "~", "1/result/size": 0}),
    ("list --long tree/sub", 0, {"0/result/path": "tree/sub/old", "0/result/size": 3, "0/result/mode": "0640"}),
    ("copy --recursive --overwrite t new", 0, {"0/done": True, "0/operands/1": "new"}),
    ("copy --recursive --update t t", 1, {"0/error/class": "InvalidArgument", "0/error/entry/from": "t"}),
    ("copy --recursive --skip-links --update same same2", 0, {"0/done": True, "0/copied": 0}),
    ("copy-file --update f a", 0, {"0/done": True, "0/copied": 0}),
    ("copy-file --overwrite f new2", 0, {"0/done": True, "0/copied": 1}),
    ("copy --recursive --skip pipes c7", 1, {"0/error/entry/from": "pipes/\u00dc/pipe", "0/error/entry/to": "c7/\u00dc/pipe"}),
]


def kofs(*words):
    return subprocess.run([KOFS, *words], capture_output=True, text=True, errors="surrogateescape")


def look_up(value, path):
    return functools.reduce(lambda at, step: at[int(step) if isinstance(at, list) else step], path.split("/"), value)


def read_terminal(master, until=None):
    """What comes until that text does, or the end."""
    text = b""
    with contextlib.suppress(OSError):  # EIO is how Linux says that nobody has the terminal open any more
        while (until is None or until not in text) and select.select([master], [], [], 20)[0]:
            chunk = os.read(master, 4096)
            if not chunk:
                break
            text += chunk
    return text


def on_terminal(*words):
    try:
        pid, master = pty.fork()
    except OSError as error:  # as in a container without /dev/pts
        raise unittest.SkipTest(f"there is no terminal: {error}")
    if pid == 0:
        os.execve(KOFS, [KOFS, *words], {**os.environ, "TERM": "dumb"})
    return pid, master


class Kofs(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.home, self.here = (os.path.join(os.path.realpath(scratch.name), name) for name in ("home", "here"))
        os.makedirs(os.path.join(self.home, "photos", "2024"))
        os.mkdir(self.here)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(self.here)
        os.environ["HOME"] = self.home
        for name in ("f", "~", "a", "[a,b]", "{}", "++", "-x", "copy", "report.txt", "notes.txt"):
            with open(name, "w") as file:
                file.write("abc")
        os.chmod("f", 0o640)
        os.utime("f", (1_000_000_000, 1_000_000_000))
        for name in ("t", "odd", "empty", "tree/sub", "same", "same2", "pipes/\u00dc"):
            os.makedirs(name)
        for name in (b"t/x", b"odd/b", b"odd/\xff", b"tree/a", b"same/x", b"same2/x"):
            open(name, "w").close()
        shutil.copy2("f", "tree/sub/old")
        os.mkfifo("pipes/\u00dc/pipe")
        for text, name in ((b'a "b"\\\n\xc3\x9c', "l"), (b"\xff", "notutf8"), (b"loop", "loop"), (b"f", "to_f"),
                           (b"to_f", "to_link"), (b"../f", "tree/link"), (b"x", "same/link"), (b"~", "same2/home")):
            os.symlink(text, name)
        os.utime("tree/link", (1_000_000_000, 1_000_000_000), follow_symlinks=False)

    def test_removes_what_is_named_and_not_the_home_directory(self):
        self.assertEqual(kofs("remove-all", "").stderr, "kofs remove-all: '': the path is empty\n")
        ran = subprocess.run(f"'{KOFS}' remove-all -- *", shell=True, capture_output=True)
        self.assertEqual((ran.returncode, os.listdir(), os.listdir(self.home)), (0, [], ["photos"]), ran)

    def test_text(self):
        for line, status, out, error in TEXT:
            with self.subTest(line):
                ran = kofs(*line.split())
                self.assertEqual(ran.returncode, status, ran)
                self.assertIn(out.replace("{home}", self.home).replace("{here}", self.here), ran.stdout)
                self.assertIn(error, ran.stderr)
                self.assertEqual((ran.stdout == "", ran.stderr == ""), (out == "", error == ""), ran)
                self.assertTrue(ran.stderr.count("\n") <= 1 or line == "", ran)

    def test_json(self):
        for before, after in ((["--json"], []), ([], ["--json"])):
            for line, status, expected in JSON:
                words = before + line.split() + after
                with self.subTest(words):
                    ran = kofs(*words)
                    found = [json.loads(each) for each in ran.stdout.splitlines()]
                    self.assertEqual((ran.returncode, ran.stderr, ran.stdout.isascii()), (status, "", True))
                    self.assertEqual(len(found), 1 + max(int(path[0]) for path in expected), ran)
                    for path, value in expected.items():
                        self.assertEqual(look_up(found, path), value, (path, ran))

    def test_names_are_escaped_on_a_terminal_only(self):
        self.assertEqual(kofs("absolute", "/" + ODD).stdout, f"/{ODD}\n")
        self.assertEqual(kofs("absolute", "--print0", "/" + ODD).stdout, f"/{ODD}\0")
        self.assertEqual(kofs("canonical", ODD).stderr,
                         "kofs canonical: n\\u000A\\u001B\\u202E: No such file or directory\n")
        pid, master = on_terminal("absolute", "/" + ODD)
        self.assertEqual(read_terminal(master), b"/n\\u000A\\u001B\\u202E\r\n")
        os.waitpid(pid, 0)

    def test_the_manuals_examples_work_twice(self):
        with open(os.path.join(PAGES, "kofs.1")) as file:
            examples = re.findall(r"^\.Dl (.*)", file.read().replace(r"\(aq", "'"), re.M)
        self.assertGreater(len(examples), 3)
        self.assertLessEqual(max(map(len, examples)), 80 - 11)  # what the margins leave
        path = os.path.dirname(KOFS) + os.pathsep + os.environ["PATH"]
        for line in examples * 2:
            ran = subprocess.run(line, shell=True, env={**os.environ, "PATH": path}, capture_output=True)
            self.assertEqual((ran.returncode, ran.stderr), (0, b""), (line, ran))

    def test_a_listing_goes_on_after_an_unreadable_directory(self):
        os.mkdir("tree/sub/closed", 0)
        os.mkdir("tree/sub/deep")
        program = [KOFS, "list", "--recursive", "--sort=name", "tree"]
        options = {"user": 65534, "group": 65534, "extra_groups": []} if os.geteuid() == 0 else {}
        for path in (os.path.dirname(self.here), self.here):
            os.chmod(path, 0o755)
        try:
            subprocess.run([KOFS, "--version"], capture_output=True, check=True, **options)
        except (PermissionError, subprocess.CalledProcessError) as error:  # below root's own folder
            self.skipTest(f"another user can't run kofs here: {error}")
        for more, status, said in (([], 1, "kofs list: tree: tree/sub/closed: Permission denied\n"), (["--skip-denied"], 0, "")):
            ran = subprocess.run(program + more, capture_output=True, text=True, **options)
            self.assertEqual((ran.returncode, ran.stderr), (status, said))
            self.assertEqual(ran.stdout.split(), ["tree/" + each for each in (
                "a", "link", "sub", "sub/closed", "sub/deep", "sub/old")])

    def on_held_file(self, name, *words):
        """Runs kofs on a terminal while this program holds a lease on the file."""
        signal.signal(signal.SIGIO, signal.SIG_IGN)  # says that kofs waits
        held = os.open(name, os.O_RDWR | os.O_CREAT, 0o600)
        self.addCleanup(os.close, held)
        try:
            fcntl.fcntl(held, fcntl.F_SETLEASE, fcntl.F_WRLCK)
        except (AttributeError, OSError) as error:
            self.skipTest(f"there are no leases here: {error}")
        pid, master = on_terminal(*words)
        self.addCleanup(os.close, master)
        return pid, master, held

    def test_the_time_is_shown_and_goes(self):
        pid, master, held = self.on_held_file("held", "copy-file", "held", "copied")
        seen = read_terminal(master, b"kofs copy-file: 0:01")
        fcntl.fcntl(held, fcntl.F_SETLEASE, fcntl.F_UNLCK)
        seen += read_terminal(master)
        self.assertEqual(os.waitpid(pid, 0)[1], 0, seen)
        self.assertRegex(seen, ERASED)

    def test_ctrl_c_ends_a_copy_within_a_file_and_removes_its_part(self):
        os.mkdir("\u5831\u544a")
        size = 1 << 20
        with open("\u5831\u544a/1", "w") as file:
            file.truncate(size)
        pid, master, held = self.on_held_file("\u5831\u544a/2", "copy", "--recursive", "\u5831\u544a", "copied")
        os.truncate(held, size)
        fcntl.ioctl(master, termios.TIOCSWINSZ, struct.pack("4H", 9, 70, 0, 0))
        seen = read_terminal(master, b"0:02 ")
        with open("copied/2", "w") as file:  # as if kofs had written it
            file.truncate(size // 2)
        seen += read_terminal(master, b"0:03 ") + read_terminal(master, b"\r")
        os.write(master, b"\x03")
        seen += read_terminal(master)
        self.assertEqual((os.waitpid(pid, 0)[1], os.listdir("copied") in ([], ["1"])), (signal.SIGINT, True), seen)
        self.assertRegex(seen, rb"[27]5 % of 2\.1 MB")
        self.assertRegex(seen.decode(), r"\r +\rkofs copy: interrupted; entries copied: [12] \((0 B|1\.0 MB)\)\r\n$")
        for line in re.split(r"\r\n?", seen.decode()):
            self.assertLess(len(line) + len(re.findall("[\u5831\u544a]", line)), 70)

    def test_help_and_completion_offer_all(self):
        def offered(*words):
            program = '. "$0"; COMP_WORDS=(kofs "$@"); COMP_CWORD=$#; _kofs; printf "%s\\n" "${COMPREPLY[@]}"'
            bash = os.path.join(PAGES, "kofs.bash")
            return set(subprocess.check_output(["bash", "-c", program, bash, *words], text=True).split())

        help_text = kofs("--help").stdout
        commands = set(re.findall(r"^  ([a-z-]+)", help_text.split("Commands:\n")[1].split("\n\n")[0], re.M))
        self.assertGreater(len(commands), 30)
        self.assertEqual(offered("") - {"--json", "--help", "--version"}, commands)
        for command in commands:
            text = kofs(command, "--help").stdout
            help_text += text
            options = set(re.findall(r"^  (?:-h,)?(--[a-z0-9-]+)", text, re.M))
            self.assertEqual({each.strip("=") for each in offered(command, "-")}, options, command)
        self.assertLessEqual(max(map(len, help_text.splitlines())), 80)
        self.assertEqual(offered("permissions", "--add", "=", "group_read,sti"), {"group_read,sticky_bit"})
        self.assertEqual(offered("list", "--sort", "=", "s"), {"size"})
        self.assertEqual(offered("copy", "--", "-"), set())


ran = unittest.main(argv=sys.argv[:1], exit=False).result
for test, reason in ran.skipped:
    print(f"Skipped: {test.id().rpartition('.')[2]}: {reason}")  # for scripts/test
sys.exit(not ran.wasSuccessful())
