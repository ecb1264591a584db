#!/usr/bin/env python3
"""The plugin's include graph: base pieces below the subsystems, the orchestrator above them.

Every file under plugin/ belongs to the first unit of LAYOUT whose patterns match its path. A file may
include the files of its own unit and, through their headers only, those of the units its row allows.
Nothing includes the orchestrator, and the allowed graph has no cycle. Run by `make test` (ctest entry
layout.includes); prints each offending include and exits 1.

Usage: check_includes.py PLUGIN_DIR
"""
import fnmatch
import os
import re
import sys

# unit, files (paths below plugin/, first match wins), units it may include
LAYOUT = [
    ("orchestrator", ["plugin.h", "plugin.cpp", "export.cpp"],
     ["base", "KeyValues", "keygroups", "script", "language", "packs", "events", "library", "python", "world",
      "messaging", "players"]),
    ("KeyValues", ["keygroups/KeyValues.*"], []),
    ("base", ["host/*",
              "language/doors.*", "language/results.*", "language/textbuf.h", "language/expansion.*",
              "script/commandargs.*",
              "events/current_event.*", "events/plugin_events.h"],
     ["KeyValues"]),
    ("keygroups", ["keygroups/*"], ["base", "KeyValues"]),
    ("script", ["script/*"], ["base", "KeyValues", "keygroups", "library", "pyhooks"]),
    ("players", ["world/players.*", "world/properties.*"], ["base", "KeyValues"]),
    ("language", ["language/*"], ["base", "KeyValues", "script", "keygroups", "players", "pyhooks"]),
    ("packs", ["packs/*"], ["base", "KeyValues", "script", "world", "players"]),
    ("events", ["events/*"], ["base", "KeyValues", "packs", "script", "world", "players"]),
    ("library", ["library/*"], ["base", "KeyValues", "keygroups"]),
    ("world", ["world/*"], ["base", "KeyValues", "keygroups", "language", "library", "players"]),
    ("messaging", ["messaging/*"], ["base", "KeyValues", "keygroups", "library", "world", "players"]),
    ("pyhooks", ["python/hooks.h"], []),
    ("python", ["python/*"], ["base", "KeyValues", "keygroups", "language", "messaging", "players", "pyhooks"]),
]

# Folders of the plugin with no C++ in them.
NOT_CODE = ["data/*", "CMakeLists.txt", "exports.map"]

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)


def unit_of(path):
    for unit, patterns, _ in LAYOUT:
        if any(fnmatch.fnmatch(path, p) for p in patterns):
            return unit
    return None


def resolve(plugin, source, name):
    """The plugin file an include names, as the build finds it, or None for one outside the plugin."""
    for base in (os.path.dirname(os.path.join(plugin, source)), plugin, os.path.join(plugin, "keygroups")):
        candidate = os.path.normpath(os.path.join(base, name))
        if os.path.isfile(candidate):
            return os.path.relpath(candidate, plugin)
    return None


def find_cycle(allowed):
    """A cycle of the allowed graph as a list of units, or None."""
    done, path = set(), []

    def visit(unit):
        if unit in path:
            return path[path.index(unit):] + [unit]
        if unit in done:
            return None
        path.append(unit)
        for target in sorted(allowed.get(unit, ())):
            cycle = visit(target)
            if cycle:
                return cycle
        path.pop()
        done.add(unit)
        return None

    for unit in allowed:
        cycle = visit(unit)
        if cycle:
            return cycle
    return None


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    plugin = sys.argv[1]
    allowed = {unit: set(targets) for unit, _, targets in LAYOUT}
    faults = []

    cycle = find_cycle(allowed)
    if cycle:
        faults.append("the allowed graph has a cycle: " + " -> ".join(cycle))
    for unit, targets in allowed.items():
        if "orchestrator" in targets:
            faults.append(f"{unit} may include the orchestrator: nothing may")

    for folder, _, files in os.walk(plugin):
        for file in sorted(files):
            path = os.path.relpath(os.path.join(folder, file), plugin)
            if any(fnmatch.fnmatch(path, p) for p in NOT_CODE):
                continue
            unit = unit_of(path)
            if unit is None:
                faults.append(f"plugin/{path}: belongs to no unit; give its folder a row in LAYOUT")
                continue
            with open(os.path.join(plugin, path), encoding="utf-8", errors="replace") as f:
                text = f.read()
            for name in INCLUDE.findall(text):
                target = resolve(plugin, path, name)
                if target is None:
                    continue
                target_unit = unit_of(target)
                where = f"plugin/{path}: #include \"{name}\""
                if not target.endswith(".h"):
                    faults.append(f"{where}: only headers are included")
                elif target_unit != unit and target_unit not in allowed[unit]:
                    faults.append(f"{where}: {unit} may not include {target_unit}")

    for fault in faults:
        print(fault)
    if faults:
        print(f"{len(faults)} include(s) break the layout; see LAYOUT in {os.path.relpath(__file__)}")
        return 1
    print("plugin includes follow the layout")
    return 0


if __name__ == "__main__":
    sys.exit(main())
