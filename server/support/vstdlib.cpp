// The engine's vstdlib exports other than KeyValuesSystem: the process command line, random numbers and the
// Q_ text helpers.
#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "vstdlib.h"

// ---- command line ----

namespace {

class CCommandLine final : public ICommandLine {
public:
  void CreateCmdLine(const char* commandLine) override { m_line = commandLine ? commandLine : ""; }

  void CreateCmdLine(int argc, char** argv) override {
    m_line.clear();
    for (int i = 0; i < argc; ++i) {
      if (i) m_line += ' ';
      bool quote = strchr(argv[i], ' ') != nullptr || argv[i][0] == '\0';
      if (quote) m_line += '"';
      m_line += argv[i];
      if (quote) m_line += '"';
    }
  }

  const char* GetCmdLine() const override { return m_line.c_str(); }

  // Finds `parm` as a whole word; `value` receives the word behind it (valid until the next call).
  const char* CheckParm(const char* parm, const char** value) const override {
    if (value) *value = nullptr;
    size_t n = strlen(parm);
    for (size_t pos = m_line.find(parm); pos != std::string::npos; pos = m_line.find(parm, pos + 1)) {
      bool startOk = pos == 0 || m_line[pos - 1] == ' ';
      bool endOk = pos + n == m_line.size() || m_line[pos + n] == ' ';
      if (!startOk || !endOk) continue;
      if (value) {
        size_t v = m_line.find_first_not_of(' ', pos + n);
        if (v != std::string::npos) {
          size_t e = m_line.find(' ', v);
          m_value = m_line.substr(v, e == std::string::npos ? std::string::npos : e - v);
          *value = m_value.c_str();
        }
      }
      return m_line.c_str() + pos;
    }
    return nullptr;
  }

  const char* ParmValue(const char* parm, const char* defaultValue) const override {
    const char* value = nullptr;
    if (!CheckParm(parm, &value) || !value || value[0] == '-' || value[0] == '+') return defaultValue;
    return value;
  }

private:
  std::string m_line;
  mutable std::string m_value;
};

std::mt19937& Rng() {
  static std::mt19937 rng(20070926u);  // fixed, so that batch runs repeat exactly
  return rng;
}

}  // namespace

ICommandLine* CommandLine() {
  static CCommandLine line;
  return &line;
}

// ---- random numbers ----

void RandomSeed(int seed) { Rng().seed(uint32_t(seed)); }

int RandomInt(int min, int max) {
  if (max < min) std::swap(min, max);
  return std::uniform_int_distribution<int>(min, max)(Rng());
}

float RandomFloat(float min, float max) {
  if (max < min) std::swap(min, max);
  if (max == min) return min;
  return std::uniform_real_distribution<float>(min, max)(Rng());
}

// ---- text helpers ----

int Q_snprintf(char* out, int maxLen, const char* format, ...) {
  if (maxLen <= 0) return 0;
  va_list args;
  va_start(args, format);
  int n = vsnprintf(out, size_t(maxLen), format, args);
  va_end(args);
  if (n < 0) {
    out[0] = '\0';
    return 0;
  }
  return n >= maxLen ? maxLen - 1 : n;
}

void Q_strncpy(char* out, const char* in, int maxLen) {
  if (maxLen <= 0) return;
  int i = 0;
  if (in)
    for (; i < maxLen - 1 && in[i]; ++i) out[i] = in[i];
  out[i] = '\0';
}

int Q_strcasecmp(const char* a, const char* b) {
  if (a == b) return 0;
  if (!a) return -1;
  if (!b) return 1;
  return strcasecmp(a, b);
}

int Q_strncasecmp(const char* a, const char* b, int n) {
  if (a == b) return 0;
  if (!a) return -1;
  if (!b) return 1;
  return strncasecmp(a, b, size_t(n));
}

const char* Q_stristr(const char* haystack, const char* needle) {
  if (!haystack || !needle) return nullptr;
  size_t n = strlen(needle);
  if (n == 0) return haystack;
  for (const char* p = haystack; *p; ++p)
    if (strncasecmp(p, needle, n) == 0) return p;
  return nullptr;
}

int Q_atoi(const char* text) {
  if (!text) return 0;
  while (*text == ' ' || *text == '\t') ++text;
  int sign = 1;
  if (*text == '-' || *text == '+') {
    if (*text == '-') sign = -1;
    ++text;
  }
  unsigned int value = 0;
  if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    for (text += 2; isxdigit(static_cast<unsigned char>(*text)); ++text) {
      unsigned char c = static_cast<unsigned char>(*text);
      value = value * 16u + unsigned(isdigit(c) ? c - '0' : (tolower(c) - 'a' + 10));
    }
  } else {
    for (; isdigit(static_cast<unsigned char>(*text)); ++text) value = value * 10u + unsigned(*text - '0');
  }
  return int(unsigned(sign) * value);
}

float Q_atof(const char* text) { return text ? float(strtod(text, nullptr)) : 0.0f; }

bool Q_StrSubst(const char* in, const char* match, const char* replacement, char* out, int maxLen,
                bool caseSensitive) {
  if (maxLen <= 0) return false;
  size_t matchLen = strlen(match);
  size_t replLen = strlen(replacement);
  int len = 0;
  bool fits = true;
  auto put = [&](const char* s, size_t n) {
    for (size_t i = 0; i < n; ++i) {
      if (len >= maxLen - 1) {
        fits = false;
        return;
      }
      out[len++] = s[i];
    }
  };
  for (const char* p = in; *p && fits;) {
    bool hit = matchLen > 0 &&
               (caseSensitive ? strncmp(p, match, matchLen) == 0 : strncasecmp(p, match, matchLen) == 0);
    if (hit) {
      put(replacement, replLen);
      p += matchLen;
    } else {
      put(p, 1);
      ++p;
    }
  }
  out[len] = '\0';
  return fits;
}

void Q_StrSlice(const char* in, int first, int last, char* out, int maxLen) {
  if (maxLen <= 0) return;
  int length = int(strlen(in));
  if (first < 0) first = std::max(0, length + first);
  if (last < 0) last = std::max(0, length + last);
  first = std::min(first, length);
  last = std::min(last, length);
  int n = std::max(0, std::min(last - first, maxLen - 1));
  memcpy(out, in + first, size_t(n));
  out[n] = '\0';
}

void Q_SplitString(const char* in, const char* separator, std::vector<std::string>& out) {
  out.clear();
  auto keep = [&out](const char* start, size_t n) {
    if (n > 0) out.emplace_back(start, n);
  };
  size_t sepLen = strlen(separator);
  if (sepLen == 0) {
    keep(in, strlen(in));
    return;
  }
  const char* start = in;
  for (const char* hit = Q_stristr(start, separator); hit; hit = Q_stristr(start, separator)) {
    keep(start, size_t(hit - start));
    start = hit + sepLen;
  }
  keep(start, strlen(start));
}
