// The console doors of a command row as the checker and the reference name them: the door's name, its
// minimum count and its usage line as that door prints it (the row's usage filled with the door's name).
#pragma once

#include <string>
#include <vector>

#include "language/doors.h"

struct DoorText {
  std::string name;
  int minArgc;
  std::string usage;  // without its line end; empty for a row without one
  bool expands;       // the expanded twin
};

// The x twin first, then the expanded twin, as far as the row has them.
std::vector<DoorText> ConsoleDoors(const CommandRow& row);
// A usage format filled with a name, without its line end.
std::string FormatUsage(const char* format, const std::string& name);
