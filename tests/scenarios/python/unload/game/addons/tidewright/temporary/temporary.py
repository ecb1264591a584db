# Registers one of everything, with a module of its own beside it.
import tw
import tw_C

from . import helper


@tw.block("load")
def load() -> None:
    print("temporary loaded with", helper.GREETING)


@tw.block("hello")
def hello() -> None:
    print("temporary block")


@tw.event("round_start")
def round_start(event: tw.Event) -> None:
    print("temporary event")


@tw.tick
def tick() -> None:
    if tw_C.getInt("temporary_loud") == 1:
        print("temporary tick")


@tw.say_filter
def say(userid: int, text: str, teamonly: bool) -> bool:
    print("temporary filter")
    return True
