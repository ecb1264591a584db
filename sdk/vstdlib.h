// The engine's vstdlib exports: the key name table and memory of KeyValues, the process command line,
// random numbers and the text helpers. Supplied by the stand-in's support library.
#pragma once

#include <string>
#include <vector>

#include "tier0.h"

typedef int HKeySymbol;
#define INVALID_KEY_SYMBOL (-1)

// Names of KeyValues nodes are symbols: the same name (ignoring case) gives the same integer, and the
// symbol's text is the spelling under which the name was first seen.
class IKeyValuesSystem {
public:
  virtual void* AllocKeyValuesMemory(int size) = 0;
  virtual void FreeKeyValuesMemory(void* memory) = 0;
  virtual HKeySymbol GetSymbolForString(const char* name) = 0;
  virtual const char* GetStringForSymbol(HKeySymbol symbol) = 0;

protected:
  virtual ~IKeyValuesSystem() = default;
};
TW_SUPPORT_API IKeyValuesSystem* KeyValuesSystem();

class ICommandLine {
public:
  virtual void CreateCmdLine(const char* commandLine) = 0;
  virtual void CreateCmdLine(int argc, char** argv) = 0;
  virtual const char* GetCmdLine() const = 0;
  virtual const char* CheckParm(const char* parm, const char** value = nullptr) const = 0;
  virtual const char* ParmValue(const char* parm, const char* defaultValue = nullptr) const = 0;

protected:
  virtual ~ICommandLine() = default;
};
TW_SUPPORT_API ICommandLine* CommandLine();

TW_SUPPORT_API void RandomSeed(int seed);
TW_SUPPORT_API int RandomInt(int min, int max);  // both ends included
TW_SUPPORT_API float RandomFloat(float min, float max);

// Like snprintf, but the text always ends inside the buffer; the result is the length written.
TW_SUPPORT_API int Q_snprintf(char* out, int maxLen, const char* format, ...) TW_PRINTF(3, 4);
TW_SUPPORT_API void Q_strncpy(char* out, const char* in, int maxLen);
TW_SUPPORT_API int Q_strcasecmp(const char* a, const char* b);
TW_SUPPORT_API int Q_strncasecmp(const char* a, const char* b, int n);
// The first place of `needle` in `haystack`, ignoring case; null when absent.
TW_SUPPORT_API const char* Q_stristr(const char* haystack, const char* needle);
// A leading sign, then decimal digits or 0x and hex digits; 0 for a text that doesn't start with a number.
TW_SUPPORT_API int Q_atoi(const char* text);
TW_SUPPORT_API float Q_atof(const char* text);
// Replaces every `match` by `replacement` into out (maxLen bytes). False when the result didn't fit:
// `out` then holds as much as fitted.
TW_SUPPORT_API bool Q_StrSubst(const char* in, const char* match, const char* replacement, char* out, int maxLen,
                               bool caseSensitive = false);
// Characters first to last (exclusive) of `in`; negative positions count from the end.
TW_SUPPORT_API void Q_StrSlice(const char* in, int first, int last, char* out, int maxLen);
// Splits at every occurrence of the whole `separator`, ignoring case, and leaves out empty pieces; an empty
// separator gives the text as its one piece.
TW_SUPPORT_API void Q_SplitString(const char* in, const char* separator, std::vector<std::string>& out);
