# The world access commands through tw_C: each value with its Python type; a missing player gives None
# (or 0 where the command says so).
import tw
import tw_C


def show(label: str, value: object) -> None:
    print(f"{label}: {value!r} {type(value).__name__}")


@tw.block("players")
def players() -> None:
    alice, bot = tw.block_args()[1:3]
    show("getuserid", tw_C.getuserid("ali"))
    show("getuserid of nobody", tw_C.getuserid("nobody at all"))
    show("getplayername", tw_C.getplayername(alice))
    show("getplayername unknown", tw_C.getplayername(999))
    show("getplayersteamid", tw_C.getplayersteamid(alice))
    show("getplayersteamid unknown", tw_C.getplayersteamid(999))
    show("getplayerteam", tw_C.getplayerteam(alice))
    show("isbot", (tw_C.isbot(alice), tw_C.isbot(bot)))
    show("getplayerhandle", tw_C.getplayerhandle(alice) > 0)
    show("getplayerlocation", tw_C.getplayerlocation(alice))
    show("getplayermovement", tw_C.getplayermovement(alice))
    show("getclientvar", tw_C.getclientvar(alice, "cl_language"))
    show("getplayercount", (tw_C.getplayercount(), tw_C.getplayercount(2), tw_C.getlivingplayercount()))
    show("getmaxplayercount", tw_C.getmaxplayercount())


@tw.block("properties")
def properties() -> None:
    alice = tw.block_args()[1]
    show("getplayerprop int", tw_C.getplayerprop(alice, "CBasePlayer.m_iHealth"))
    show("getplayerprop string", tw_C.getplayerprop(alice, "CCSPlayer.m_szLastPlaceName"))
    show("getplayerprop unknown path", tw_C.getplayerprop(alice, "CCSPlayer.m_nothing"))
    show("getindexprop int", tw_C.getindexprop(1, "CBasePlayer.m_iHealth"))
    show("getplayerprop vector", tw_C.getplayerprop(alice, "CBaseEntity.m_vecOrigin"))
    show("getindexprop free edict", tw_C.getindexprop(1500, "CBasePlayer.m_iHealth"))
    show("getentityindex", tw_C.getentityindex("player"))
    show("getentityindex missing", tw_C.getentityindex("no_such_class"))
    show("setplayerprop", tw_C.setplayerprop(alice, "CBasePlayer.m_iHealth", 55))
    show("health after", tw_C.getplayerprop(alice, "CBasePlayer.m_iHealth"))
    show("precachemodel", tw_C.precachemodel("models/python.mdl"))
    show("precachedecal", tw_C.precachedecal("decals/python"))


@tw.block("lists")
def lists() -> None:
    alice = int(tw.block_args()[1])
    players = tw_C.createplayerlist()
    show("createplayerlist keys", sorted(players))
    entry = players[alice]
    show("entry", {k: entry[k] for k in ("name", "steamid", "index", "teamid", "health", "isbot", "x", "language")})
    show("one player", list(tw_C.createplayerlist(alice)))
    show("unknown player", tw_C.createplayerlist(999))
    entities = tw_C.createentitylist("prop_physics")
    show("createentitylist keys", [type(k).__name__ for k in entities])
    first = next(iter(entities.values()))
    show("entity entry", first)
    show("no entity", tw_C.createentitylist("no_such_class"))


@tw.block("engine")
def engine() -> None:
    alice, bot = tw.block_args()[1:3]
    show("physics get gravity", tw_C.physics("get", "gravity"))
    show("physics get airdensity", tw_C.physics("get", "airdensity"))
    show("voicechat islistening", tw_C.voicechat("islistening", alice, bot))
    show("voicechat nolisten", tw_C.voicechat("nolisten", alice, bot))
    show("voicechat islistening after", tw_C.voicechat("islistening", alice, bot))
    show("createbot", tw_C.createbot("Pybot"))
    tw_C.set("py_money", 0)
    show("getmoney (queued; it stores when the block is done)", tw_C.getmoney("py_money", alice))
