# The script library through tw_C: regex and queryvalue give their value (None when there is none), vectors
# give texts and tuples of floats, the rest store into variables as at the console and give None.
import tw
import tw_C


def show(label: str, value: object) -> None:
    print(f"{label}: {value!r} {type(value).__name__}")


@tw.block("text")
def text() -> None:
    show("regex match", tw_C.regex("match", "ab+", "abbbc"))
    show("regex match none", tw_C.regex("match", "x", "abc"))
    show("regex search", tw_C.regex("search", "c", "abc"))
    show("regex matchformat", tw_C.regex("matchformat", "(a)(b+)", "abbc", "%2-%1"))
    for name in ("lib_cmp", "lib_len", "lib_fmt", "lib_fmtv", "lib_math"):
        tw_C.set(name, "")
    show("strcmp", tw_C.strcmp("lib_cmp", "Apple", "apple"))
    show("strlen", tw_C.strlen("lib_len", "four"))
    show("format with no tokens keeps the placeholder", tw_C.format("lib_fmt", "a%1b"))
    tw_C.set("lib_word", "value")
    show("formatv", tw_C.formatv("lib_fmtv", "got %1", "lib_word"))
    show("mathparse", tw_C.mathparse("lib_math", "2 * 21"))
    show("stored", [tw_C.getString(n) for n in ("lib_cmp", "lib_len", "lib_fmt", "lib_fmtv", "lib_math")])


@tw.block("vectors")
def vectors() -> None:
    show("createvectorstring", tw_C.createvectorstring(1, 2.5, -3))
    show("createvectorfrompoints", tw_C.createvectorfrompoints("1,1,1", "4,5,6"))
    show("splitvectorstring", tw_C.splitvectorstring("1.5,2,-3"))
    show("getgravityvector", tw_C.getgravityvector())


@tw.block("sql")
def sql() -> None:
    show("dosql", tw_C.dosql(":memory:", "CREATE TABLE t (a)"))
    show("sql open", tw_C.sql("open", "pydb", ":memory:"))
    show("sql query", tw_C.sql("query", "pydb", "CREATE TABLE t (a); INSERT INTO t VALUES (7)"))
    show("sql queryvalue", tw_C.sql("queryvalue", "pydb", "SELECT a * 6 FROM t"))
    show("sql queryvalue failing", tw_C.sql("queryvalue", "pydb", "SELECT nothing FROM nowhere"))
    show("sql close", tw_C.sql("close", "pydb"))


@tw.block("later")
def later() -> None:
    show("delayed", tw_C.delayed(0, "echo delayed from Python"))
    show("soon", tw_C.soon("echo soon from Python"))
    show("mexec", tw_C.mexec("pymexec.cfg"))
    tw_C.set("lib_time", "")
    show("gettime", tw_C.gettime("lib_time"))
    show("gettime stored a number", tw_C.getString("lib_time").isdigit())
