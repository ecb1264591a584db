// Vector strings: a script keeps a position or direction as one text "%f,%f,%f". These conversions serve
// the vector commands and every other command that takes or gives a vector.
#pragma once

#include "basetypes.h"

// Bytes of a vector string, terminator included.
enum { VECTOR_STRING_SIZE = 256 };

struct VectorString {
  char text[VECTOR_STRING_SIZE];
};

// The vector as "%f,%f,%f"; "0.0,0.0,0.0" when any component is infinite or not a number.
VectorString VectorToString(const Vector& vector);
// Reads "%f,%f,%f"; a null text gives 0,0,0, a text without three numbers reports and gives 0,0,0 too.
Vector AllocVectorFromString(const char* text);
