"""Runs kofs with --json and reads what it prints, failures too, as a script would."""
import json
import os
import subprocess
import sys
import tempfile

# Arguments, exit status, and what to find: paths into the objects of the lines, and values.
ROWS = [
    ("exists f", 0, {"0/result": True, "0/operands/0": "f"}),
    ("exists nothing", 1, {"0/result": False}),
    ("read-symlink l", 0, {"0/result": 'a "b"\\\n\u00dc'}),
    ("symlink-status l", 0, {"0/result/type": "symbolic link"}),
    ("symlink-status nothing", 1, {"0/result": None}),
    ("status-express-light f", 0, {"0/result/size": 3, "0/result/written": "2001-09-09T01:46:40.000000Z"}),
    ("status f bad\udcff l", 1, {"0/result/status/mode": "0640", "1/error/class": "InvalidArgument",
                                 "2/result/status": None, "2/result/filename": "l"}),
    ("access --write f", 0, {"0/result": True}),
    ("relative /a/b /a", 0, {"0/result": "b", "0/operands/1": "/a"}),
    ("equivalent f f", 0, {"0/result": True}),
    ("create-directory d f e", 1, {"0/done": True, "0/operands/0": "d", "1/operands/0": "f",
                                   "1/error/class": "FileExistsError", "1/error/path": "f",
                                   "1/error/id": "ko:filesystem:FileExistsError",
                                   "1/error/what": "ko:filesystem:FileExistsError",
                                   "1/error/arguments": [], "1/error/number": 0}),
    ("create-shortcut a b", 1, {"0/error/class": "InvalidOperation"}),
    ("copy-file f g", 0, {"0/done": True}),
    ("remove-all d g", 0, {"0/done": True, "1/done": True}),
    ("exists --nonsense f", 2, {"0/error/class": "usage", "0/error/what": "no such option: --nonsense"}),
    ("no-command", 2, {"0/error/class": "usage", "0/command": None}),
]


def look_up(value, path):
    for step in path.split("/"):
        value = value[int(step) if isinstance(value, list) else step]
    return value


def main(kofs):
    kofs = os.path.abspath(kofs)
    with tempfile.TemporaryDirectory() as scratch:
        os.chdir(scratch)
        with open("f", "w") as file:
            file.write("abc")
        os.chmod("f", 0o640)
        os.utime("f", (1_000_000_000, 1_000_000_000))
        os.symlink(b'a "b"\\\n\xc3\x9c', "l")
        for line, status, expected in ROWS:
            asks = any("result" in path for path in expected) or status == 2 and line != "no-command"
            # Behind the command as well where that asks only.
            for command in [["--json", *line.split()], [*line.split(), "--json"]][:1 + asks]:
                ran = subprocess.run([kofs, *command], capture_output=True)
                found = [json.loads(each) for each in ran.stdout.decode("ascii").splitlines()]
                assert ran.returncode == status and ran.stderr == b"", (command, ran)
                assert len(found) == 1 + max(int(path[0]) for path in expected), (command, ran)
                for path, value in expected.items():
                    assert look_up(found, path) == value, (command, path, ran)
        os.chdir("/")


main(sys.argv[1])
