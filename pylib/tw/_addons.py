"""Python addons: where they live, loading and unloading them, and the answers the plugin asks for.

An addon ``NAME`` is the file ``addons/tidewright/NAME/LAST.py`` under the game folder, where ``LAST`` is the
last part of the name (``games/ctf`` is ``addons/tidewright/games/ctf/ctf.py``), the same folder a text
script of that name would use. It is imported as a package of its own, so files beside it can be imported
relatively (``from . import helpers``). Names that have no such file are declined, so that text scripts load.

What an addon registers while it is imported, and whatever it registers later from its own module, belongs
to it; unloading it removes every handler and every module it brought.
"""
from __future__ import annotations

import importlib.util
import os
import sys
import traceback
import types
from dataclasses import dataclass, field
from typing import Any, Callable, Iterator

import tw_C

# Modules of addons are named under this prefix, so an addon never takes the place of another module.
MODULE_PREFIX = "twaddon."

Handler = Callable[..., Any]


@dataclass
class Addon:
    """One loaded addon and everything it registered, each list in the order of registration."""

    name: str
    module_name: str
    events: dict[str, list[Handler]] = field(default_factory=dict)
    blocks: dict[str, Handler] = field(default_factory=dict)
    ticks: list[Handler] = field(default_factory=list)
    say_filters: list[Handler] = field(default_factory=list)
    client_filters: list[Handler] = field(default_factory=list)

    def owns_module(self, module_name: str | None) -> bool:
        return module_name is not None and (
            module_name == self.module_name or module_name.startswith(self.module_name + "."))


class Event:
    """The game event being delivered, read as the scripts' ``event_var()`` reads it.

    ``event["userid"]`` is the value's text, ``""`` for a name the event lacks; ``event.name`` is the
    event's name. The values are those of the current event when they are read.
    """

    __slots__ = ("name",)

    def __init__(self, name: str) -> None:
        self.name = name

    def __getitem__(self, key: str) -> str:
        return tw_C.getEventInfo(key)

    def get_int(self, key: str, default: int = 0) -> int:
        """The value as an integer, or ``default`` when it isn't one."""
        try:
            return int(self[key])
        except ValueError:
            return default

    def get_float(self, key: str, default: float = 0.0) -> float:
        """The value as a float, or ``default`` when it isn't one."""
        try:
            return float(self[key])
        except ValueError:
            return default

    def __repr__(self) -> str:
        return f"<tw.Event {self.name}>"


_PACKAGE_DIR = os.path.dirname(os.path.abspath(__file__)) + os.sep


def print_addon_error() -> None:
    """Prints the exception being handled with its traceback from the addon's first frame on: the package's
    own frames (and the import machinery's) that called the addon are left out."""
    error = sys.exc_info()[1]
    frames = error.__traceback__
    while frames is not None and _is_callers_frame(frames.tb_frame.f_code.co_filename):
        frames = frames.tb_next
    traceback.print_exception(type(error), error, frames or error.__traceback__)


def _is_callers_frame(filename: str) -> bool:
    return filename.startswith(_PACKAGE_DIR) or filename.startswith("<frozen importlib")


def _run(handler: Handler, *args: Any) -> Any:
    """Calls an addon's handler; an exception is printed with its traceback and gives None."""
    try:
        return handler(*args)
    except BaseException:  # an addon's error, SystemExit included, never stops the server
        print_addon_error()
        return None


def _refuses(answer: Any) -> bool:
    """A filter refuses with False (or 0); None, from a filter that returns nothing, lets things pass."""
    return answer is not None and not answer


