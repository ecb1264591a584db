import tw


@tw.block("unload")
def unload() -> None:
    print("python both runs its unload block")
