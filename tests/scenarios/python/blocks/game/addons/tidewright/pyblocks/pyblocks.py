# Blocks written in Python: they run to their end inside the call, while the script blocks and commands they
# start wait in the command buffer.
import tw
import tw_C


@tw.block("work")
def work() -> None:
    print("python work begins; its arguments:", tw.block_args())
    tw_C.doblock("caller/helper")
    tw_C.ServerCommand("echo queued at the tail")
    tw_C.InsertServerCommand("echo inserted at the head")
    tw_C.ForceServerCommand("echo forced to run now")
    print("python work ends")


@tw.block("nested")
def nested() -> None:
    print("python nested calls python work directly:")
    tw_C.doblock("pyblocks/work")
    print("python nested ends")
