// Numbers read from script texts. The library's commands read integers the way atoi does (leading blanks,
// a sign, decimal digits, anything after ignored), but a number beyond the 32-bit range saturates instead
// of being undefined.
#pragma once

#include <climits>
#include <cstdlib>

// The decimal integer at the start of `text`, 0 when there is none; saturated to the int range.
inline int ParseScriptInt(const char* text) {
  long long value = strtoll(text ? text : "", nullptr, 10);
  if (value > INT_MAX) return INT_MAX;
  if (value < INT_MIN) return INT_MIN;
  return int(value);
}

// A double cut toward zero into the int range; NaN gives 0.
inline int TruncateScriptInt(double value) {
  if (value != value) return 0;
  if (value >= double(INT_MAX)) return INT_MAX;
  if (value <= double(INT_MIN)) return INT_MIN;
  return int(value);
}
