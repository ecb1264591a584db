#!/usr/bin/env python3
"""Writes the seed corpora fuzz/corpus/<target>/ from the demo tree, the scenario tests and a few hand-made
inputs. Run from anywhere; files are named by a digest of their content, so running again adds only what
is new. Inputs above MAX_BYTES are left out: small seeds keep the fuzzers fast."""
import hashlib
import pathlib

ROOT = pathlib.Path(__file__).resolve().parent.parent
CORPUS = ROOT / "fuzz" / "corpus"
MAX_BYTES = 4096
SEP = "\x01"


def put(target, data):
    if isinstance(data, str):
        data = data.encode("utf-8", "surrogateescape")
    if not data or len(data) > MAX_BYTES:
        return
    folder = CORPUS / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / hashlib.sha1(data).hexdigest()[:16]).write_bytes(data)


def files(pattern):
    return sorted(p for p in ROOT.glob(pattern) if p.is_file())


def keyvalues():
    for p in files("demo/**/*.res") + files("tests/scenarios/*/*/game/cfg/tw_*_db.txt"):
        put("keyvalues", p.read_bytes())
    put("keyvalues", '"main" { "a" "1" }\n#include "a.txt"\n' + SEP + '"inc" { "b" "2.5" "c" { "d" "x" } }')
    put("keyvalues", '#base "a.txt"\n"m" { "k" "v" }' + SEP + '"base" { "k" "w" }')
    put("keyvalues", '#include "a.txt"\n"m" { }' + SEP + '#include "b.txt"\n"a" {}' + SEP + '#include "a.txt"\n')
    put("keyvalues", '"esc" { "t" "a\\"b\\n" "n" "-12" "f" "1e9" "c" { } }')


def scriptfile():
    for p in files("demo/game/addons/tidewright/*/tw_*.txt") + files("tests/scenarios/*/*/game/addons/tidewright/**/tw_*.txt"):
        put("scriptfile", p.read_bytes())


def console_lines():
    lines = []
    for p in files("tests/scenarios/*/*/input.txt"):
        text = p.read_bytes()
        put("console", text)
        lines += text.splitlines()
    return lines


def tokenizers(lines):
    for line in lines[::7]:
        put("tokenizers", line)
    put("tokenizers", b"\x00echo a;echo b\x01\x01insert \"q;u\" // c;d\x01\x02alias;x\x01\x03l1\nl2 \"open\nl3\x01\x0b")
    put("tokenizers", b"{ } ( ) ' : \"\" /* c */ x // y\x01\x05\x01\x04\x01\x11")


def expansion():
    put("expansion", "\x00server_var(fz_var)\n\x01fz_out server_var(fz_ref)\n\x02server_var(fz_var) = 1\n"
                     "\x03 1 < 2\n\x04= value\n\x00event_var(userid) server_var(server_var(fz_ref))")
    put("expansion", "\x02a in abc\n\x02 3 >= 2.5\n\x03x notin y\n\x00\"server_var(fz_var)\"\n\x01'//;'")


def library():
    for expr in ["1+2*3", "sin(1)^2+cos(1)^2", "server_var(fz_out)/0", "(((1)))", "a=1", "max(1,2,3)", "1?2:3",
                 "_pi*2", "1e308*10", "rint(2.5)"]:
        put("mathparse", expr)
    for regex in ["a.*b" + SEP + "aXXb" + SEP + "0" + SEP + "4", "(a|b)+\\1" + SEP + "abab",
                  "[[:alpha:]]{2,3}" + SEP + "xyz" + SEP + "1", "^(.*)$" + SEP + "\\1-\\0" + SEP + "-1",
                  "x**" + SEP + "x", "(" + SEP + "(("]:
        put("regex", regex)
    for fmt in ["%1 and %2" + SEP + "a" + SEP + "b", "%%%1%" + SEP + "x", "%9%0%3" + SEP + SEP + SEP + "z",
                "100%" + SEP + "%1"]:
        put("format", fmt)
    for sql in ["select 1+1", "insert into t values(1,'a')" + SEP + "select * from t",
                "select group_concat(a) from t" + SEP + "delete from t", "attach 'x.db' as x",
                "create table u(x);drop table u", "select randomblob(10), zeroblob(3), null, 1.5"]:
        put("sql", sql)
    for path in ["CBaseEntity.m_iHealth" + SEP + "50" + SEP + "CBaseEntity" + SEP + "m_iHealth",
                 "CBasePlayer.localdata.m_Local.m_iHideHUD" + SEP + "1",
                 "CBaseEntity.m_vecOrigin" + SEP + "1,2,3" + SEP + "CBaseEntity" + SEP + "m_vecOrigin",
                 "..." + SEP + "x" + SEP + "" + SEP + "", "CBaseEntity.m_iHealth.extra" + SEP + "-1"]:
        put("properties", path)


def python():
    for method in range(0, 240, 7):
        put("python", bytes([method]) + b"\x00fz_var\x01\x00text")
        put("python", bytes([method + 1]) + b"\x011\x01\x02 2.5\x01\x03")
    put("python", b"\x05\x04bytes\x01\x05tuple\x01\x00")


if __name__ == "__main__":
    keyvalues()
    scriptfile()
    lines = console_lines()
    tokenizers(lines)
    expansion()
    library()
    python()
    for target in sorted(CORPUS.iterdir()):
        print(target.name, len(list(target.iterdir())))
