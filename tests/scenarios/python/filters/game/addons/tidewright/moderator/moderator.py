# Filters chat lines and client commands before the scripts see them.
import tw
import tw_C


@tw.say_filter
def no_bad_words(userid: int, text: str, teamonly: bool) -> bool:
    print(f"moderator reads {text} from {userid}{' to the team' if teamonly else ''}")
    return "badword" not in text


@tw.client_filter
def guard(userid: int, command: str, args: str) -> bool | None:
    if command == "kill" or (command == "mycmd" and tw_C.getInt("moderator_closed") == 1):
        print(f"moderator stops {command} {args}".rstrip())
        return False
    return None
