"""The interpreter's standard channels on the server console.

``sys.stdout`` and ``sys.stderr`` become writers that hand every finished line to ``tw_C.printmsg``, so that
``print`` output and tracebacks appear in order among the server's own lines and reach the server log
when the server routes its messages there.
"""
from __future__ import annotations

import io

import tw_C

# The longest text printmsg takes: a console line less its line end, in UTF-8 bytes.
MAX_LINE_BYTES = 2046


class ConsoleWriter(io.TextIOBase):
    """A text stream that prints whole lines on the server console.

    A line is printed when its line end is written. ``flush`` prints what is pending as a line of its own.
    Lines longer than a console line are printed in pieces, so nothing is lost.
    """

    def __init__(self, name: str) -> None:
        super().__init__()
        self._name = name
        self._pending = ""

    @property
    def name(self) -> str:
        return self._name

    @property
    def encoding(self) -> str:
        return "utf-8"

    def writable(self) -> bool:
        return True

    def isatty(self) -> bool:
        return False

    def write(self, text: str) -> int:
        if not isinstance(text, str):
            raise TypeError(f"write() argument must be str, not {type(text).__name__}")
        lines = (self._pending + text).split("\n")
        self._pending = lines.pop()
        for line in lines:
            _print_line(line)
        return len(text)

    def flush(self) -> None:
        if self._pending:
            pending, self._pending = self._pending, ""
            _print_line(pending)


def _print_line(line: str) -> None:
    """Prints one line through printmsg, in pieces that fit a console line."""
    data = line.replace("\0", "\\x00").encode("utf-8", "replace")
    while len(data) > MAX_LINE_BYTES:
        piece = data[:MAX_LINE_BYTES].decode("utf-8", "ignore")
        tw_C.printmsg(piece)
        data = data[len(piece.encode("utf-8")):]
    tw_C.printmsg(data.decode("utf-8"))


def install() -> None:
    """Sends sys.stdout and sys.stderr to the server console."""
    import sys

    sys.stdout = ConsoleWriter("<tidewright stdout>")
    sys.stderr = ConsoleWriter("<tidewright stderr>")