class Addons:
    """The loaded addons, in load order, and the six answers the plugin asks of them."""

    def __init__(self) -> None:
        self._loaded: dict[str, Addon] = {}
        self._loading: Addon | None = None
        # Event name to (addon, handler) in load order: the test for an event nobody wants is one lookup.
        self._events: dict[str, list[tuple[Addon, Handler]]] = {}
        self._ticks: list[tuple[Addon, Handler]] = []

    # ---- the plugin's calls ----

    def hasEvent(self, name: str) -> int:
        """1 when a loaded addon handles the event ``name``."""
        return 1 if name in self._events else 0

    def triggerEvent(self, name: str) -> None:
        """Runs every addon's handlers of the event, in load order, with the current event."""
        handlers = self._events.get(name)
        if not handlers:
            return
        event = Event(name)
        for _, handler in list(handlers):
            _run(handler, event)

    def callBlock(self, name: str) -> None:
        """Runs the block ``ADDON/BLOCK``. A name that no addon's block has is no error (level 1 note)."""
        addon_name, _, block = name.rpartition("/")
        addon = self._loaded.get(addon_name)
        handler = addon.blocks.get(block) if addon else None
        if handler is None:
            tw_C.dbgmsg(1, f"No Python block {name}")
            return
        _run(handler)

    def tick(self) -> None:
        """Runs every tick handler once; the plugin calls it once a server frame."""
        for _, handler in list(self._ticks):
            _run(handler)

    def sayFilter(self, userid: int, text: str, teamonly: int) -> int:
        """0 when a filter ate the chat line, 1 when it passes."""
        for addon in list(self._loaded.values()):
            for handler in list(addon.say_filters):
                if _refuses(_run(handler, userid, text, bool(teamonly))):
                    return 0
        return 1

    def clientCommand(self, userid: int) -> int:
        """0 when a filter stopped the client's command, 1 when the plugin goes on with it."""
        command, args = tw_C.cmdargv(0), tw_C.cmdargs()
        for addon in list(self._loaded.values()):
            for handler in list(addon.client_filters):
                if _refuses(_run(handler, userid, command, args)):
                    return 0
        return 1

    # ---- the addons ----

    def __iter__(self) -> Iterator[Addon]:
        return iter(list(self._loaded.values()))

    def __contains__(self, name: object) -> bool:
        return name in self._loaded

    def owner(self, handler: Handler) -> Addon:
        """The addon a handler registered now belongs to: the one being imported, else its module's."""
        if self._loading is not None:
            return self._loading
        module_name = getattr(handler, "__module__", None)
        for addon in self._loaded.values():
            if addon.owns_module(module_name):
                return addon
        raise RuntimeError(f"{getattr(handler, '__qualname__', handler)!r} belongs to no Python addon: "
                           "handlers are registered by an addon's own code")

    def register_event(self, addon: Addon, name: str, handler: Handler) -> None:
        addon.events.setdefault(name, []).append(handler)
        if addon is not self._loading:
            self._events.setdefault(name, []).append((addon, handler))

    def register_tick(self, addon: Addon, handler: Handler) -> None:
        addon.ticks.append(handler)
        if addon is not self._loading:
            self._ticks.append((addon, handler))

    def load(self, name: str) -> int:
        """Imports the addon ``name``; 0 when it has no file (the name is then a text script's)."""
        name = name.replace("\\", "/")
        path = _addon_file(name)
        if path is None:
            return 0
        if name in self._loaded:
            print(f"[Tidewright] The Python addon {name} is already loaded; tw_unload it first.")
            return 1
        addon = Addon(name, MODULE_PREFIX + ".".join(part.replace(".", "_") for part in name.split("/")))
        if not self._import(addon, path):
            print(f"[Tidewright] The Python addon {name} could not be loaded.")
            return 1
        self._loaded[name] = addon
        self._rebuild()
        print(f"[Tidewright] Loaded Python addon {name}")
        if "load" in addon.blocks:
            _run(addon.blocks["load"])
        return 1

    def unload(self, name: str) -> None:
        """Removes the addon ``name``: its handlers stop answering and its modules leave sys.modules."""
        addon = self._loaded.pop(name.replace("\\", "/"), None)
        if addon is None:
            tw_C.dbgmsg(1, f"No Python addon is named {name}")
            return
        self._rebuild()
        _forget_modules(addon)
        print(f"Python addon removed: {name}")

    def print_list(self) -> None:
        for addon in self._loaded.values():
            print(f"[Tidewright]   [  python] {addon.name}")

    # ---- inside ----

    def _import(self, addon: Addon, path: str) -> bool:
        """Runs the addon's file as its package; on an exception nothing of it stays."""
        found = importlib.util.spec_from_file_location(
            addon.module_name, path, submodule_search_locations=[os.path.dirname(path)])
        if found is None or found.loader is None:
            return False
        module = importlib.util.module_from_spec(found)
        _addons_package()
        sys.modules[addon.module_name] = module
        self._loading = addon
        try:
            found.loader.exec_module(module)
            return True
        except BaseException:
            print_addon_error()
            _forget_modules(addon)
            return False
        finally:
            self._loading = None

    def _rebuild(self) -> None:
        """The lookups over all loaded addons, in load order."""
        self._events = {}
        self._ticks = []
        for addon in self._loaded.values():
            for event, handlers in addon.events.items():
                self._events.setdefault(event, []).extend((addon, h) for h in handlers)
            self._ticks.extend((addon, h) for h in addon.ticks)


def _addon_file(name: str) -> str | None:
    """The file of the addon ``name``, or None when there is none or the name would leave the addon folder."""
    parts = name.split("/")
    if not name or any(part in ("", ".", "..") for part in parts):
        return None
    try:
        folder = tw_C.getString("tidewright_addondir")
    except SystemError:  # a server without its console variables has no addon folder
        return None
    path = os.path.join(folder, *parts, parts[-1] + ".py")
    return path if os.path.isfile(path) else None


def _addons_package() -> None:
    """The parent of every addon's module, which relative imports inside an addon need. It stays."""
    if MODULE_PREFIX.rstrip(".") not in sys.modules:
        package = types.ModuleType(MODULE_PREFIX.rstrip("."), "The modules of the loaded Python addons.")
        package.__path__ = []
        sys.modules[package.__name__] = package


def _forget_modules(addon: Addon) -> None:
    for module_name in [m for m in sys.modules if addon.owns_module(m)]:
        del sys.modules[module_name]


addons = Addons()


def loadModuleAddon(name: str) -> int:
    """The plugin's offer of a script name: non-zero when Python took it (loaded, or failed loudly)."""
    return addons.load(name)


def unloadModuleAddon(name: str) -> None:
    """Unloads the Python addon ``name``, if one is loaded."""
    addons.unload(name)


def printScriptList() -> None:
    """Prints the loaded Python addons, for the plugin's script list."""
    addons.print_list()
