// Console output and scratch memory: the engine's tier0 exports, supplied by the stand-in's support library
// (libtwsupport.so), which the engine and every plugin link. Also TW_ASSERT, for invariants held by hand.
#pragma once

#ifdef TW_SANITIZE
#include <cstdio>
#include <cstdlib>
#endif

#if defined(__GNUC__)
#define TW_SUPPORT_API __attribute__((visibility("default")))
#define TW_PRINTF(fmt, args) __attribute__((format(printf, fmt, args)))
#else
#define TW_SUPPORT_API
#define TW_PRINTF(fmt, args)
#endif

enum SpewType_t { SPEW_MESSAGE = 0, SPEW_WARNING = 1, SPEW_DEV = 2 };
// Where all console output goes. The default writes to stdout; the server and tests may redirect it.
typedef void (*SpewOutputFunc_t)(SpewType_t type, const char* text);

TW_SUPPORT_API void Msg(const char* format, ...) TW_PRINTF(1, 2);
TW_SUPPORT_API void Warning(const char* format, ...) TW_PRINTF(1, 2);
// Prints only when the developer level is at least `level`.
TW_SUPPORT_API void DevMsg(int level, const char* format, ...) TW_PRINTF(2, 3);

// Installs an output function and gives back the one before; null restores the default.
TW_SUPPORT_API SpewOutputFunc_t SpewOutputFunc(SpewOutputFunc_t func);
TW_SUPPORT_API void SetDeveloperLevel(int level);
TW_SUPPORT_API int GetDeveloperLevel();

// One scratch block at a time: a block for the duration of a call, such as a file read whole.
TW_SUPPORT_API void* MemAllocScratch(int size);
TW_SUPPORT_API void MemFreeScratch();

// An invariant that the code keeps by hand, never a user's mistake. Live in the sanitizer build, where a broken
// one prints the message and the condition with their place and aborts; in release the condition isn't even
// evaluated.
#ifdef TW_SANITIZE
#define TW_ASSERT(cond, message)                                                                       \
  ((cond) ? (void)0                                                                                    \
          : (fprintf(stderr, "%s:%d: invariant broken: %s (%s)\n", __FILE__, __LINE__, message, #cond), \
             abort()))
#else
#define TW_ASSERT(cond, message) ((void)sizeof(!(cond)))
#endif
