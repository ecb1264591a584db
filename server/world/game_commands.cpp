// The game's console commands: chat (say, say_team) and the cheat commands that act for the command client
// (give, ent_create, ent_fire, setpos...). The console's dispatch of a table command checks sv_cheats and
// the count, plugins' direct Dispatch calls included; the server console acts for nobody, and commands that
// need a player say so.
#include <strings.h>

#include <cstring>
#include <string>

#include "standin.h"
#include "tier0.h"
#include "world/sim_world.h"

namespace {

constexpr int kGameCheat = FCVAR_GAMEDLL | FCVAR_CHEAT;

IVEngineServer& Engine() { return g_standIn->Engine(); }
const char* Argv(int i) { return Engine().Cmd_Argv(i); }
int Argc() { return Engine().Cmd_Argc(); }

// The player the command acts for; the console acts for nobody.
CClient* Player(const char* command) {
  CClient* player = SimWorld().CommandClient();
  if (!player) Msg("%s: no player runs this (the server console acts for nobody)\n", command);
  return player;
}

Vector PlayerOrigin(CClient* player) { return player ? player->entity->fields.origin : Vector(); }

void MadeBy(CClient* player, CEntity& entity) {
  if (player) player->lastMade = entity.GetRefEHandle().ToInt();
}

// What the player looks at: the stand-in's last entity the player made.
CEntity* Picked(CClient* player) { return player ? SimWorld().EntityOfHandle(player->lastMade) : nullptr; }

std::string Describe(CEntity& e) { return std::to_string(e.Index()) + " (" + e.GetClassName() + ")"; }

// A creatable type, or null after the command's message.
const EntityType* CreatableType(const char* name, const char* unknownFormat) {
  const EntityType* type = FindEntityType(name);
  if (type && type->creatable) return type;
  Msg(unknownFormat, name);
  return nullptr;
}

// ---- chat ----

std::string ChatText() {
  std::string text = Engine().Cmd_Args();
  if (text.size() >= 2 && text.front() == '"' && text.back() == '"') text = text.substr(1, text.size() - 2);
  return text;
}

void Chat(bool teamOnly) {
  CSimWorld& world = SimWorld();
  std::string text = ChatText();
  if (text.empty()) return;
  CClient* speaker = world.CommandClient();
  int userid = speaker ? speaker->userid : 0;
  if (!speaker) {
    world.Deliver("chat", world.HumanRecipients(), EscapedText(("Console: " + text).c_str()));
  } else {
    std::string line = std::string(speaker->entity->fields.pl.deadflag ? "*DEAD* " : "") +
                       (teamOnly ? "(TEAM) " : "") + speaker->name + ": " + text;
    int team = teamOnly ? speaker->entity->fields.teamNum : -1;
    world.Deliver("chat", world.HumanRecipients(team), EscapedText(line.c_str()));
  }
  world.FireEvent("player_say", [&](IGameEvent& e) {
    e.SetInt("userid", userid);
    e.SetString("text", text.c_str());
  });
}

void Say_f() { Chat(false); }
void SayTeam_f() { Chat(true); }

// ---- making entities ----

void Give_f() {
  CClient* player = Player("give");
  if (!player) return;
  const EntityType* type = CreatableType(Argv(1), "NULL Ent in GiveNamedItem! (%s)\n");
  CEntity* entity = type ? SimWorld().CreateEntity(*type, PlayerOrigin(player)) : nullptr;
  if (!entity) return;
  entity->fields.ownerEntity = int(player->entity->GetRefEHandle().ToInt());
  MadeBy(player, *entity);
  EntityFields& f = player->entity->fields;
  if (strncasecmp(type->name, "weapon_", 7) == 0) player->weapon = type->name;
  if (strcasecmp(type->name, "item_assaultsuit") == 0) f.hasHelmet = 1;
  if (strncasecmp(type->name, "item_", 5) == 0) f.armorValue = PLAYER_FULL_ARMOR;
}

void ApplyKeyValue(CEntity& entity, const char* key, const char* value) {
  if (strcasecmp(key, "targetname") == 0) {
    entity.SetTargetName(value);
  } else if (strcasecmp(key, "origin") == 0) {
    Vector& o = entity.fields.origin;
    sscanf(value, "%f %f %f", &o.x, &o.y, &o.z);
  } else if (strcasecmp(key, "model") == 0) {
    entity.SetModel(SimWorld().PrecacheModel(value, false));
  } else if (strcasecmp(key, "teamnum") == 0) {
    entity.fields.teamNum = atoi(value);
  }
}

void EntCreate_f() {
  CClient* player = SimWorld().CommandClient();
  const EntityType* type = CreatableType(Argv(1), "ent_create: unknown entity \"%s\"\n");
  CEntity* entity = type ? SimWorld().CreateEntity(*type, PlayerOrigin(player)) : nullptr;
  if (!entity) return;
  for (int i = 2; i + 1 < Argc(); i += 2) ApplyKeyValue(*entity, Argv(i), Argv(i + 1));
  MadeBy(player, *entity);
}

void TestCreateEntity_f() {
  CClient* player = SimWorld().CommandClient();
  const EntityType* type = CreatableType(Argv(1), "Test_CreateEntity: unknown entity \"%s\"\n");
  CEntity* entity = type ? SimWorld().CreateEntity(*type, PlayerOrigin(player)) : nullptr;
  if (entity) MadeBy(player, *entity);
}

void CreateProp(const char* entityName) {
  std::string model = Argv(1);
  if (model.compare(0, 7, "models/") != 0) model = "models/" + model;
  if (model.size() < 4 || strcasecmp(model.c_str() + model.size() - 4, ".mdl") != 0) model += ".mdl";
  CClient* player = SimWorld().CommandClient();
  CEntity* entity = SimWorld().CreateEntity(*FindEntityType(entityName), PlayerOrigin(player));
  if (!entity) return;
  entity->SetModel(SimWorld().PrecacheModel(model.c_str(), false));
  MadeBy(player, *entity);
}

void PropPhysicsCreate_f() { CreateProp("prop_physics"); }
void PropDynamicCreate_f() { CreateProp("prop_dynamic"); }

void TestEntityBlocker_f() {
  CClient* player = Player("test_entity_blocker");
  if (!player) return;
  CEntity* entity = SimWorld().CreateEntity(*FindEntityType("entity_blocker"), PlayerOrigin(player));
  if (entity) MadeBy(player, *entity);
}

// ---- acting on entities ----

// The entities a target names: "!self" and "!player" the player, "!picker" what it looks at, else an
// index, a name or a class name.
std::vector<CEntity*> Targets(const char* target, CClient* player) {
  if (strcasecmp(target, "!self") == 0 || strcasecmp(target, "!player") == 0)
    return player ? std::vector<CEntity*>{player->entity} : std::vector<CEntity*>{};
  if (strcasecmp(target, "!picker") == 0) {
    CEntity* picked = Picked(player);
    return picked ? std::vector<CEntity*>{picked} : std::vector<CEntity*>{};
  }
  return SimWorld().FindTargets(target);
}

void EntFire_f() {
  CClient* player = SimWorld().CommandClient();
  std::vector<CEntity*> targets = Targets(Argv(1), player);
  if (targets.empty()) {
    Msg("ent_fire: no entity \"%s\"\n", Argv(1));
    return;
  }
  const char* action = Argc() > 2 ? Argv(2) : "Use";
  float delay = float(atof(Argv(4)));
  CSimWorld& world = SimWorld();
  for (CEntity* e : targets) {
    if (delay > 0) world.QueueInput(*e, action, Argv(3), delay);
    else if (world.EntityOfHandle(e->GetRefEHandle().ToInt())) world.FireInput(*e, action, Argv(3));
  }
}

void EntRemove_f() {
  CSimWorld& world = SimWorld();
  CClient* player = world.CommandClient();
  std::vector<CEntity*> targets;
  if (Argc() > 1) targets = Targets(Argv(1), player);
  else if (CEntity* picked = Picked(player)) targets.push_back(picked);
  if (targets.empty()) {
    Msg("ent_remove: no entity \"%s\"\n", Argv(1));
    return;
  }
  for (CEntity* e : targets) {
    if (e->Index() <= world.MaxClients()) {
      Msg("ent_remove: %s can't be removed\n", Describe(*e).c_str());
      continue;
    }
    Msg("Removed %s\n", Describe(*e).c_str());
    world.RemoveEntity(*e);
  }
}

void EntSetName_f() {
  CClient* player = SimWorld().CommandClient();
  std::vector<CEntity*> targets;
  if (Argc() > 2) targets = Targets(Argv(2), player);
  else if (CEntity* picked = Picked(player)) targets.push_back(picked);
  if (targets.empty()) {
    Msg("ent_setname: no entity to name\n");
    return;
  }
  for (CEntity* e : targets) {
    e->SetTargetName(Argv(1));
    Msg("Set the name of %s to %s\n", Describe(*e).c_str(), Argv(1));
  }
}

// ---- moving the player ----

void SetPos_f() {
  CClient* player = Player("setpos");
  if (!player) return;
  Vector& o = player->entity->fields.origin;
  o.x = float(atof(Argv(1)));
  o.y = float(atof(Argv(2)));
  if (Argc() > 3) o.z = float(atof(Argv(3)));
  player->entity->GetEdict()->StateChanged();
}

void SetAng_f() {
  CClient* player = Player("setang");
  if (!player) return;
  QAngle& a = player->entity->fields.angles;
  a.x = float(atof(Argv(1)));
  a.y = float(atof(Argv(2)));
  if (Argc() > 3) a.z = float(atof(Argv(3)));
  player->entity->GetEdict()->StateChanged();
}

void TestDispatchEffect_f() {
  Vector at = PlayerOrigin(SimWorld().CommandClient());
  char text[256];
  snprintf(text, sizeof text, " at %g,%g,%g distance %g flags %d magnitude %d scale %d", double(at.x), double(at.y),
           double(at.z), atof(Argv(2)), atoi(Argv(3)), atoi(Argv(4)), atoi(Argv(5)));
  SimWorld().Announce("effect", "dispatch " + EscapedText(Argv(1)) + text);
}

const ConsoleCommandDef kCommands[] = {
    {"say", Say_f, "Says a line to everybody.", FCVAR_GAMEDLL},
    {"say_team", SayTeam_f, "Says a line to your team.", FCVAR_GAMEDLL},
    {"give", Give_f, "Gives the player an entity: give <entity name>.", kGameCheat, 2,
     "Usage: give <entity name>\n"},
    {"ent_create", EntCreate_f, "Makes an entity where the player stands: ent_create <entity name> [<key> <value>]...",
     kGameCheat, 2, "Usage: ent_create <entity name> [<key> <value>]...\n"},
    {"Test_CreateEntity", TestCreateEntity_f, "Makes an entity: Test_CreateEntity <entity name>.", kGameCheat, 2,
     "Usage: Test_CreateEntity <entity name>\n"},
    {"prop_physics_create", PropPhysicsCreate_f, "Makes a physics prop of a model: prop_physics_create <model>.",
     kGameCheat, 2, "Usage: prop_physics_create <model name>\n"},
    {"prop_dynamic_create", PropDynamicCreate_f, "Makes a dynamic prop of a model: prop_dynamic_create <model>.",
     kGameCheat, 2, "Usage: prop_dynamic_create <model name>\n"},
    {"ent_setname", EntSetName_f, "Names what the player looks at: ent_setname <new name> [entity].", kGameCheat, 2,
     "Usage: ent_setname <new name> [entity]\n"},
    {"ent_remove", EntRemove_f, "Removes an entity by index, name or class name, or what the player looks at.",
     kGameCheat},
    {"ent_fire", EntFire_f, "Fires an input at entities: ent_fire <target> [action] [value] [delay].", kGameCheat, 2,
     "Usage: ent_fire <target> [action] [value] [delay]\n"},
    {"setpos", SetPos_f, "Moves the player: setpos <x> <y> [z].", kGameCheat, 3, "Usage: setpos <x> <y> [z]\n"},
    {"setang", SetAng_f, "Turns the player: setang <pitch> <yaw> [roll].", kGameCheat, 3,
     "Usage: setang <pitch> <yaw> [roll]\n"},
    {"test_dispatcheffect", TestDispatchEffect_f,
     "Shows an effect at the player: test_dispatcheffect <effect name> <distance away> <flags> <magnitude> <scale>.",
     kGameCheat, 2, "Usage: test_dispatcheffect <effect name> <distance away> <flags> <magnitude> <scale>\n"},
    {"test_entity_blocker", TestEntityBlocker_f, "Puts an entity blocker where the player stands.", kGameCheat},
};

}  // namespace

void RegisterGameCommands(CCvar& console) { console.AddCommands(kCommands, sizeof kCommands / sizeof kCommands[0]); }
