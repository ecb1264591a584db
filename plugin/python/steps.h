// The Python bridge's steps in the plugin object's callbacks: the start at Load, the collection at each level
// start, the tick of each frame.
#pragma once

// Load step 19: StartPython.
void Python_OnLoad();
// LevelInit step 12: while the interpreter is up, runs the collection text, which prints the collector's
// counts and what it freed.
void Python_OnLevelInit();
// GameFrame, after the delayed commands, while brannock_tidewright is exactly 1: the package's tick, when
// brannock_python is exactly 1 and the interpreter is up.
void Python_OnFrame();
