"""The example Python addon: `tw_load example`, `tw_unload example`.

It keeps a tally of kills in a server variable, greets players, answers a block that scripts can call,
hides chat lines that start with "!secret", and counts server frames.
"""
import tw
import tw_C

frames = 0


@tw.block("load")
def load() -> None:
    tw_C.set("example_kills", 0)
    print("example: loaded; try tw_doblock example/report")


@tw.block("unload")
def unload() -> None:
    print(f"example: unloading after {frames} frames")


@tw.block("report")
def report() -> None:
    """tw_doblock example/report, or from a script line."""
    print(f"example: {tw_C.getInt('example_kills')} kills, {len(tw_C.getUseridList())} players, "
          f"{frames} frames")


@tw.event("player_activate")
def greet(event: tw.Event) -> None:
    userid = event.get_int("userid")
    tw_C.tell(userid, f"Welcome, {tw_C.getplayername(userid)}!")


@tw.event("player_death")
def count_kill(event: tw.Event) -> None:
    if event.get_int("attacker") not in (0, event.get_int("userid")):
        tw_C.setInt("example_kills", tw_C.getInt("example_kills") + 1)


@tw.tick
def count_frame() -> None:
    global frames
    frames += 1


@tw.say_filter
def hide_secrets(userid: int, text: str, teamonly: bool) -> bool:
    return not text.strip('"').startswith("!secret")
