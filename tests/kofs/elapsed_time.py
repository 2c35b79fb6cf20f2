"""Runs kofs on a terminal: a copy that takes long shows its time, and leaves no line behind, whether
it ends by itself or by Ctrl-C.

Long is as long as this program holds a lease on the source, which is something that Linux has.
"""
import concurrent.futures
import errno
import fcntl
import os
import pty
import select
import signal
import sys
import tempfile
import time


def read_terminal(master, until=None):
    """What comes until that text does, or the end."""
    text, end = b"", time.monotonic() + 20
    while (until is None or until not in text) and time.monotonic() < end:
        if not select.select([master], [], [], 1)[0]:
            continue
        try:
            chunk = os.read(master, 4096)
        except OSError as error:  # how Linux says that nobody has the terminal open any more
            if error.errno != errno.EIO:
                raise
            chunk = b""
        if not chunk:
            break
        text += chunk
    return text


def visible(text):
    """What a terminal shows after it."""
    screen = [""]
    for part in text.decode().replace("\r\n", "\n").split("\n"):
        line = ""
        for piece in part.split("\r"):
            line = piece + line[len(piece):]
        screen.append(line.rstrip())
    return "\n".join(screen).strip()


def run(kofs, interrupt, options=(), shows=True):
    with tempfile.TemporaryDirectory() as scratch:
        source = os.path.join(scratch, "source")
        held = os.open(source, os.O_RDWR | os.O_CREAT, 0o600)
        try:
            fcntl.fcntl(held, fcntl.F_SETLEASE, fcntl.F_WRLCK)
        except (AttributeError, OSError) as error:
            print("skipped: there are no leases here:", error)
            sys.exit(77)
        pid, master = pty.fork()
        if pid == 0:
            os.execv(kofs, [kofs, "copy-file", *options, source, os.path.join(scratch, "copy")])
        if shows:
            seen = read_terminal(master, b"kofs copy-file: 0:01")
            assert b"0:01" in seen, seen
        else:
            seen = b""
            time.sleep(1.3)
        if interrupt:
            os.write(master, b"\x03")
        else:
            fcntl.fcntl(held, fcntl.F_SETLEASE, fcntl.F_UNLCK)
        seen += read_terminal(master)
        status = os.waitpid(pid, 0)[1]
        os.close(master)
        os.close(held)
    return status, seen


def main(kofs):
    signal.signal(signal.SIGIO, signal.SIG_IGN)  # says that kofs waits
    with concurrent.futures.ThreadPoolExecutor() as pool:
        ended = pool.submit(run, kofs, interrupt=False)
        interrupted = pool.submit(run, kofs, interrupt=True)
        silent = pool.submit(run, kofs, interrupt=False, options=["--json"], shows=False)
    status, seen = ended.result()
    assert os.WIFEXITED(status) and os.WEXITSTATUS(status) == 0, status
    assert visible(seen) == "", seen
    status, seen = interrupted.result()
    assert os.WIFSIGNALED(status) and os.WTERMSIG(status) == signal.SIGINT, status
    assert visible(seen) == "", seen
    status, seen = silent.result()
    assert seen.startswith(b"{") and b"0:01" not in seen, seen


main(sys.argv[1])
