// The recipient filter, the id lookup, the escapes, the hand-over of dialog records, and tw_usermsg with its
// message store: a KeyValues tree "usermessages" that lives from the first tw_usermsg to the end of the
// process. It is no keygroup (the keygroup commands never see it); each message is a key holding its
// "type" and, in write order, one key per field named by the field's data type. tw_dumpusermessages lists
// the game's messages.
#include "messaging/usermessages.h"

#include <strings.h>

#include <cstdio>
#include <cstdlib>

#include "KeyValues.h"
#include "bitbuf.h"
#include "edict.h"
#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/server_state.h"
#include "iplayerinfo.h"
#include "iserverplugin.h"
#include "keygroups/keygroups.h"
#include "language/doors.h"
#include "language/textbuf.h"
#include "world/players.h"

namespace {

// The name buffer that each id's lookup fills.
constexpr int kMessageNameSize = 255;

IServerPluginCallbacks* s_plugin = nullptr;
KeyValues* s_store = nullptr;

KeyValues* MessageStore() {
  if (!s_store) s_store = new KeyValues("usermessages");
  return s_store;
}

// The stored message `name`, or null.
KeyValues* FindMessage(const char* name) { return s_store ? FindChildKey(s_store, name) : nullptr; }

char EscapedByte(char c) {
  switch (c) {
    case '"': return '"';
    case '\\': return '\\';
    case 'a': return '\a';
    case 'b': return '\b';
    case 'f': return '\f';
    case 'n': return '\n';
    case 'r': return '\r';
    case 't': return '\t';
    case 'v': return '\v';
    default: return '\0';
  }
}

}  // namespace

// ---- the filter ----

int MRecipientFilter::GetRecipientIndex(int slot) const {
  return slot >= 0 && slot < GetRecipientCount() ? m_recipients[size_t(slot)] : -1;
}

void MRecipientFilter::AddRecipientByUserid(int userid, int maxClients, IPlayerInfoManager* manager) {
  m_recipients.clear();
  if (!manager || !engine) return;
  for (int index = 1; index <= maxClients; ++index) {
    edict_t* edict = engine->PEntityOfEntIndex(index);
    if (!IsUsableEdict(edict)) continue;
    IPlayerInfo* info = manager->GetPlayerInfo(edict);
    if (info && info->GetUserID() == userid) {
      m_recipients.push_back(index);
      return;
    }
  }
}

void MRecipientFilter::AddAllPlayers(int maxClients, IPlayerInfoManager* manager) {
  m_recipients.clear();
  if (!manager || !engine) return;
  // One allocation for the whole walk, however many players there are.
  if (maxClients > 0) m_recipients.reserve(size_t(maxClients));
  for (int index = 1; index <= maxClients; ++index) {
    edict_t* edict = engine->PEntityOfEntIndex(index);
    if (!IsUsableEdict(edict)) continue;
    IPlayerInfo* info = manager->GetPlayerInfo(edict);
    if (info && info->IsPlayer() && !info->IsFakeClient()) m_recipients.push_back(index);
  }
}

// ---- ids and escapes ----

int GetUserMessageID(const char* name) {
  if (!gamedll || !name) return 0;
  const int count = tidewright_maxmsg.GetInt();
  char found[kMessageNameSize];
  for (int id = 0; id < count; ++id) {
    int size = 0;
    if (gamedll->GetUserMessageInfo(id, found, sizeof found, size) && strcasecmp(found, name) == 0) return id;
  }
  return 0;
}

void ExpandEscapes(char* out, size_t size, const char* in) {
  if (!out || size == 0) return;
  size_t n = 0;
  for (const char* p = in ? in : ""; *p && n + 1 < size; ++p) {
    char escaped = p[0] == '\\' ? EscapedByte(p[1]) : '\0';
    if (escaped) {
      out[n++] = escaped;
      ++p;
    } else {
      out[n++] = *p;
    }
  }
  out[n] = '\0';
}

// ---- dialogs ----

void Messaging_OnLoad(IServerPluginCallbacks* plugin) { s_plugin = plugin; }

void CreateDialog(edict_t* edict, int type, KeyValues* record) {
  if (helpers && edict && record) helpers->CreateMessage(edict, DIALOG_TYPE(type), record, s_plugin);
}

void SendKeyValuesMessage(int userid, int type, KeyValues* record) {
  edict_t* edict = LookupEdictByUserid(userid);
  if (!edict) {
    ReportScriptError(0, "Error: \"%d\" is an invalid userid.\n", userid);
    return;
  }
  if (!record) {
    ReportScriptError(0, "Error: Invalid key for sending VGUI message.\n");
    return;
  }
  CreateDialog(edict, type, record);
}

// ---- the message store ----

void WriteUserMessageData(const char* name, const char* dataType, const char* value) {
  KeyValues* message = FindMessage(name);
  if (!message) {
    DbgMsg(0, "Key does not exist, please create it: %s", name);
    return;
  }
  DbgMsg(3, "WriteUserMessageData: %s = %s\n", dataType, value);
  KeyValues* field = message->CreateKey(dataType);
  field->SetString(dataType, value);
}

