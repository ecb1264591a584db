# Prints each frame's tick while ticker_loud is 1.
import tw
import tw_C

frames = 0


@tw.tick
def count() -> None:
    global frames
    frames += 1
    if tw_C.getInt("ticker_loud") == 1:
        print(f"tick {frames}")
