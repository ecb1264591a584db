// Player and entity lists: snapshots of every player or entity written into a keygroup (or a Python
// dictionary), and the console dumps of server classes and entities. The connection figures of a player
// are computed here, since only the player list shows them.
#pragma once

#include <string>

// What a player's net channel tells, as the player list shows it. Bots and players without a channel keep
// ping and loss 0, time 0 and the address "0".
struct ConnectionInfo {
  int ping = 0;
  int packetLoss = 0;
  float timeConnected = 0;
  std::string address = "0";
};
ConnectionInfo GetPlayerConnectionInfo(int userid);

// The ping shown for an average outgoing latency (seconds), the client's cl_cmdrate text and the server's
// tick interval: latency less half a command interval, a tick and half a tick, in milliseconds, 5 to 1000.
// A rate below 1 or not a number counts as 1.
int PingOf(float latency, const char* cmdRate, float tickInterval);
// The average incoming loss (a fraction) in percent, 0 to 100.
int PacketLossOf(float loss);

// Longest property path that an entity list keeps as a key; a longer one is skipped.
inline constexpr size_t kMaxListKeyName = 1023;