void SendUserMessageData(const char* name, int userid) {
  KeyValues* message = FindMessage(name);
  if (!message) {
    DbgMsg(0, "Key does not exist, please create it: %s", name);
    return;
  }
  DbgMsg(3, "SendUserMessageData Started.\n");
  const char* type = message->GetString("type");
  int id = GetUserMessageID(type);
  if (id == 0) {
    DbgMsg(0, "Invalid UserMessage type: %s\n", type);
    return;
  }
  MRecipientFilter filter;
  filter.AddRecipientByUserid(userid, MaxClients, playerinfomanager);
  WriteUserMessage(message, engine->UserMessageBegin(&filter, id));
  engine->MessageEnd();
  DbgMsg(3, "SendUserMessageData SENT: %d, %s\n", userid, type);
}

void WriteUserMessage(KeyValues* message, bf_write* buffer) {
  DbgMsg(3, "WriteUserMessage Started.\n");
  for (KeyValues* field = message->GetFirstTrueSubKey(); field; field = field->GetNextTrueSubKey()) {
    KeyValues* value = field->GetFirstValue();
    if (!value) continue;
    const char* word = value->GetName();
    const char* text = value->GetString();
    DbgMsg(3, "WriteUserMessage: %s.\n", word);
    if (!buffer) continue;
    if (strcasecmp(word, "string") == 0) {
      char expanded[TEXT_BUFFER_SIZE];
      ExpandEscapes(expanded, sizeof expanded, text);
      buffer->WriteString(expanded);
    } else if (strcasecmp(word, "float") == 0) {
      buffer->WriteFloat(float(atof(text)));
    } else if (strcasecmp(word, "short") == 0) {
      buffer->WriteShort(atoi(text));
    } else if (strcasecmp(word, "char") == 0) {
      buffer->WriteChar(atoi(text));
    } else if (strcasecmp(word, "byte") == 0) {
      buffer->WriteByte(atoi(text));
    } else if (strcasecmp(word, "long") == 0) {
      buffer->WriteLong(atoi(text));
    }
  }
  DbgMsg(3, "WriteUserMessage Done.\n");
}

// ---- commands ----

namespace {

void CreateStoredMessage(const ArgView& args) {
  KeyValues* message = FindChildKey(MessageStore(), args.Argv(2), true);
  if (!message) {
    DbgMsg(0, "Couldn't create: %s\n", args.Argv(2));
    SetLastErrorText("Internal error");
    return;
  }
  message->SetString("type", args.Argv(3));
}

void DeleteMessage(const ArgView& args) {
  KeyValues* holder = nullptr;
  KeyValues* message = FindKeyAndHolder(MessageStore(), args.Argv(2), holder);
  if (!message) return;
  DestroyChild(holder, message);
  DbgMsg(1, "Key deleted: %s\n", args.Argv(2));
}

void WriteVariable(const ArgView& args) {
  ConVar* var = FindServerVar(args.Argv(4));
  WriteUserMessageData(args.Argv(3), args.Argv(2), var ? var->GetString() : "0");
}

void NotEnoughParameters() {
  DbgMsg(0, "Not enough parameters\n");
  SetLastErrorText("Not enough parameters");
}

// create, delete and send are told apart first; then the count decides before write and writev are.
void RunOperation(const ArgView& args) {
  const char* op = args.Argv(1);
  const int argc = args.Argc();
  if (strcasecmp(op, "create") == 0) {
    if (argc < 4)
      NotEnoughParameters();
    else
      CreateStoredMessage(args);
  } else if (strcasecmp(op, "delete") == 0) {
    if (argc >= 3) DeleteMessage(args);
  } else if (strcasecmp(op, "send") == 0) {
    if (argc >= 4) SendUserMessageData(args.Argv(2), atoi(args.Argv(3)));
  } else if (argc < 5) {
    NotEnoughParameters();
  } else if (strcasecmp(op, "write") == 0) {
    WriteUserMessageData(args.Argv(3), args.Argv(2), args.Argv(4));
  } else if (strcasecmp(op, "writev") == 0) {
    WriteVariable(args);
  } else {
    DbgMsg(0, "Unknown user message command: %s\n", op);
    SetLastErrorText("Invalid parameter");
  }
}

void UserMsg_h(bool expand, bool) {
  ArgView args(expand);
  MessageStore();
  DbgMsg(3, "]%s %s\n", args.Argv(0), args.Argv(1));
  RunOperation(args);
  DbgMsg(3, "]%s done.\n", args.Argv(0));
}

void DumpUserMessages_f() {
  if (!gamedll) return;
  const int count = tidewright_maxmsg.GetInt();
  char name[kMessageNameSize];
  for (int id = 0; id < count; ++id) {
    int size = 0;
    if (gamedll->GetUserMessageInfo(id, name, sizeof name, size))
      DbgMsg(0, " Id: %02d, Size: %d, Message: %s\n", id, size, name);
  }
}

const CommandRow kUserMessageCommands[] = {
    {"usermsg", UserMsg_h, 2, "Syntax: %s <operation> [data-type] <msg-name> [value]\n",
     "Builds a user message field by field and sends it: create <name> <type>, write|writev <data-type> "
     "<name> <value|variable>, send <name> <userid>, delete <name>.",
     DOORS_ALL},
};
const CommandTable s_userMessageCommands(kUserMessageCommands);

const PlainCommandRow kUserMessagePlainCommands[] = {
    {"tw_dumpusermessages", DumpUserMessages_f, "Lists the game's user messages with their ids and sizes."},
};
const CommandTable s_userMessagePlainCommands(kUserMessagePlainCommands);

}  // namespace
