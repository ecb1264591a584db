// What every sender to clients shares: the recipient filter, the lookup of a user message's id by its name,
// the backslash escapes of message texts, the hand-over of dialog records to the engine, and the message
// store through which scripts build user messages of any layout (tw_usermsg). Chat and HUD text, menus and
// dialogs, and sounds use these with fixed layouts of their own (chat.h, menus.h, sounds.cpp).
#pragma once

#include <cstddef>
#include <vector>

#include "irecipientfilter.h"

class IPlayerInfoManager;
class IServerPluginCallbacks;
class KeyValues;
class bf_write;
struct edict_t;

// Who receives one send: entity indexes of players. Made for each send and gone behind it. Every message
// of the plugin is unreliable and no init message.
class MRecipientFilter final : public IRecipientFilter {
public:
  MRecipientFilter() = default;
  bool IsReliable() const override { return false; }
  bool IsInitMessage() const override { return false; }
  int GetRecipientCount() const override { return int(m_recipients.size()); }
  // The index in `slot`, or -1 for a slot out of range.
  int GetRecipientIndex(int slot) const override;

  // Both empty the filter first: the last call decides, a filter never holds the union of two.
  // The one player whose userid that is, bots included; nobody for a userid without a player.
  void AddRecipientByUserid(int userid, int maxClients, IPlayerInfoManager* manager);
  // Every human player; bots never receive a broadcast.
  void AddAllPlayers(int maxClients, IPlayerInfoManager* manager);

private:
  std::vector<int> m_recipients;
};

// The id of the game's user message of that name (case ignored) among the ids 0 to tidewright_maxmsg - 1;
// 0 when there is none, so the message with id 0 can't be named.
int GetUserMessageID(const char* name);

// Copies `in` to `out` (`size` bytes, at most size - 1 characters) with \" \\ \a \b \f \n \r \t \v made
// into their bytes; a backslash before any other character, or at the end, stays.
void ExpandEscapes(char* out, size_t size, const char* in);

// ---- dialogs ----

// Load: the plugin object that dialogs name as their sender.
void Messaging_OnLoad(IServerPluginCallbacks* plugin);
// Hands a dialog record of that type to the engine for one client. The record stays the caller's.
void CreateDialog(edict_t* edict, int type, KeyValues* record);
// The same for a userid, with the reports of a userid without a player and of a missing record.
void SendKeyValuesMessage(int userid, int type, KeyValues* record);

// ---- the message store ----

// Appends a field to the stored message `name`: a key named by the data type holding the value's text.
void WriteUserMessageData(const char* name, const char* dataType, const char* value);
// Sends the stored message `name` to one player; it stays in the store.
void SendUserMessageData(const char* name, int userid);
// Writes the fields of a stored message in their order; an unknown data type writes nothing.
void WriteUserMessage(KeyValues* message, bf_write* buffer);
