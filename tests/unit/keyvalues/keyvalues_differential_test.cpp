// The reader against recorded trees: the demo tree's files (a copy in fixtures/demo, so that the demo can
// change without touching this test), a few hundred generated hostile texts and a large generated file are
// parsed, and each tree (names, types, values, order, peers) with the developer messages of its load is
// compared with a dump in fixtures/, kept whole or, where it is too large or too many, as a digest. The
// dumps were recorded with the reader that this one replaced, so a difference is a change of the format's
// rules. UPDATE=1 rewrites them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "KeyValues.h"
#include "memfs.h"
#include "output_capture.h"

namespace {

namespace fs = std::filesystem;

const fs::path kFixtures = fs::path(TW_SOURCE_DIR) / "tests/unit/keyvalues/fixtures";

// ---- dumps ----

// A run of eight or more of one printable byte is written <byte*count>.
std::string FoldRuns(const std::string& text) {
  std::string out;
  for (size_t i = 0; i < text.size();) {
    size_t run = 1;
    while (i + run < text.size() && text[i + run] == text[i]) ++run;
    if (run >= 8 && text[i] > 32 && text[i] < 127)
      out += '<' + std::string(1, text[i]) + '*' + std::to_string(run) + '>';
    else
      out.append(run, text[i]);
    i += run;
  }
  return out;
}

// Quoted, with escapes for what isn't printable ASCII; runs folded.
void AppendQuoted(std::string& out, const char* text) {
  std::string escaped;
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text); *p; ++p) {
    if (*p == '"' || *p == '\\' || *p == '<' || *p < 32 || *p >= 127) {
      char hex[8];
      snprintf(hex, sizeof hex, "\\x%02x", *p);
      escaped += hex;
    } else {
      escaped += char(*p);
    }
  }
  out += '"' + FoldRuns(escaped) + '"';
}

// One line per node: depth, name, type and value; children below their node, peers after it.
void DumpChain(std::string& out, KeyValues* node, int depth) {
  for (; node; node = node->GetNextKey()) {
    out += std::to_string(depth) + ' ';
    AppendQuoted(out, node->GetName());
    char value[64] = "";
    switch (node->GetDataTypeRaw()) {
      case KeyValues::TYPE_STRING:
        out += " s ";
        AppendQuoted(out, node->GetString());
        break;
      case KeyValues::TYPE_INT:
        snprintf(value, sizeof value, " i %d", node->GetInt());
        out += value;
        break;
      case KeyValues::TYPE_FLOAT:
        snprintf(value, sizeof value, " f %.9g", double(node->GetFloat()));
        out += value;
        break;
      default:
        out += " n";
        break;
    }
    out += '\n';
    DumpChain(out, node->GetFirstSubKey(), depth + 1);
  }
}

// Consecutive repeats of a piece are written once, with their count. A piece ends with `separator`, or
// (when `starts` is true) just before the next `separator`.
std::string FoldRepeats(const std::string& text, const std::string& separator, bool starts = false) {
  std::string out, previous;
  int repeats = 0;
  auto flush = [&] {
    if (repeats > 0) out += "[" + std::to_string(repeats) + " more]" + (starts ? "\n" : separator);
    repeats = 0;
  };
  for (size_t start = 0; start < text.size();) {
    size_t end = text.find(separator, start + (starts ? 1 : 0));
    if (end == std::string::npos)
      end = text.size();
    else if (!starts)
      end += separator.size();
    std::string piece = text.substr(start, end - start);
    start = end;
    if (piece == previous) {
      ++repeats;
      continue;
    }
    flush();
    out += piece;
    previous = piece;
  }
  flush();
  return out;
}

// The tree and the developer messages of one load.
std::string LoadAndDump(const std::string& text, MemoryFileSystem& files, const char* name) {
  int previous = GetDeveloperLevel();
  SetDeveloperLevel(1);
  OutputCapture messages;
  KeyValues* kv = new KeyValues("top");
  bool ok = kv->LoadFromBuffer(name, text.c_str(), &files);
  SetDeveloperLevel(previous);
  std::string out = ok ? "" : "load failed\n";
  DumpChain(out, kv, 0);
  kv->deleteThis();
  return out + "--\n" + FoldRepeats(FoldRepeats(FoldRuns(messages.Text()), ", "), "\nKeyValues", true);
}

