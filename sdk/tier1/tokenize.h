// The console tokenizer that the engine and plugins share. A double-quoted string is one token without
// its quotes ("" is an empty token); each break character { } ( ) ' : outside quotes is a token of its own;
// // and /* */ comments between tokens are skipped; white space is every byte from 1 to 32.
#pragma once

// Longest token kept, in bytes with the terminator. Longer tokens are cut; the rest of the token is
// consumed, never read as a new token.
enum { MAX_TOKEN_CHARS = 1024 };

bool IsBreakChar(unsigned char c);

// Reads the next token of `text` into `out` (outSize bytes, at least 1). Gives the position behind the
// token, or null when `text` holds no further token; `out` is then the empty text.
const char* ParseToken(const char* text, char* out, int outSize = MAX_TOKEN_CHARS);
// The same, giving the length of the token written in `length`.
const char* ParseToken(const char* text, char* out, int outSize, int& length);
