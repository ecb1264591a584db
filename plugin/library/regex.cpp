// The regex command: "match" (length of a match anchored at the start), "search" (offset of the first match
// within a range of starting positions) and "matchformat" (a format filled with the groups of a match).
// Every call compiles its pattern afresh and frees it, with any registers, before it returns.
#include "library/regex.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include <vector>

#include "host/diagnostics.h"
#include "language/doors.h"

namespace {

// The starting positions "search" tries when the caller gives no start and range: 0 to 10.
constexpr int kDefaultSearchRange = 10;

// One pattern compiled for one call, freed at the end of the scope, registers included.
class CompiledPattern {
public:
  explicit CompiledPattern(const char* pattern) {
    memset(&m_buffer, 0, sizeof m_buffer);
    m_buffer.regs_allocated = REGS_UNALLOCATED;
    const size_t length = strlen(pattern);
    const RegexShape shape = Regex_Shape(pattern);
    if (shape.depth > REGEX_MAX_REPEAT_DEPTH || shape.pieces > length + REGEX_MAX_REPEAT_COPIES) {
      DbgMsg(0, "Regular expression too complex: its repetitions nest deeper than %d or would compile to more "
             "than %d copies.\n", int(REGEX_MAX_REPEAT_DEPTH), int(REGEX_MAX_REPEAT_COPIES));
      return;
    }
    re_syntax_options = kRegexSyntax;
    m_compiled = re_compile_pattern(pattern, length, &m_buffer) == nullptr;
    if (!m_compiled) DbgMsg(0, "Could not compile regular expression.\n");
  }
  ~CompiledPattern() {
    regfree(&m_buffer);
    free(m_registers.start);
    free(m_registers.end);
  }
  CompiledPattern(const CompiledPattern&) = delete;
  CompiledPattern& operator=(const CompiledPattern&) = delete;

  bool Compiled() const { return m_compiled; }
  // Length of the match anchored at the start; -1 none, -2 the engine failed.
  int Match(const char* subject, bool withRegisters) {
    return re_match(&m_buffer, subject, regoff_t(strlen(subject)), 0, withRegisters ? &m_registers : nullptr);
  }
  // Offset of the first match starting within [start, start + range]; -1 none, -2 the engine failed.
  int Search(const char* subject, int start, int range) {
    return re_search(&m_buffer, subject, regoff_t(strlen(subject)), start, range, nullptr);
  }
  const re_registers& Registers() const { return m_registers; }

private:
  re_pattern_buffer m_buffer;
  re_registers m_registers = {};
  bool m_compiled = false;
};

// The arguments of a call. At the console doors the output variable stands behind the operation; from
// Python it is left out and every later index is one lower.
struct RegexCall {
  const ArgView& args;
  bool fromConsole;

  const char* Arg(int consoleIndex) const { return args.Argv(fromConsole ? consoleIndex : consoleIndex - 1); }
  const char* Variable() const { return args.Argv(2); }
  const char* Pattern() const { return Arg(3); }
  const char* Subject() const { return Arg(4); }
  // Start and range count only when both are given.
  bool HasRange() const { return args.Argc() > (fromConsole ? 6 : 5); }
};

void Match(const RegexCall& call) {
  CompiledPattern pattern(call.Pattern());
  if (!pattern.Compiled()) return;
  ReturnInt(call.fromConsole, call.Variable(), pattern.Match(call.Subject(), false));
}

void Search(const RegexCall& call) {
  CompiledPattern pattern(call.Pattern());
  if (!pattern.Compiled()) return;
  int start = 0, range = kDefaultSearchRange;
  if (call.HasRange()) {
    start = atoi(call.Arg(5));
    range = atoi(call.Arg(6));
  }
  ReturnInt(call.fromConsole, call.Variable(), pattern.Search(call.Subject(), start, range));
}

// No match leaves the variable as it was, and gives Python None.
void MatchFormat(const RegexCall& call) {
  CompiledPattern pattern(call.Pattern());
  if (!pattern.Compiled()) return;
  const char* subject = call.Subject();
  if (pattern.Match(subject, true) < 0) return;
  RegexGroupTable groups;
  Regex_FillGroups(groups, pattern.Registers(), subject);
  char text[REGEX_FORMAT_SIZE];
  Regex_Format(call.Arg(5), groups, text);
  ReturnText(call.fromConsole, call.Variable(), text);
}

struct RegexOperation {
  const char* name;
  void (*run)(const RegexCall& call);
};
const RegexOperation kRegexOperations[] = {
    {"match", Match},
    {"search", Search},
    {"matchformat", MatchFormat},
};

// Another operation name does nothing and prints nothing.
void Regex_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const RegexCall call{args, fromConsole};
  for (const RegexOperation& operation : kRegexOperations)
    if (strcasecmp(args.Argv(1), operation.name) == 0) {
      operation.run(call);
      return;
    }
}