// A dump too large to keep whole: its FNV-1a digest, size and line count.
std::string Digest(const std::string& dump) {
  uint64_t h = 14695981039346656037ull;
  for (unsigned char c : dump) h = (h ^ c) * 1099511628211ull;
  char digest[96];
  snprintf(digest, sizeof digest, "fnv1a64 %016llx bytes %zu lines %zu\n", static_cast<unsigned long long>(h),
           dump.size(), size_t(std::count(dump.begin(), dump.end(), '\n')));
  return digest;
}

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream all;
  all << in.rdbuf();
  return all.str();
}

// Compares with the fixture, or writes it under UPDATE=1.
void ExpectFixture(const std::string& fixture, const std::string& actual) {
  const fs::path path = kFixtures / fixture;
  if (getenv("UPDATE")) {
    fs::create_directories(kFixtures);
    std::ofstream(path, std::ios::binary) << actual;
    return;
  }
  ASSERT_TRUE(fs::exists(path)) << path;
  const std::string expected = ReadFile(path);
  if (expected == actual) return;
  size_t at = 0;
  while (at < expected.size() && at < actual.size() && expected[at] == actual[at]) ++at;
  size_t lineStart = expected.rfind('\n', at == 0 ? 0 : at - 1);
  lineStart = lineStart == std::string::npos ? 0 : lineStart + 1;
  ADD_FAILURE() << fixture << " differs at byte " << at << ":\nexpected: "
                << expected.substr(lineStart, 200) << "\nactual:   " << actual.substr(lineStart, 200);
}

// ---- generated texts ----

// xorshift64*: the same sequence on every platform, unlike the standard distributions.
struct Random {
  uint64_t state;
  uint64_t Next() {
    state ^= state >> 12;
    state ^= state << 25;
    state ^= state >> 27;
    return state * 2685821657736338717ull;
  }
  int Below(int n) { return int(Next() % uint64_t(n)); }
  template <class T, size_t N>
  const T& Pick(const T (&items)[N]) {
    return items[Below(int(N))];
  }
};

const char* const kWords[] = {
    "dx_alpha", "DX_Alpha", "dx_beta", "dx b c", "", "dx{brace}", "dx}", "#include", "#INCLUDE", "dx/slash",
    "dx//two", "0", "1", "-1", "+5", "-0", " 42", "\t7", "\v8", "42 ", "2147483647", "2147483648",
    "-2147483648", "-2147483649", "99999999999", "00000000000000000000001", "007", "1e3", "1e", "1e+", ".5",
    "5.", "-.5e-3", "+.5E+2", ".", "-", "+", "e5", "0x10", "inf", "nan", "-inf", "1e999", "-1e999", "1e-50",
    "5a", "3.4028235e38", "1.5f", "12.500000", "caf\xc3\xa9", "\x7f", "tab\there", "dx_gamma"};

const char* const kSpace[] = {" ", "  ", "\t", "\n", "\r\n", "", " \n\t", "\x01", "\x1f"};

void AppendToken(Random& r, std::string& out) {
  const char* word = r.Pick(kWords);
  switch (r.Below(10)) {
    case 0:  // plain, where that can't change the text's structure by accident
      out += word[0] ? word : "dx_plain";
      break;
    case 1:  // an overlong token
      out += '"' + std::string(1000 + size_t(r.Below(60)), 'x') + '"';
      break;
    default:
      out += '"';
      out += word;
      out += '"';
      break;
  }
}

// One fault or oddity of the format, now and then.
void AppendOddity(Random& r, std::string& out) {
  switch (r.Below(14)) {
    case 0: out += "// a comment { \"x\" \"y\" }\n"; break;
    case 1: out += "/ single slash comment\n"; break;
    case 2: out += "// caf\xc3\xa9 ends the comment"; break;
    case 3: out += "\"broken\nline\""; break;
    case 4: out += "\"cr\rin string\""; break;
    case 5: out += "}"; break;
    case 6: out += "{"; break;
    case 7: out += "#include \"inc_a.txt\"\n"; break;
    case 8: out += "#include \"missing.txt\"\n"; break;
    case 9: out += "#include \"\"\n"; break;
    case 10: out += "\xc3\xa9"; break;
    case 11: out += "\"a\"/ right behind a quote\n"; break;
    case 12: out += "a//b"; break;
    default: out += "#include \"inc_self.txt\"\n"; break;
  }
}

