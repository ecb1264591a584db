# An addon whose import fails half way: what it registered before the failure must not stay.
import tw


@tw.event("round_start")
def never(event: tw.Event) -> None:
    print("this handler must never run")


raise ImportError("broken on purpose")
