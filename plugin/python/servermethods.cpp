// tw_C's direct methods on the engine and the server variables: the command buffer, console output, the
// variable getters and setters, the userids of the players, the current game event and the engine's own
// current command. They parse their arguments themselves; a wrong tuple raises TypeError. Where the
// interpreter would otherwise see a null without an exception (a missing variable, no current event) they
// raise SystemError with the reason.
#include <cstring>

#include "edict.h"
#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/server_state.h"
#include "igameevents.h"
#include "events/current_event.h"
#include "iplayerinfo.h"
#include "language/textbuf.h"
#include "language/varcommands.h"
#include "python/methodtable.h"
#include "world/players.h"

namespace {

PyObject* TextObject(const char* text) { return PyUnicode_DecodeUTF8(text, Py_ssize_t(strlen(text)), "replace"); }

// ---- the command buffer and the console ----

// The four text methods compose a console line: a text that leaves no room for its ending is refused.
bool ComposeLine(TextBuf& line, const char* method, const char* text, const char* ending) {
  if (line.Append(text) && line.Append(ending)) return true;
  PyErr_Format(PyExc_ValueError, "%s: the text is longer than a console line (%d characters)", method,
               int(TEXT_BUFFER_SIZE - 1 - strlen(ending)));
  return false;
}

PyObject* ServerCommandMethod(PyObject*, PyObject* args) {
  const char* text;
  TextBuf line;
  if (!PyArg_ParseTuple(args, "s", &text) || !ComposeLine(line, "ServerCommand", text, "\n")) return nullptr;
  engine->ServerCommand(line.c_str());
  return PyLong_FromLong(1);
}

PyObject* InsertServerCommandMethod(PyObject*, PyObject* args) {
  const char* text;
  TextBuf line;
  if (!PyArg_ParseTuple(args, "s", &text) || !ComposeLine(line, "InsertServerCommand", text, ";")) return nullptr;
  engine->InsertServerCommand(line.c_str());
  return PyLong_FromLong(1);
}

// The inserted text runs now, nested in the running call; the wait behind it ends that run.
PyObject* ForceServerCommandMethod(PyObject*, PyObject* args) {
  const char* text;
  TextBuf line;
  if (!PyArg_ParseTuple(args, "s", &text) || !ComposeLine(line, "ForceServerCommand", text, ";wait;")) return nullptr;
  engine->InsertServerCommand(line.c_str());
  engine->ServerExecute();
  return PyLong_FromLong(1);
}

// The text as it stands, never as a format.
PyObject* PrintMsg(PyObject*, PyObject* args) {
  const char* text;
  TextBuf line;
  if (!PyArg_ParseTuple(args, "s", &text) || !ComposeLine(line, "printmsg", text, "\n")) return nullptr;
  DbgMsg(0, "%s", line.c_str());
  return PyLong_FromLong(1);
}

// ---- server variables ----

ConVar* FoundVar(const char* name) {
  ConVar* var = FindServerVar(name);
  if (!var) {
    DbgMsg(0, "The var \"%s\" could not be found\n", name);
    PyErr_Format(PyExc_SystemError, "The var \"%s\" could not be found", name);
  }
  return var;
}

bool SetVarReported(ConVar* var, const char* name) {
  if (var) return true;
  DbgMsg(0, "Couldn't create \"%s\" and could not be found\n", name);
  PyErr_Format(PyExc_SystemError, "Couldn't create \"%s\" and could not be found", name);
  return false;
}

PyObject* GetInt(PyObject*, PyObject* args) {
  const char* name;
  ConVar* var;
  if (!PyArg_ParseTuple(args, "s", &name) || !(var = FoundVar(name))) return nullptr;
  return PyLong_FromLong(var->GetInt());
}

PyObject* GetFloat(PyObject*, PyObject* args) {
  const char* name;
  ConVar* var;
  if (!PyArg_ParseTuple(args, "s", &name) || !(var = FoundVar(name))) return nullptr;
  return PyFloat_FromDouble(double(var->GetFloat()));
}

PyObject* GetString(PyObject*, PyObject* args) {
  const char* name;
  ConVar* var;
  if (!PyArg_ParseTuple(args, "s", &name) || !(var = FoundVar(name))) return nullptr;
  return TextObject(var->GetString());
}

// A variable that CanSetVar refuses stays as it was; the call still answers the value.
PyObject* SetString(PyObject*, PyObject* args) {
  const char *name, *value;
  if (!PyArg_ParseTuple(args, "ss", &name, &value) || !SetVarReported(SetVarText(name, value, true), name))
    return nullptr;
  return TextObject(value);
}

PyObject* SetInt(PyObject*, PyObject* args) {
  const char* name;
  int value;
  if (!PyArg_ParseTuple(args, "si", &name, &value)) return nullptr;
  DbgMsg(4, "setint: %s, %d\n", name, value);
  if (!SetVarReported(SetVarInt(name, value, true), name)) return nullptr;
  return PyLong_FromLong(value);
}

PyObject* SetFloat(PyObject*, PyObject* args) {
  const char* name;
  float value;
  if (!PyArg_ParseTuple(args, "sf", &name, &value) || !SetVarReported(SetVarFloat(name, value, true), name))
    return nullptr;
  return PyFloat_FromDouble(double(value));
}

// Kept for addons that report their count; nothing reads it.
int s_numRegistered = 0;

PyObject* SetNumRegistered(PyObject*, PyObject* args) {
  if (!PyArg_ParseTuple(args, "i", &s_numRegistered)) return nullptr;
  Py_RETURN_NONE;
}

// ---- players, the event, the engine's command ----

PyObject* GetUseridList(PyObject*, PyObject* args) {
  if (!PyArg_ParseTuple(args, "")) return nullptr;
  PyObject* list = PyList_New(0);
  for (int slot = 1; list && slot <= MaxClients; ++slot) {
    edict_t* edict = engine->PEntityOfEntIndex(slot);
    IPlayerInfo* player = IsUsableEdict(edict) ? PlayerInfoOf(edict) : nullptr;
    if (!player || !player->IsConnected()) continue;
    PyObject* userid = PyLong_FromLong(engine->GetPlayerUserId(edict));
    if (!userid || PyList_Append(list, userid) != 0) Py_CLEAR(list);
    Py_XDECREF(userid);
  }
  return list;
}

PyObject* GetEventInfo(PyObject*, PyObject* args) {
  const char* name;
  if (!PyArg_ParseTuple(args, "s", &name)) return nullptr;
  if (!g_currentEvent) {
    PyErr_SetString(PyExc_SystemError, "getEventInfo: no game event is current");
    return nullptr;
  }
  return TextObject(g_currentEvent->GetString(name, ""));
}

PyObject* CmdArgv(PyObject*, PyObject* args) {
  int index;
  if (!PyArg_ParseTuple(args, "i", &index)) return nullptr;
  const char* text = engine->Cmd_Argv(index);
  return TextObject(text ? text : "");
}

PyObject* CmdArgc(PyObject*, PyObject* args) {
  if (!PyArg_ParseTuple(args, "")) return nullptr;
  return PyLong_FromLong(engine->Cmd_Argc());
}

PyObject* CmdArgs(PyObject*, PyObject* args) {
  if (!PyArg_ParseTuple(args, "")) return nullptr;
  const char* text = engine->Cmd_Args();
  return TextObject(text ? text : "");
}

PyObject* GetCmdUserid(PyObject*, PyObject* args) {
  if (!PyArg_ParseTuple(args, "")) return nullptr;
  return PyLong_FromLong(g_commandUserid);
}

const DirectMethodRow kServerMethods[] = {
    {"ServerCommand", ServerCommandMethod, "Adds a command to the end of the server queue."},
    {"InsertServerCommand", InsertServerCommandMethod, "Inserts a command to the server queue at the beginning."},
    {"ForceServerCommand", ForceServerCommandMethod,
     "Inserts a command to the server queue at the beginning and forces execution."},
    {"printmsg", PrintMsg, "Outputs a message to the console."},
    {"getInt", GetInt, "Gets the string value for a server variable"},
    {"getFloat", GetFloat, "Gets the string value for a server variable"},
    {"getString", GetString, "Gets the string value for a server variable"},
    {"setInt", SetInt, "Sets the server variable to the given integer value. Creating it if necessary."},
    {"setFloat", SetFloat, "Sets the server variable to the given float value. Creating it if necessary."},
    {"setString", SetString, "Sets the server variable to the given string  value. Creating it if necessary."},
    {"setNumRegistered", SetNumRegistered, "Internal command."},
    {"getUseridList", GetUseridList, "Returns a list of the userids of all players on the server."},
    {"getEventInfo", GetEventInfo, "Gets the value of a particular event variable."},
    {"cmdargv", CmdArgv, "Gets the command parameter passed to the current Valve console command."},
    {"cmdargc", CmdArgc, "Gets the command parameter count passed to the current Valve console command."},
    {"cmdargs", CmdArgs, "Gets the commandstring passed to the current Valve console command."},
    {"getcmduserid", GetCmdUserid, "Gets the commandstring passed to the current Valve console command."},
};
const DirectMethods s_serverMethods(kServerMethods);

}  // namespace
