// The result slot and the list result: plain values, so that the doors and the handlers never touch the
// Python API. The slot is process-wide and holds one value at a time.
#include "language/results.h"

#include <string>
#include <utility>

#include "tier0.h"

namespace {
ResultValue s_result;
}  // namespace

// ---- the list result ----

void ListResult::AddRow(const char* name) { m_rows.push_back(Row{name, {}}); }
void ListResult::AddRow(int number) { m_rows.push_back(Row{std::to_string(number), {}, true}); }

void ListResult::Text(const char* field, const char* value) { Add(field, std::string(value)); }
void ListResult::Int(const char* field, int value) { Add(field, value); }
void ListResult::Float(const char* field, float value) { Add(field, value); }

void ListResult::Add(const char* field, FieldValue value) {
  TW_ASSERT(!m_rows.empty(), "a list's fields follow their row");
  m_rows.back().fields.push_back(Field{field, std::move(value)});
}

// ---- the slot ----

void SetResultText(const char* value) { s_result = std::string(value); }
void SetResultInt(int value) { s_result = value; }
void SetResultFloat(float value) { s_result = value; }
void SetResultFloats(float a, float b, float c) { s_result = std::array<float, 3>{a, b, c}; }
void SetResultList(ListResult list) { s_result = std::move(list); }

ResultValue TakeResult() { return std::exchange(s_result, ResultValue{}); }

void RestoreResult(ResultValue value) { s_result = std::move(value); }
