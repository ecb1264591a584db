#!/usr/bin/env python3
"""The console on a terminal, driven through a pseudo-terminal as an operator's keyboard would drive it:
Ctrl-C clears a typed line, stops a running line and empties a buffer left busy, asks once on an empty
line and ends the server cleanly the second time; Ctrl-D ends it cleanly; history survives a restart.

Usage: console_terminal.py BUILD_DIR DEMO_DIR
"""
import fcntl
import os
import pty
import re
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import termios
import time

CTRL_C = b"\x03"
CTRL_D = b"\x04"
UP = b"\x1b[A"
# Generous: a runaway line takes its whole budget of commands before the prompt returns, which takes a
# while in the sanitizer build.
TIMEOUT = 180.0

# A block that queues itself twice: it fills the command buffer and keeps it full.
FLOOD = "block flood\n{\n  tw_doblock flood/flood\n  tw_doblock flood/flood\n}\n"


def take_terminal():
    """In the child: a session of its own with the pseudo-terminal as its controlling terminal, so that
    Ctrl-C typed there becomes SIGINT."""
    os.setsid()
    fcntl.ioctl(0, termios.TIOCSCTTY, 0)


class Console:
    """One server on a pseudo-terminal; `expect` waits for a pattern in what it printed after the last match."""

    def __init__(self, build, root, home, *args):
        master, slave = pty.openpty()
        env = dict(os.environ, HOME=home, TERM="dumb")
        self.process = subprocess.Popen(
            [os.path.join(build, "tidewright-server"), "--game", os.path.join(root, "game"), *args],
            stdin=slave, stdout=slave, stderr=slave, env=env, preexec_fn=take_terminal, cwd=root)
        os.close(slave)
        self.master = master
        self.seen = b""
        self.position = 0

    def send(self, data):
        os.write(self.master, data)

    def interrupt(self):
        """Ctrl-C as the terminal delivers it: SIGINT to the foreground process."""
        self.send(CTRL_C)

    def expect(self, pattern):
        deadline = time.time() + TIMEOUT
        regex = re.compile(pattern.encode() if isinstance(pattern, str) else pattern)
        while True:
            # Searching from a position keeps what comes before it visible to a look-behind.
            found = regex.search(self.seen, self.position)
            if found:
                self.position = found.end()
                return found
            left = deadline - time.time()
            if left <= 0 or not self._read(left):
                unmatched = self.seen[self.position:][-2000:].decode(errors="replace")
                raise AssertionError(f"never printed {pattern!r}; printed since the last match:\n{unmatched}")

    def _read(self, timeout):
        ready, _, _ = select.select([self.master], [], [], timeout)
        if not ready:
            return False
        try:
            chunk = os.read(self.master, 65536)
        except OSError:
            return False
        self.seen += chunk.replace(b"\r", b"")
        return bool(chunk)

    def finish(self):
        """Waits for the server to end and gives its exit status and everything it printed meanwhile."""
        try:
            status = self.process.wait(TIMEOUT)
        except subprocess.TimeoutExpired:
            self.process.kill()
            raise AssertionError("the server did not end")
        while self._read(0.2):
            pass
        os.close(self.master)
        return status, self.seen.decode(errors="replace")


# The prompt at the start of a line ("[Tidewright] " ends in the same two characters).
PROMPT = r"(?<=\n)\] "


def start(build, root, home, *args):
    console = Console(build, root, home, *args)
    console.expect("Level \"sim_map\" started")
    console.expect(PROMPT)
    # Proof of a clean end: the stand-in fires server_shutdown only on its way through LevelShutdown and Unload.
    console.send(b"sim_watch server_shutdown\n")
    console.expect(PROMPT)
    return console


def ends_cleanly(console):
    status, output = console.finish()
    assert "event server_shutdown: reason=quit" in output, output
    assert status == 0, f"exit status {status}"


def check_typed_line_and_double_interrupt(build, root, home):
    c = start(build, root, home)
    c.send(b"echo never shown")
    c.expect("echo never shown")
    c.interrupt()
    c.expect(r"\^C\n" + PROMPT)
    c.send(b"echo shown\n")
    c.expect(r"\nshown\n" + PROMPT)
    c.interrupt()
    c.expect(r"Ctrl-C again or Ctrl-D to end the server")
    c.expect(PROMPT)
    c.interrupt()
    ends_cleanly(c)


def check_ctrl_d_and_history(build, root, home):
    c = start(build, root, home)
    c.send(b"echo from the first run\n")
    c.expect(r"\nfrom the first run\n" + PROMPT)
    c.send(CTRL_D)
    ends_cleanly(c)
    with open(os.path.join(home, ".tidewright_history")) as f:
        assert "echo from the first run\n" in f.read()
    # The next run recalls it: the line before the last (sim_watch) is two steps up.
    c = start(build, root, home)
    c.send(UP + UP + b"\n")
    c.expect(r"\nfrom the first run\n" + PROMPT)
    c.send(b"quit\n")
    ends_cleanly(c)


def check_runaway(build, root, home):
    os.makedirs(os.path.join(root, "game/addons/tidewright/flood"), exist_ok=True)
    with open(os.path.join(root, "game/addons/tidewright/flood/tw_flood.txt"), "w") as f:
        f.write(FLOOD)
    c = start(build, root, home, "--cbuf-size", "100000")
    c.send(b"tw_load flood\n")
    c.expect(PROMPT)
    # Ctrl-C while the line runs empties the buffer and gives the prompt back.
    c.send(b"tw_doblock flood/flood\n")
    c.expect("Command buffer overflow")
    c.interrupt()
    c.expect(r"Interrupted: the command buffer is emptied \(\d+ bytes dropped\)\n")
    c.expect(PROMPT)
    c.send(b"echo alive\n")
    c.expect(r"\nalive\n" + PROMPT)
    c.send(b"quit\n")
    ends_cleanly(c)
    # With a small buffer the line comes back busy; Ctrl-C at the empty prompt empties what waits.
    c = start(build, root, home, "--cbuf-size", "4000")
    c.send(b"tw_load flood\n")
    c.expect(PROMPT)
    c.send(b"tw_doblock flood/flood\n")
    c.expect(r"Still busy after \d+ frames and \d+ commands; going on with \d+ bytes queued, next: ")
    c.expect(PROMPT)
    c.interrupt()
    c.expect(r"Interrupted: the command buffer is emptied \(\d+ bytes dropped\)\n" + PROMPT)
    c.send(b"echo alive\n")
    c.expect(r"\nalive\n" + PROMPT)
    c.send(CTRL_D)
    ends_cleanly(c)


def main():
    build, demo = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    work = tempfile.mkdtemp(prefix="tw-terminal-")
    try:
        root = os.path.join(work, "root")
        shutil.copytree(demo, root)
        home = os.path.join(work, "home")
        os.mkdir(home)
        for check in (check_typed_line_and_double_interrupt, check_ctrl_d_and_history, check_runaway):
            check(build, root, home)
            print(f"{check.__name__}: ok")
    finally:
        shutil.rmtree(work)


if __name__ == "__main__":
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    main()
