// Conditionals: tw_xif/if compare two tokens, then run the rest of their own line (then) or let the nested
// block on the next line pass or be refused (do); tw_xelse/else act on the result. The outcome travels from
// command to command in two bytes of the machine, lastIfResult and skipNextBlock.
#pragma once

// The eight comparisons, in the order their spellings are tried; COMPARE_UNSUPPORTED for any other word.
enum CompareCode {
  COMPARE_UNSUPPORTED = 0,
  COMPARE_EQUAL = 1,
  COMPARE_NOT_EQUAL = 2,
  COMPARE_GREATER = 3,
  COMPARE_LESS = 4,
  COMPARE_NOT_LESS = 5,
  COMPARE_NOT_GREATER = 6,
  COMPARE_IN = 7,
  COMPARE_NOT_IN = 8,
};

// Tokens of the shortest condition line: the command, "(", left, operator, right, ")", then/do.
enum { CONDITION_MIN_TOKENS = 7 };

// The shape test of a tw_xif/if line, from its tokens 1, 5 and 6 and the raw text behind the command:
// 0 when it reads as a condition, else the number its format message names: 2 no "(", 3 no ")" as token 5,
// 4 neither "then" nor "do", 5 the case-sensitive ") then " or ") do" not found in the text.
int ConditionShapeError(const char* open, const char* close, const char* word, const char* args);

// The code of an operator's spelling, ignoring case; COMPARE_UNSUPPORTED for an unknown or null one.
CompareCode ConditionOperatorCode(const char* spelling);
// Equality and containment compare text ignoring case, the order comparisons compare numbers (atof).
// COMPARE_UNSUPPORTED reports the running command as having an unsupported operator and gives false.
bool CompareTokens(const char* left, CompareCode code, const char* right);
// Compares and applies the result: the `then` command runs, or the nested block behind a `do` is let pass
// or made to be refused.
void EvaluateCondition(const char* left, const char* op, const char* right, const char* command, bool isDo);
// A condition held: lastIfResult is 1; a `then` command (ending in a line feed) goes to the buffer's head,
// a `do` clears any refusal left over.
void ConditionTrue(const char* command, bool isDo);
// A condition failed: lastIfResult is 0; for `do` the next block is refused.
void ConditionFalse(bool isDo);
