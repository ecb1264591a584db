"""Tidewright's Python package: addons that run beside the scripts.

An addon is a Python file the server loads with ``tw_load NAME`` (see ``tw._addons`` for where it lives)
and unloads with ``tw_unload NAME``. It answers the server through handlers it registers with the
decorators below while it is imported::

    import tw
    import tw_C

    @tw.event("player_death")
    def on_death(event: tw.Event) -> None:
        tw_C.msg(f"{event['userid']} died")

    @tw.block("hello")                 # tw_doblock NAME/hello
    def hello() -> None:
        print("hello from Python", tw.block_args())

    @tw.tick                           # once a server frame
    def every_frame() -> None: ...

    @tw.say_filter                     # False eats the chat line
    def quiet(userid: int, text: str, teamonly: bool) -> bool | None: ...

    @tw.client_filter                  # False stops the client's command
    def guard(userid: int, command: str, args: str) -> bool | None: ...

Scripts see a game event before Python does. A block named ``load`` runs after the addon is imported, one
named ``unload`` when ``tw_unload`` takes it away. Every command of the scripts is a function of ``tw_C``
(``tw_C.set('x', 1)`` is ``tw_xset x 1``), with the value commands returning their value instead of storing
it. An exception in a handler is printed with its traceback and the server goes on.

Importing the package sends ``print`` output and tracebacks to the server console (``tw._console``).
"""
from __future__ import annotations

import gc
from typing import Callable, TypeVar

import tw_C

from tw import _console
from tw._addons import Addon, Event, addons, loadModuleAddon, printScriptList, unloadModuleAddon

__all__ = [
    "Addon", "Event", "addons", "loadModuleAddon", "unloadModuleAddon", "printScriptList",
    "event", "block", "tick", "say_filter", "client_filter", "block_args",
]

F = TypeVar("F", bound=Callable[..., object])


def event(*names: str) -> Callable[[F], F]:
    """Registers the function as the handler of the game events ``names``; it gets a :class:`Event`."""
    if not names or not all(isinstance(name, str) and name for name in names):
        raise TypeError("tw.event needs one or more event names")

    def register(handler: F) -> F:
        owner = addons.owner(handler)
        for name in names:
            addons.register_event(owner, name, handler)
        return handler

    return register


def block(name: str) -> Callable[[F], F]:
    """Registers the function as the block ``ADDON/name``, which ``tw_doblock`` and the script commands run.

    It runs to its end inside the call and reads its arguments with :func:`block_args`.
    """
    if not isinstance(name, str) or not name or "/" in name:
        raise TypeError("tw.block needs a block name without '/'")

    def register(handler: F) -> F:
        addons.owner(handler).blocks[name] = handler
        return handler

    return register


def tick(handler: F) -> F:
    """Registers the function to run once a server frame, after the frame's delayed commands."""
    addons.register_tick(addons.owner(handler), handler)
    return handler


def say_filter(handler: F) -> F:
    """Registers ``handler(userid, text, teamonly)`` for every chat line; False eats the line.

    ``text`` is the line as the engine gave it, quotes included. An eaten line fires no ``tw_player_chat``
    and runs no say command.
    """
    addons.owner(handler).say_filters.append(handler)
    return handler


def client_filter(handler: F) -> F:
    """Registers ``handler(userid, command, args)`` for every client command; False stops it.

    A stopped command reaches neither the game nor the plugin's registered client commands.
    """
    addons.owner(handler).client_filters.append(handler)
    return handler


def block_args() -> list[str]:
    """The arguments of the running block call (``tw_getargv`` 0, 1, ...)."""
    return [tw_C.getargv(i) for i in range(tw_C.getargc())]


_console.install()
# What start-up left behind goes now, so the collection at each level start reports that level's garbage.
gc.collect()
