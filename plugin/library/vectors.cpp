// Vector strings and the four vector commands: createvectorstring, createvectorfrompoints,
// splitvectorstring, getgravityvector. A malformed vector string never stops a command: it is the zero vector.
#include "library/vectors.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "language/doors.h"
#include "language/results.h"
#include "vphysics.h"

VectorString VectorToString(const Vector& vector) {
  VectorString out;
  if (!std::isfinite(vector.x) || !std::isfinite(vector.y) || !std::isfinite(vector.z))
    snprintf(out.text, sizeof out.text, "0.0,0.0,0.0");
  else
    snprintf(out.text, sizeof out.text, "%f,%f,%f", double(vector.x), double(vector.y), double(vector.z));
  return out;
}

Vector AllocVectorFromString(const char* text) {
  Vector vector;
  if (!text) return vector;
  if (sscanf(text, "%f,%f,%f", &vector.x, &vector.y, &vector.z) != 3) {
    DbgMsg(0, "AllocVectorFromString: invalid string format\n");
    SetLastErrorText("Incorrect arguments");
    return Vector();
  }
  return vector;
}

namespace {

float ReadFloat(const char* text) { return float(strtod(text, nullptr)); }

void CreateVectorString_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const int first = fromConsole ? 2 : 1;
  Vector vector(ReadFloat(args.Argv(first)), ReadFloat(args.Argv(first + 1)), ReadFloat(args.Argv(first + 2)));
  DbgMsg(1, "tw_xcreatevectorstring: %f %f %f\n", double(vector.x), double(vector.y), double(vector.z));
  ReturnText(fromConsole, args.Argv(1), VectorToString(vector).text);
}

void CreateVectorFromPoints_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const int first = fromConsole ? 2 : 1;
  Vector from = AllocVectorFromString(args.Argv(first));
  Vector to = AllocVectorFromString(args.Argv(first + 1));
  ReturnText(fromConsole, args.Argv(1), VectorToString(to - from).text);
}

// Stores one component into its variable; false (after the message) when the store was refused.
bool StoreComponent(const char* varName, float value) {
  return ReportStored(SetVarFloat(varName, value, false), varName);
}

void SplitVectorString_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  Vector vector = AllocVectorFromString(args.Argv(fromConsole ? 4 : 1));
  if (!fromConsole) {
    SetResultFloats(vector.x, vector.y, vector.z);
    return;
  }
  if (StoreComponent(args.Argv(1), vector.x) && StoreComponent(args.Argv(2), vector.y))
    StoreComponent(args.Argv(3), vector.z);
}

void GetGravityVector_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  IPhysicsEnvironment* environment = physics ? physics->GetActiveEnvironmentByIndex(atoi(args.Argv(1))) : nullptr;
  if (!environment) {
    DbgMsg(0, "No physics environment.\n");
    return;
  }
  Vector gravity;
  environment->GetGravity(&gravity);
  ReturnText(fromConsole, args.Argv(1), VectorToString(gravity).text);
  DbgMsg(1, "gravity: %f, %f, %f\n", double(gravity.x), double(gravity.y), double(gravity.z));
}

const CommandRow kVectorCommands[] = {
    {"createvectorstring", CreateVectorString_h, 5, "Syntax: %s <output-var> <x> <y> <z>\n",
     "Makes a vector string \"x,y,z\" from three numbers.", DOORS_ALL},
    {"createvectorfrompoints", CreateVectorFromPoints_h, 4,
     "Syntax: %s <output-var> <vectorstring-A> <vectorstring-B>\n",
     "Makes the vector string from point A to point B (B minus A).", DOORS_ALL},
    {"splitvectorstring", SplitVectorString_h, 5, "Syntax: %s <var x> <var y> <var z> <vectorstring>\n",
     "Splits a vector string into three variables.", DOORS_ALL},
    {"getgravityvector", GetGravityVector_h, 1, "Syntax: %s <var>\n",
     "Stores the gravity of the physics environment as a vector string.", DOORS_ALL},
};
const CommandTable s_vectorCommands(kVectorCommands);

}  // namespace