void AppendBody(Random& r, std::string& out, int depth) {
  int pairs = r.Below(6);
  for (int i = 0; i < pairs; ++i) {
    out += r.Pick(kSpace);
    if (r.Below(12) == 0) AppendOddity(r, out);
    AppendToken(r, out);
    out += r.Pick(kSpace);
    if (depth < 5 && r.Below(4) == 0) {
      out += "{";
      AppendBody(r, out, depth + 1);
      out += r.Pick(kSpace);
      out += "}";
    } else {
      AppendToken(r, out);
    }
  }
}

std::string GenerateDocument(Random& r) {
  std::string out;
  int sections = r.Below(4);
  for (int s = 0; s < sections; ++s) {
    if (r.Below(8) == 0) AppendOddity(r, out);
    AppendToken(r, out);
    out += r.Pick(kSpace);
    out += "{";
    AppendBody(r, out, 0);
    out += r.Pick(kSpace);
    if (r.Below(10) != 0) out += "}";  // now and then a text ends inside a section
    out += r.Pick(kSpace);
  }
  switch (r.Below(12)) {
    case 0:  // deeper than the format allows
      out += "\"dx_deep\" {";
      for (int i = 0; i < 260; ++i) out += " \"k\" {";
      break;
    case 1: out += "\"unterminated"; break;
    case 2: out += "#include"; break;
    case 3: out += "\"dx_tail\""; break;
    default: break;
  }
  return out;
}

MemoryFileSystem IncludeFiles() {
  MemoryFileSystem files;
  files.files["inc_a.txt"] = "\"inc_a\" { \"dx_alpha\" \"1\" \"nested\" { \"v\" \"2.5\" } }";
  files.files["inc_self.txt"] = "\"inc_self\" { \"n\" \"1\" }\n#include \"inc_self.txt\"\n";
  return files;
}

// 50,000 player records in the writer's layout, values of every type.
std::string GenerateRecords() {
  std::string t = "\"players\"\n{\n";
  for (int i = 0; i < 50000; ++i) {
    t += "\t\"" + std::to_string(i) + "\"\n\t{\n";
    t += "\t\t\"name\"\t\t\"Player number " + std::to_string(i) + "\"\n";
    t += "\t\t\"kills\"\t\t\"" + std::to_string(i % 97) + "\"\n";
    t += "\t\t\"ratio\"\t\t\"" + std::to_string(i % 13) + ".500000\"\n";
    t += "\t\t\"steamid\"\t\t\"STEAM_0:1:" + std::to_string(i * 7) + "\"\n\t}\n";
  }
  return t + "}\n";
}

}  // namespace

TEST(KeyValuesDifferential, DemoTreeFiles) {
  std::vector<fs::path> paths;
  for (const auto& entry : fs::recursive_directory_iterator(kFixtures / "demo"))
    if (entry.is_regular_file()) paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  ASSERT_GE(paths.size(), 7u);
  MemoryFileSystem files = IncludeFiles();
  std::string all;
  for (const fs::path& path : paths) {
    std::string relative = fs::relative(path, kFixtures).generic_string();
    all += "== " + relative + "\n" + LoadAndDump(ReadFile(path), files, relative.c_str());
  }
  ExpectFixture("demo_tree.dump", all);
}

TEST(KeyValuesDifferential, GeneratedHostileTexts) {
  Random r{0x7469646577726974ull};
  MemoryFileSystem files = IncludeFiles();
  std::string all;
  // The first hundred dumps are kept whole, the rest as a digest each: a changed digest names its text,
  // whose dump shows once the bound is raised.
  const int whole = 100;
  for (int doc = 0; doc < 300; ++doc) {
    std::string name = "gen" + std::to_string(doc) + ".txt";
    std::string dump = LoadAndDump(GenerateDocument(r), files, name.c_str());
    all += "== " + name + (doc < whole ? "\n" + dump : " " + Digest(dump));
  }
  ExpectFixture("generated.dump", all);
}

TEST(KeyValuesDifferential, LargeGeneratedFile) {
  MemoryFileSystem files;
  ExpectFixture("records.digest", Digest(LoadAndDump(GenerateRecords(), files, "records.txt")));
}
