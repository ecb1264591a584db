// What a handler gives back when it is called through the Python door, as plain values: nothing, a text, an
// int, a float, three floats, or a list of named rows. Handlers fill the slot through the result helpers of
// doors.h and keygroups.h; the Python door takes the value out and alone turns it into a Python object.
#pragma once

#include <array>
#include <string>
#include <variant>
#include <vector>

// The value of one field of a list row.
using FieldValue = std::variant<std::string, int, float>;

// Rows of named fields that a handler fills once, in order. At the console doors each row becomes a key of
// a keygroup with its fields as values; from Python the list is a dictionary of dictionaries, row name to
// field name to value.
class ListResult {
public:
  struct Field {
    std::string name;
    FieldValue value;
  };
  struct Row {
    std::string name;
    std::vector<Field> fields;
    bool numbered = false;  // named by a number: Python keys it by the int
  };

  // Starts a row; the fields set next belong to it.
  void AddRow(const char* name);
  // A row named by a number (a userid, an entity index) in decimal.
  void AddRow(int number);
  void Text(const char* field, const char* value);
  void Int(const char* field, int value);
  void Float(const char* field, float value);

  const std::vector<Row>& Rows() const { return m_rows; }

private:
  void Add(const char* field, FieldValue value);

  std::vector<Row> m_rows;
};

// The slot's value; std::monostate when the handler gave nothing.
using ResultValue = std::variant<std::monostate, std::string, int, float, std::array<float, 3>, ListResult>;

// Each replaces what the slot holds.
void SetResultText(const char* value);
void SetResultInt(int value);
void SetResultFloat(float value);
void SetResultFloats(float a, float b, float c);
void SetResultList(ListResult list);
// Gives the slot's value and leaves the slot empty.
ResultValue TakeResult();
// Puts back a value taken before: a Python call nested in another's handler keeps the outer call's value.
void RestoreResult(ResultValue value);
