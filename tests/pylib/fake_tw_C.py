"""A stand-in for the plugin's module tw_C, for testing the package tw without a server.

It answers the few methods the package calls and records what it was asked: `printed` holds the lines
given to printmsg, `dbgmsgs` the (level, text) pairs of dbgmsg. Tests set `variables`, `event` (a dict, or
None for no current event) and `command` (argv of the engine's current command).
"""
import os
import sys
import types

PYLIB = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "pylib"))


class FakeTwC(types.ModuleType):
    def __init__(self) -> None:
        super().__init__("tw_C")
        self.reset()

    def reset(self) -> None:
        self.printed: list[str] = []
        self.dbgmsgs: list[tuple[int, str]] = []
        self.variables: dict[str, str] = {}
        self.event: dict[str, str] | None = None
        self.command: list[str] = []

    def printmsg(self, text: str) -> int:
        if not isinstance(text, str) or "\0" in text or len(text.encode("utf-8")) > 2046:
            raise ValueError("printmsg: not a console line")
        self.printed.append(text)
        return 1

    def dbgmsg(self, level, text) -> None:
        self.dbgmsgs.append((int(level), str(text)))

    def getString(self, name: str) -> str:
        if name not in self.variables:
            raise SystemError(f'The var "{name}" could not be found')
        return self.variables[name]

    def getEventInfo(self, name: str) -> str:
        if self.event is None:
            raise SystemError("getEventInfo: no game event is current")
        return self.event.get(name, "")

    def cmdargv(self, index: int) -> str:
        return self.command[index] if 0 <= index < len(self.command) else ""

    def cmdargs(self) -> str:
        return " ".join(self.command[1:])


fake = FakeTwC()


def import_tw():
    """The package tw, imported once against the fake; the process's own channels stay where they were."""
    if "tw" not in sys.modules:
        sys.modules["tw_C"] = fake
        if PYLIB not in sys.path:
            sys.path.insert(0, PYLIB)
        saved = sys.stdout, sys.stderr
        try:
            import tw  # noqa: F401  (installs the console writers)
        finally:
            sys.stdout, sys.stderr = saved
    return sys.modules["tw"]
