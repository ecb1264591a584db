// The in-process stand-in server with the real plugin that the fuzz targets drive. Lines run as an
// operator's console lines, each within a CPU budget: a runaway script (a block that queues itself) is a
// designed, bounded behaviour of the server, but its bound of millions of commands would cost a fuzzer
// seconds per input, so the budget interrupts it as Ctrl-C would. A real hang inside one command is never
// interrupted and is left to the fuzzer's timeout. The server's "quit" is disarmed: a fuzzed line may say it.
#pragma once

#include <string>

#include "test_server.h"

// CPU time one console line may take before it is interrupted.
constexpr long FUZZ_LINE_BUDGET_MS = 200;
// Lines of one input that run; the rest is ignored.
constexpr size_t FUZZ_MAX_LINES = 64;

// The shared server, started at the first call.
TestServer& FuzzServer();
// Runs each line of `lines` (split at line feeds, at most FUZZ_MAX_LINES) to its end or its budget, then
// leaves the buffer empty. What the lines printed is dropped, or shown on stderr when TW_FUZZ_ECHO is set
// (to see what a crashing input did).
void FuzzRunLines(const std::string& lines);
// Sets a server variable to any text, without passing it through the console's tokenizer.
void FuzzSetVar(const char* name, const std::string& value);
