// Texts of server variables: editing one in place (tw_xstring), picking a token (tw_xtoken), comparing and
// measuring (strcmp, strlen), and the format family (format, formatv, formatqv), which fills numbered
// placeholders. Quoting for SQL comes from SQLite's "%q"; splitting, replacing and slicing from the support
// library's Q_ helpers.
#pragma once

// Bytes of every text this library builds, terminator included: no result is longer than 1023 characters.
enum { STRING_BUFFER_SIZE = 1024 };

// The passes of the format family over one format string. Each Fill replaces its placeholder everywhere in
// the text as it stands (so "%1" also matches the start of "%10", and a value holding "%2" is filled by the
// next pass); Finish turns "%%" into "%". Texts past STRING_BUFFER_SIZE - 1 characters are cut silently.
class FormatText {
public:
  explicit FormatText(const char* format);
  void Fill(int number, const char* value);
  const char* Finish();

private:
  void Substitute(const char* match, const char* replacement);

  char m_work[STRING_BUFFER_SIZE];
  char m_out[STRING_BUFFER_SIZE];
};
