# Reads the current event's values, the plugin's extended variables among them.
import tw


@tw.event("player_death")
def died(event: tw.Event) -> None:
    print(f"python: {event.name} userid={event['userid']} attacker={event['attacker']} "
          f"weapon={event['weapon']} tw_event={event['tw_event']} victim={event['tw_username']}")


@tw.event("player_hurt")
def hurt(event: tw.Event) -> None:
    print(f"python alone: {event['tw_event']} {event['tw_username']} health={event['tw_userhealth']} "
          f"by {event['tw_attackername']} missing={event['no_such_key']!r}")
