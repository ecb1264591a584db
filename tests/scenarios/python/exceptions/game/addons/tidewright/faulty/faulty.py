# An addon that raises at every point the server calls it; the tick only while faulty_tick is 1.
import tw
import tw_C


@tw.event("round_start")
def round_start(event: tw.Event) -> None:
    raise RuntimeError("in an event handler")


@tw.event("round_start")
def round_start_too(event: tw.Event) -> None:
    print("the next handler of the event still runs")


@tw.block("work")
def work() -> None:
    raise RuntimeError("in a block")


@tw.block("unload")
def unload() -> None:
    raise RuntimeError("in the unload block")


@tw.tick
def tick() -> None:
    if tw_C.getInt("faulty_tick") == 1:
        tw_C.setInt("faulty_tick", 0)
        raise RuntimeError("in a tick")


@tw.say_filter
def say(userid: int, text: str, teamonly: bool) -> bool:
    raise RuntimeError("in a say filter")


@tw.client_filter
def client(userid: int, command: str, args: str) -> bool:
    raise RuntimeError("in a client filter")
