// tw_physics, tw_voicechat and tw_queryclientvar. The physics commands act on environment 0 and only on its
// active (awake) objects; voice settings live in the engine; a query's answer comes back later as the
// plugin's event tw_player_variable. Each interface may be missing, and each command says so.
#include "world/physics.h"

#include <cstdlib>
#include <strings.h>
#include <vector>

#include "edict.h"
#include "eiface.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "iserverplugin.h"
#include "iservices.h"
#include "language/doors.h"
#include "library/vectors.h"
#include "vphysics.h"
#include "world/playerarg.h"
#include "world/players.h"

namespace {

// The upward push every object gets when it wakes, once "start" has run.
const Vector kWakePush(0, 0, 100.0f);

// The entity index of a physics object's entity, or -1 when it has none.
int EntityIndexOf(IPhysicsObject* object) {
  CBaseEntity* entity = static_cast<CBaseEntity*>(object->GetGameData());
  edict_t* edict = entity && gameents ? gameents->BaseEntityToEdict(entity) : nullptr;
  return edict ? engine->IndexOfEdict(edict) : -1;
}

class TWObjectHandler final : public IPhysicsObjectEvent {
public:
  void ObjectWake(IPhysicsObject* object) override {
    int index = EntityIndexOf(object);
    if (index < 0) return;
    DbgMsg(3, "Object waking: %d\n", index);
    object->ApplyForceCenter(kWakePush);
  }
  void ObjectSleep(IPhysicsObject* object) override {
    int index = EntityIndexOf(object);
    if (index >= 0) DbgMsg(3, "Object sleeping: %d\n", index);
  }
};

// Null until "start"; owned here, held by the environment of the level that "start" ran in.
TWObjectHandler* s_handler = nullptr;

// ---- tw_physics ----

// The environment, or null after the report of what is missing.
IPhysicsEnvironment* Environment() {
  if (!physics || !gameents) {
    ReportScriptError(0,
                      "Physics engine or game entity interfaces were not obtained when Tidewright was loaded. May "
                      "not support this mod for physics.\n");
    SetLastErrorText("Internal error");
    return nullptr;
  }
  IPhysicsEnvironment* environment = physics->GetActiveEnvironmentByIndex(0);
  if (!environment) {
    ReportScriptError(0, "ERROR: No physics environment.\n");
    SetLastErrorText("Internal error");
  }
  return environment;
}

// The awake physics object of the entity at `index`, or null.
IPhysicsObject* FindActivePhysicsObject(IPhysicsEnvironment* environment, int index) {
  int count = environment->GetActiveObjectCount();
  if (count <= 0) return nullptr;
  std::vector<IPhysicsObject*> objects(size_t(count), nullptr);
  environment->GetActiveObjects(objects.data());
  for (IPhysicsObject* object : objects)
    if (object && EntityIndexOf(object) == index) return object;
  return nullptr;
}

void PrintVector(int level, const char* format, const Vector& v) {
  DbgMsg(level, format, double(v.x), double(v.y), double(v.z));
}

void PhysicsSet(IPhysicsEnvironment* environment, const ArgView& args) {
  if (strcasecmp(args.Argv(2), "gravity") == 0) {
    Vector gravity = AllocVectorFromString(args.Argv(3));
    environment->SetGravity(gravity);
    PrintVector(1, "gravity: %f, %f, %f\n", gravity);
  } else if (strcasecmp(args.Argv(2), "airdensity") == 0) {
    environment->SetAirDensity(float(atof(args.Argv(3))));
  }
}

void PhysicsGet(IPhysicsEnvironment* environment, const ArgView& args, bool fromConsole) {
  if (strcasecmp(args.Argv(2), "gravity") == 0) {
    Vector gravity;
    environment->GetGravity(&gravity);
    ReturnText(fromConsole, args.Argv(3), VectorToString(gravity).text);
    PrintVector(1, "gravity: %f, %f, %f\n", gravity);
  } else if (strcasecmp(args.Argv(2), "airdensity") == 0) {
    ReturnFloat(fromConsole, args.Argv(3), environment->GetAirDensity());
  }
}

void PhysicsStart(IPhysicsEnvironment* environment) {
  DbgMsg(1, "physics start\n");
  delete s_handler;
  s_handler = new TWObjectHandler;
  environment->SetObjectEventHandler(s_handler);
}

void PhysicsActive(IPhysicsEnvironment* environment, const ArgView& args) {
  const char* what = args.Argv(2);
  IPhysicsObject* object = FindActivePhysicsObject(environment, atoi(args.Argv(3)));
  if (!object) return;
  if (strcasecmp(what, "setmass") == 0) {
    object->SetMass(float(atof(args.Argv(4))));
    return;
  }
  DbgMsg(3, "pObject: %d\n", atoi(args.Argv(3)));
  const Vector value = AllocVectorFromString(args.Argv(4));
  const int gameIndex = object->GetGameIndex();
  if (strcasecmp(what, "teleport") == 0) {
    Vector position;
    QAngle angles;
    object->GetPosition(&position, &angles);
    PrintVector(3, "Position: %f, %f, %f\n", position);
    object->SetPosition(value, angles, true);
    DbgMsg(2, "Teleported %d.\n", gameIndex);
  } else if (strcasecmp(what, "setvelocity") == 0) {
    Vector velocity;
    AngularImpulse angular;
    object->GetVelocity(&velocity, &angular);
    PrintVector(3, "Position: %f, %f, %f\n", velocity);
    object->SetVelocity(&value, &angular);
    DbgMsg(2, "Set velocity %d.\n", gameIndex);
  } else if (strcasecmp(what, "applyforce") == 0) {
    object->ApplyForceCenter(value);
    DbgMsg(2, "Set velocity %d.\n", gameIndex);
  }
}

void Physics_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  IPhysicsEnvironment* environment = Environment();
  if (!environment) return;
  const char* command = args.Argv(1);
  if (strcasecmp(command, "set") == 0)
    PhysicsSet(environment, args);
  else if (strcasecmp(command, "get") == 0)
    PhysicsGet(environment, args, fromConsole);
  else if (strcasecmp(command, "start") == 0)
    PhysicsStart(environment);
  else if (strcasecmp(command, "active") == 0)
    PhysicsActive(environment, args);
}