const CommandRow kRegexCommands[] = {
    {"regex", Regex_h, 4, "Syntax: %s <command-name> <output-var> <expression> <string> [start] [range]\n",
     "Matches a regular expression against a string: match, search or matchformat.", DOORS_ALL},
};
const CommandTable s_regexCommands(kRegexCommands);

}  // namespace

namespace {

constexpr size_t kPiecesCap = SIZE_MAX / 4;

// Past a bracket expression that starts at `p` ("["): a "]" first (behind an optional "^") is a member,
// "[:", "[." and "[=" open classes that end at their own ":]", ".]" and "=]", a backslash escapes the
// next character. An unclosed expression runs to the end.
const char* SkipBracket(const char* p) {
  ++p;
  if (*p == '^') ++p;
  if (*p == ']') ++p;
  while (*p && *p != ']') {
    if (*p == '\\' && p[1]) {
      p += 2;
    } else if (*p == '[' && (p[1] == ':' || p[1] == '.' || p[1] == '=')) {
      const char close[] = {p[1], ']', '\0'};
      const char* end = strstr(p + 2, close);
      p = end ? end + 2 : p + strlen(p);
    } else {
      ++p;
    }
  }
  return *p ? p + 1 : p;
}

}  // namespace

RegexShape Regex_Shape(const char* pattern) {
  struct Frame {
    size_t total = 0;  // pieces of the group so far
    size_t last = 0;   // pieces of the item a repetition would repeat; 0 when there is none
    int depth = 0;     // the deepest repetition in the group so far
    int lastDepth = 0; // of the item a repetition would repeat
  };
  std::vector<Frame> frames(1);
  auto add = [&](size_t pieces, int depth) {
    Frame& f = frames.back();
    f.total = std::min(kPiecesCap, f.total + pieces);
    f.last = pieces;
    f.lastDepth = depth;
    f.depth = std::max(f.depth, depth);
  };
  auto close = [&] {
    Frame group = frames.back();
    frames.pop_back();
    add(std::max<size_t>(1, group.total), group.depth);
  };
  for (const char* p = pattern; *p;) {
    Frame& f = frames.back();
    if (*p == '(') {
      frames.emplace_back();
      ++p;
    } else if (*p == ')' && frames.size() > 1) {
      close();
      ++p;
    } else if (*p == '|') {
      f.last = 0;
      ++p;
    } else if ((*p == '+' || *p == '*' || *p == '?') && f.last) {  // with nothing to repeat, it is a character
      if (*p == '+') {
        f.total = std::min(kPiecesCap, f.total + f.last);
        f.last = std::min(kPiecesCap, f.last * 2);
      }
      f.depth = std::max(f.depth, ++f.lastDepth);
      ++p;
    } else if (*p == '[') {
      p = SkipBracket(p);
      add(1, 0);
    } else {
      p += (*p == '\\' && p[1]) ? 2 : 1;
      add(1, 0);
    }
  }
  while (frames.size() > 1) close();
  return RegexShape{frames.back().total, frames.back().depth};
}

void Regex_FillGroups(RegexGroupTable& table, const re_registers& registers, const char* subject) {
  for (int i = 0; i < REGEX_GROUP_ENTRIES; ++i) {
    table.text[i] = "";
    table.length[i] = 0;
    if (unsigned(i) >= registers.num_regs || registers.start[i] < 0 || registers.end[i] < registers.start[i])
      continue;
    table.text[i] = subject + registers.start[i];
    table.length[i] = size_t(registers.end[i] - registers.start[i]);
  }
}

size_t Regex_Format(const char* format, const RegexGroupTable& table, char (&out)[REGEX_FORMAT_SIZE]) {
  const size_t room = REGEX_FORMAT_SIZE - 1;
  size_t length = 0;
  auto put = [&](const char* text, size_t n) {
    size_t take = n < room - length ? n : room - length;
    memcpy(out + length, text, take);
    length += take;
  };
  for (const char* p = format; *p && length < room; ++p) {
    if (*p != '%') {
      put(p, 1);
      continue;
    }
    const char next = *++p;
    if (next == '\0') break;
    if (next >= '1' && next <= '9')
      put(table.text[next - '0'], table.length[next - '0']);
    else
      put(&next, 1);
  }
  out[length] = '\0';
  return length;
}
