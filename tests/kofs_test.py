"""Runs kofs as people and scripts do, in a scratch folder that is the home directory's neighbour.

    kofs_test.py KOFS FOLDER    FOLDER has its manual page and its completions
"""
import concurrent.futures
import contextlib
import errno
import fcntl
import functools
import json
import os
import pty
import re
import select
import signal
import subprocess
import sys
import tempfile
import unittest

KOFS, SOURCE = map(os.path.abspath, sys.argv[1:3])
ODD = "n\n\x1b\u202e"

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
    ("copy --verbose t t2", 0, "t -> t2\n", ""),
    ("copy --progress t t3", 2, "", "--progress is for --json;"),
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
    pid, master = pty.fork()
    if pid == 0:
        os.execv(KOFS, [KOFS, *words])
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
        for name in ("t", "odd"):
            os.mkdir(name)
        for name in (b"t/x", b"odd/b", b"odd/\xff"):
            open(name, "w").close()
        for text, name in ((b'a "b"\\\n\xc3\x9c', "l"), (b"\xff", "notutf8"), (b"loop", "loop")):
            os.symlink(text, name)

    def test_removes_what_is_named_and_not_the_home_directory(self):
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
        with open(os.path.join(SOURCE, "kofs.1")) as file:
            examples = re.findall(r"^\.Dl (.*)", file.read(), re.M)
        self.assertGreater(len(examples), 3)
        path = os.path.dirname(KOFS) + os.pathsep + os.environ["PATH"]
        for line in examples * 2:
            line = line.replace(r"\(aq", "'")
            ran = subprocess.run(line, shell=True, env={**os.environ, "PATH": path}, capture_output=True)
            self.assertEqual((ran.returncode, ran.stderr), (0, b""), (line, ran))

    def copy_held_back(self, name, interrupt):
        """Copies a file that this program holds a lease on until the time is shown."""
        held = os.open(name, os.O_RDWR | os.O_CREAT, 0o600)
        try:
            fcntl.fcntl(held, fcntl.F_SETLEASE, fcntl.F_WRLCK)
        except (AttributeError, OSError) as error:
            self.skipTest(f"there are no leases here: {error}")
        pid, master = on_terminal("copy-file", name, name + "2")
        seen = read_terminal(master, b"kofs copy-file: 0:01")
        if interrupt:
            os.write(master, b"\x03")
        else:
            fcntl.fcntl(held, fcntl.F_SETLEASE, fcntl.F_UNLCK)
        seen += read_terminal(master)
        os.close(master)
        os.close(held)
        return os.waitpid(pid, 0)[1], seen

    def test_the_time_is_shown_and_goes(self):
        signal.signal(signal.SIGIO, signal.SIG_IGN)  # says that kofs waits
        with concurrent.futures.ThreadPoolExecutor() as pool:
            runs = [pool.submit(self.copy_held_back, name, name == "interrupted") for name in ("ended", "interrupted")]
        for run, expected in zip(runs, (0, signal.SIGINT)):
            status, seen = run.result()
            self.assertEqual(status, expected, seen)
            self.assertRegex(seen, rb"^\r?(kofs copy-file: 0:0\d\r?)+(\^C)?\r {22}\r$")

    def test_ctrl_c_ends_a_copy_between_two_entries(self):
        signal.signal(signal.SIGIO, signal.SIG_IGN)  # says that kofs waits
        os.mkdir("tree")
        held = [os.open(f"tree/{number}", os.O_RDWR | os.O_CREAT, 0o600) for number in range(3)]
        try:
            for file in held:
                os.write(file, b"abc")
                fcntl.fcntl(file, fcntl.F_SETLEASE, fcntl.F_WRLCK)
        except (AttributeError, OSError) as error:
            self.skipTest(f"there are no leases here: {error}")
        pid, master = on_terminal("copy", "--recursive", "tree", "copied")
        seen = read_terminal(master, b"/s ")
        os.write(master, b"\x03")
        seen += read_terminal(master, b"ending after this entry")
        for file in held:
            os.close(file)
        seen += read_terminal(master)
        os.close(master)
        self.assertEqual((os.waitpid(pid, 0)[1], len(os.listdir("copied"))), (signal.SIGINT, 1), seen)
        self.assertRegex(seen, rb"\rkofs copy: 0:01 \[\.+\] 25 % of 4, 0 % of 9 B, 0 B/s ")
        self.assertRegex(seen, rb"\r +\rkofs copy: interrupted; entries copied: 2 \(3 B\)\r\n$")

    def test_completions_and_manual_have_all_commands_and_options(self):
        def offered(*words):
            program = '. "$0"; COMP_WORDS=(kofs "$@"); COMP_CWORD=$#; _kofs; printf "%s\\n" "${COMPREPLY[@]}"'
            bash = os.path.join(SOURCE, "completion", "kofs.bash")
            return set(subprocess.check_output(["bash", "-c", program, bash, *words], text=True).split())

        with open(os.path.join(SOURCE, "completion", "_kofs")) as file:
            zsh = file.read()
        with open(os.path.join(SOURCE, "kofs.1")) as file:
            manual = file.read()
        commands = set(re.findall(r"^  ([a-z-]+)", kofs("--help").stdout.split("Commands:\n")[1].split("\n\n")[0], re.M))
        self.assertGreater(len(commands), 30)
        self.assertEqual(offered("") - {"--json", "--help", "--version"}, commands)
        self.assertEqual(set(re.findall(r"^ +['\"]([a-z-]+):", zsh, re.M)), commands)
        self.assertEqual(set(re.findall(r"^(?:\.It )?\.?Cm ([a-z-]+)(?= (?:Ar|Oo|Op)|$)", manual, re.M)), commands)
        in_zsh, copying = {}, re.search(r"copying=\((.*?)\n    case", zsh, re.S)[1]
        for names, text in re.findall(r"^    ([a-z |-]+)\)\s+options=\((.*?)\) ;;", zsh, re.M | re.S):
            text = text.replace("$either", "'--file[ '--directory[").replace("$expand", "'--expand[")
            text = text.replace("$copying", "".join(re.findall(r"['*)]--[a-z-]+", copying)))
            for name in names.split(" | "):
                in_zsh[name] = set(re.findall(r"['*)](--[a-z0-9-]+)", text.replace("$print0", "'--print0[")))
        for command in commands:
            options = set(re.findall(r"^  (?:-h,)?(--[a-z0-9-]+)", kofs(command, "--help").stdout, re.M))
            self.assertEqual({each.strip("=") for each in offered(command, "-")}, options, command)
            self.assertEqual(in_zsh.get(command, set()), options - {"--json", "--help"}, command)
            for option in options:
                self.assertIn(f"Fl -{option.strip('-')}", manual)
        self.assertEqual(offered("permissions", "--add", "=", "group_read,sti"), {"group_read,sticky_bit"})
        self.assertEqual(offered("copy", "--", "-"), set())


unittest.main(argv=sys.argv[:1])
