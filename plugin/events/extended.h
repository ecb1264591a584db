// Extended event variables: what a wanted game event carries about the players it names, written into the
// engine's event before the intake duplicates it, so scripts read names, teams and health by event_var.
#pragma once

class IGameEvent;

// For a non-zero "userid" the tw_user... keys, for a non-zero "attacker" the tw_attacker... keys, in
// their fixed order. Text keys are left out when the getter gives no text; number keys are always set.
void SetExtendedEventVariables(IGameEvent* event);
