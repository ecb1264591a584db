// What the other subsystems ask of Python: the package's answers at script load and unload, the script list,
// blocks that no script has, game events, chat lines and client commands. Each hook does nothing, and answers
// as though no addon were there, unless the interpreter is up and brannock_python allows it; a Python
// exception never comes out of a hook (it is printed with its traceback).
#pragma once

// The interpreter is up and brannock_python isn't 0.
bool Python_IsUp();

// The package's claim on a script name: true when Python took the addon (no script file is looked for).
bool LoadModuleAddon(const char* name);
// Tells the package to unload the addon of that name; reached when no text script had the name.
void UnloadModuleAddon(const char* name);
// Prints the Python addons between the script list's lines and its footer.
void Python_PrintScriptList();
// Runs the package's block of that name to its end. The caller opens and closes the block's frame.
void Python_CallBlock(const char* name);

// Whether any Python addon wants the event; starts the interpreter late when brannock_python was 0 at load.
bool AnyPythonRegistered(const char* name);
// Queues "tw__pyevent <name>" behind the scripts' sections of the event when an addon wants it.
void BeginAllPythonEvents(const char* name);

// A chat line: false when the package ate it.
bool Python_SayFilter(int userid, const char* text, bool teamOnly);
// A client's command: false when the package ended the plugin's handling of it.
bool Python_ClientCommand(int userid);
