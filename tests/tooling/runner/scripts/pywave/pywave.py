"""A Python addon of the runner's suite: says so when loaded and waves at every player who comes in."""
import tw
import tw_C


@tw.block("load")
def load() -> None:
    print("pywave is loaded")


@tw.event("player_activate")
def wave(event: tw.Event) -> None:
    print(f"pywave waves at {tw_C.getplayername(event.get_int('userid'))}")
