# Messages to clients from tw_C: every call gives None; what reaches the clients shows as delivery lines.
import tw
import tw_C


def show(label: str, value: object) -> None:
    print(f"{label}: {value!r} {type(value).__name__}")


@tw.block("send")
def send() -> None:
    userid = tw.block_args()[1]
    show("msg", tw_C.msg("#green", "hello", "everybody"))
    show("tell", tw_C.tell(userid, "hello you"))
    show("tell without a blank behind the userid", tw_C.tell(userid))
    show("centermsg", tw_C.centermsg("in the centre"))
    show("toptext", tw_C.toptext(userid, 5, "#red", "at the top"))
    show("menu", tw_C.menu(0, userid, "1. Yes\n2. No", "3"))
    show("escmenu", tw_C.escmenu(10, userid, "Title", "Pick", "one", "two"))
    show("precachesound", tw_C.precachesound("ambient/python.wav"))
    show("playsound", tw_C.playsound(userid, "ambient/python.wav", 0.5))
    show("lightstyle", tw_C.lightstyle(0, "abc"))
    show("usermsg create", tw_C.usermsg("create", "pymsg", "SayText"))
    show("usermsg write", tw_C.usermsg("write", "byte", "pymsg", 1))
    show("usermsg write", tw_C.usermsg("write", "string", "pymsg", "from python"))
    show("usermsg send", tw_C.usermsg("send", "pymsg", userid))
    show("usermsg delete", tw_C.usermsg("delete", "pymsg"))
    k = tw_C.keypcreate()
    tw_C.keypsetstring(k, "title", "sent by key")
    tw_C.keypsetstring(k, "msg", "a dialog")
    show("sendkeypmsg", tw_C.sendkeypmsg(int(userid), 0, k))
