// Regular expressions through glibc's GNU regex and its native interface: the syntax word every operation
// compiles with, and the group table that "matchformat" fills its format from.
#pragma once

#include <regex.h>

#include <cstddef>

// The syntax of every pattern: GNU operators, groups and alternation without backslashes, braces as plain
// characters (no intervals), an unmatched ")" as a plain character. Set before every compile, since
// re_syntax_options is one word for the whole process.
constexpr reg_syntax_t kRegexSyntax = RE_BACKSLASH_ESCAPE_IN_LISTS | RE_CHAR_CLASSES | RE_CONTEXT_INDEP_ANCHORS |
                                      RE_DOT_NEWLINE | RE_NO_BK_BRACES | RE_NO_BK_PARENS | RE_NO_BK_VBAR |
                                      RE_NO_EMPTY_RANGES | RE_UNMATCHED_RIGHT_PAREN_ORD | RE_DEBUG;

// The engine compiles "x+" as "xx*", so each nested or stacked "+" doubles what it repeats, and repetitions
// nested in repetitions ("x+*+*", "((x+)*)+") multiply the empty paths it works out when compiling: either
// grows the time to compile exponentially ("x" with 25 "+" takes minutes, "w+*" with 13 "+" behind it more
// than a minute). A pattern whose repetitions nest deeper than this, or whose compiled pieces would pass its
// own length by more than REGEX_MAX_REPEAT_COPIES, is refused before it is compiled.
enum { REGEX_MAX_REPEAT_DEPTH = 8, REGEX_MAX_REPEAT_COPIES = 1 << 16 };

struct RegexShape {
  size_t pieces;  // one for each character, bracket expression and group, "+" doubling what it repeats
  int depth;      // the deepest nesting of repetitions: "x*" 1, "x+*" and "(x+)*" 2
};
// The shape of `pattern` in kRegexSyntax. Pieces saturate at SIZE_MAX / 4.
RegexShape Regex_Shape(const char* pattern);

// Entries of the group table: the whole match, then groups 1 to 9 (the ones a format can name).
enum { REGEX_GROUP_ENTRIES = 10 };
// Bytes of a "matchformat" result, terminator included: longer results are cut.
enum { REGEX_FORMAT_SIZE = 5120 };

// The texts of a match, as places in the matched string: entry 0 the whole match, entry n group n.
struct RegexGroupTable {
  const char* text[REGEX_GROUP_ENTRIES];
  size_t length[REGEX_GROUP_ENTRIES];
};

// Fills the table from the registers of a match of `subject`. Only registers that exist and fit the table
// are read; a group that took no part, or one the registers don't have, is the empty text.
void Regex_FillGroups(RegexGroupTable& table, const re_registers& registers, const char* subject);

// Writes `format` into `out` with its group references filled in: "%%" is one percent sign, "%1" to "%9"
// a group's text, "%" and any other character that character alone, a "%" at the very end nothing. The
// result is cut at REGEX_FORMAT_SIZE - 1 characters. Gives its length.
size_t Regex_Format(const char* format, const RegexGroupTable& table, char (&out)[REGEX_FORMAT_SIZE]);
