# The command language's commands through tw_C: nothing is expanded, value commands give their value and
# leave the variables alone, commands without a value give None, and no usage is printed.
import tw
import tw_C


def show(label: str, value: object) -> None:
    print(f"{label}: {value!r} {type(value).__name__}")


@tw.block("variables")
def variables() -> None:
    show("set", tw_C.set("lang_a", "server_var(hostname)"))
    show("lang_a holds the letters", tw_C.getString("lang_a"))
    show("set with a number", tw_C.set("lang_b", 12))
    show("set with only a name", tw_C.set("lang_empty"))
    show("lang_empty", tw_C.getString("lang_empty"))
    show("setinfo", tw_C.setinfo("lang_info", "public value"))
    show("copy into a missing variable", tw_C.copy("lang_c", "lang_b"))
    tw_C.set("lang_c", "")
    show("copy", tw_C.copy("lang_c", "lang_b"))
    show("lang_c", tw_C.getString("lang_c"))
    show("forcevalue", tw_C.forcevalue("lang_c", 99))
    show("flags", tw_C.flags("add", "notify", "lang_c"))
    show("makepublic", tw_C.makepublic("lang_c"))
    show("getgame", tw_C.getgame())
    show("setString", tw_C.setString("lang_s", "text"))
    show("setInt", tw_C.setInt("lang_i", 7))
    show("setFloat", tw_C.setFloat("lang_f", 1.5))
    show("getInt getFloat getString", (tw_C.getInt("lang_i"), tw_C.getFloat("lang_f"), tw_C.getString("lang_s")))


@tw.block("exists")
def exists() -> None:
    show("exists variable", tw_C.exists("variable", "lang_b"))
    show("exists variable missing", tw_C.exists("variable", "lang_nothing"))
    show("exists command", tw_C.exists("command", "tw_xset"))
    show("exists script", tw_C.exists("script", "extra"))
    show("exists block", tw_C.exists("block", "extra/hello"))
    show("exists keygroup missing", tw_C.exists("keygroup", "nogroup"))
    show("exists userid", tw_C.exists("userid", 2))
    show("exists map", tw_C.exists("map", "de_anything"))
    show("exists saycommand", tw_C.exists("saycommand", "!py"))
    show("exists too few", tw_C.exists("variable"))


@tw.block("events")
def events() -> None:
    show("event initialize", tw_C.event("initialize", "round_start"))
    show("event setint", tw_C.event("setint", "round_start", "timelimit", 42))
    show("event fire", tw_C.event("fire", "round_start"))
    show("loadevents", tw_C.loadevents("resource/modevents.res"))
    show("regsaycmd", tw_C.regsaycmd("!py", "langpy/variables", "from Python"))
    show("dbgmsg", tw_C.dbgmsg(0, "a debug line at level 0"))
    show("commandv", tw_C.commandv("lang_cmd"))


@tw.event("round_start")
def round_start(event: tw.Event) -> None:
    print("the event fired from Python arrives with timelimit", event["timelimit"])
