// ConsoleDoors: the names the door machinery gives a row's doors (tw_x<base>, tw_<base> or the row's own).
#include "doortext.h"

#include <algorithm>
#include <cstdio>

std::string FormatUsage(const char* format, const std::string& name) {
  if (!format) return "";
  std::string out(size_t(std::max(0, snprintf(nullptr, 0, format, name.c_str()))), '\0');
  snprintf(out.data(), out.size() + 1, format, name.c_str());
  while (!out.empty() && out.back() == '\n') out.pop_back();
  return out;
}

std::vector<DoorText> ConsoleDoors(const CommandRow& row) {
  std::vector<DoorText> doors;
  if (row.doors & DOOR_X) {
    const std::string name = std::string("tw_x") + row.base;
    doors.push_back({name, row.minArgc, FormatUsage(row.usage, name), false});
  }
  if (row.doors & DOOR_EXPANDED) {
    const std::string name = row.expandedName ? row.expandedName : std::string("tw_") + row.base;
    doors.push_back({name, row.minArgc, FormatUsage(row.usage, name), true});
  }
  return doors;
}
