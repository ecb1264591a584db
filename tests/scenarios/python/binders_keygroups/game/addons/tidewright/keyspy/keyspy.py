# Keygroups through tw_C: keygetvalue gives the value (None when there is none), the rest give None and
# leave the same groups the console commands would.
import tw
import tw_C


def show(label: str, value: object) -> None:
    print(f"{label}: {value!r} {type(value).__name__}")


@tw.block("keys")
def keys() -> None:
    show("keygroupcreate", tw_C.keygroupcreate("pygroup"))
    show("keycreate", tw_C.keycreate("pygroup", "first"))
    show("keysetvalue", tw_C.keysetvalue("pygroup", "first", "colour", "green"))
    show("keygetvalue", tw_C.keygetvalue("pygroup", "first", "colour"))
    show("keygetvalue missing value", tw_C.keygetvalue("pygroup", "first", "size"))
    show("keygetvalue missing key", tw_C.keygetvalue("pygroup", "nokey", "colour"))
    show("keycreate ungrouped", tw_C.keycreate("loose"))
    show("keysetvalue ungrouped", tw_C.keysetvalue("loose", "size", 3))
    show("keygetvalue ungrouped", tw_C.keygetvalue("loose", "size"))
    show("keygroupcopy", tw_C.keygroupcopy("pygroup", "pycopy"))
    show("keyrename", tw_C.keyrename("pycopy", "first", "renamed"))
    show("keygroupsave", tw_C.keygroupsave("pycopy"))
    show("keygroupdelete", tw_C.keygroupdelete("pycopy"))
    show("keygroupload", tw_C.keygroupload("pycopy"))
    show("keygetvalue after the load", tw_C.keygetvalue("pycopy", "renamed", "colour"))
    show("keylist", tw_C.keylist("pycopy"))
    show("keydelete", tw_C.keydelete("pygroup", "first"))
    show("keygetvalue after the delete", tw_C.keygetvalue("pygroup", "first", "colour"))
    show("keygroupgetpointer", tw_C.keygroupgetpointer("pycopy") > 0)
