# The script engine's commands through tw_C: block arguments, the script list as a dictionary, the lifecycle.
import tw
import tw_C


def show(label: str, value: object) -> None:
    print(f"{label}: {value!r} {type(value).__name__}")


@tw.block("args")
def args() -> None:
    show("getargc", tw_C.getargc())
    show("getargv 0", tw_C.getargv(0))
    show("getargv 2", tw_C.getargv(2))
    show("getargv beyond", tw_C.getargv(9))
    show("getargs", tw_C.getargs())


@tw.block("noargs")
def noargs() -> None:
    show("getargc without arguments", tw_C.getargc())
    show("getargv without arguments", tw_C.getargv(0))
    show("getargs without arguments", tw_C.getargs())


@tw.block("lifecycle")
def lifecycle() -> None:
    show("load", tw_C.load("extra"))
    show("disable", tw_C.disable("extra"))
    show("list of all", tw_C.createscriptlist())
    show("list of one", tw_C.createscriptlist("CORELIB"))
    show("list of nobody", tw_C.createscriptlist("nobody"))
    show("doblock", tw_C.doblock("extra/hello"))
    show("load without a name", tw_C.load())