// ---- tw_voicechat ----

// The first userid hears, the second speaks.
void IsListening(const ArgView& args, bool fromConsole) {
  const int first = fromConsole ? 3 : 2;
  const int to = atoi(args.Argv(first)), from = atoi(args.Argv(first + 1));
  if (to == 0 || from == 0) {
    ReportScriptError(0, "Incorrect userids provided.\n");
    SetLastErrorText("Syntax Error");
    return;
  }
  const int receiver = LookupIndexByUserid(to), sender = LookupIndexByUserid(from);
  const bool listening = voiceserver->GetClientListening(receiver, sender);
  DbgMsg(0, "%d, %d -- %d\n", receiver, sender, listening);
  ReturnInt(fromConsole, args.Argv(2), listening ? 1 : 0);
}

void SetListening(const ArgView& args, bool listen) {
  const int to = atoi(args.Argv(2)), from = atoi(args.Argv(3));
  if (to == 0 || from == 0) {
    ReportScriptError(0, "Incorrect userids provided: %s and %s\n", args.Argv(2), args.Argv(3));
    SetLastErrorText("Syntax Error");
    return;
  }
  const int receiver = LookupIndexByUserid(to), sender = LookupIndexByUserid(from);
  const bool answer = voiceserver->SetClientListening(receiver, sender, listen);
  DbgMsg(0, "bListenUp = %d for %d/%d\n", answer, receiver, sender);
}

void VoiceChat_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (!voiceserver) {
    ReportScriptError(0, "Error: This game did not successfully return the VoiceListener interface for TW to use.\n");
    return;
  }
  const char* command = args.Argv(1);
  if (strcasecmp(command, "islistening") == 0)
    IsListening(args, fromConsole);
  else if (strcasecmp(command, "listen") == 0 || strcasecmp(command, "nolisten") == 0)
    SetListening(args, strcasecmp(command, "listen") == 0);
}

// ---- tw_queryclientvar ----

const PlayerMiss kQueryMiss = {"Userid does not exist.\n", "Invalid userid", false};

void QueryClientVar_h(bool expand, bool) {
  ArgView args(expand);
  if (edict_t* edict = PlayerArg(args, 1, kQueryMiss)) helpers->StartQueryCvarValue(edict, args.Argv(2));
}

const CommandRow kPhysicsCommands[] = {
    {"physics", Physics_h, 2, "Syntax: %s <command> [options]\n",
     "Physics: set/get gravity or airdensity, start the wake handler, or move an active object (active "
     "teleport/setvelocity/applyforce/setmass <index> <value>).",
     DOORS_ALL},
    {"voicechat", VoiceChat_h, 2, "Syntax: %s <command> [variable] <to_userid> <from_userid>\n",
     "Voice routing: islistening <var> <to> <from>, listen <to> <from>, nolisten <to> <from>.", DOORS_ALL},
    {"queryclientvar", QueryClientVar_h, 3, "Syntax: %s <userid> <variable-name>\n",
     "Asks a client for a console variable; the answer comes as the event tw_player_variable.", DOORS_ALL},
};
const CommandTable s_physicsCommands(kPhysicsCommands);

}  // namespace

void Physics_OnUnload() {
  if (!s_handler) return;
  IPhysicsEnvironment* environment = physics ? physics->GetActiveEnvironmentByIndex(0) : nullptr;
  if (environment) environment->SetObjectEventHandler(nullptr);
  delete s_handler;
  s_handler = nullptr;
}
