// The engine's console chain and its index, and the making of the server's own console objects.
#include "console.h"

#include <algorithm>
#include <cstring>

#include "tier0.h"

namespace {

// The row of the table command whose handler runs now; nested dispatches restore the outer one.
const ConsoleCommandDef* s_runningRow = nullptr;

// A command of a server table: the row's checks, then its handler.
class CTableCommand final : public ConCommand {
public:
  CTableCommand(CCvar& console, const ConsoleCommandDef& row)
      : ConCommand(row.name, row.handler, row.help, row.flags | FCVAR_UNREGISTERED), m_console(console), m_row(row) {
    SetUsage(row.usage);
  }

  void Dispatch() override {
    if (IsBitSet(FCVAR_CHEAT) && !m_console.CheatsAllowed()) {
      Msg("Can't use cheat command %s unless sv_cheats is 1\n", GetName());
      return;
    }
    if (m_console.CurrentArgc() < m_row.minArgc) {
      Msg("%s", m_row.usage ? m_row.usage : "");
      return;
    }
    const ConsoleCommandDef* outer = s_runningRow;
    s_runningRow = &m_row;
    m_row.handler();
    s_runningRow = outer;
  }

private:
  CCvar& m_console;
  const ConsoleCommandDef m_row;
};

}  // namespace

void PrintConsoleUsage() {
  if (s_runningRow && s_runningRow->usage) Msg("%s", s_runningRow->usage);
}

size_t CaseFoldHash::operator()(std::string_view s) const {
  size_t h = 5381;
  for (unsigned char c : s) h = h * 33 + size_t(c >= 'A' && c <= 'Z' ? c + 32 : c);
  return h;
}

bool CaseFoldEqual::operator()(std::string_view a, std::string_view b) const {
  return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

void CCvar::RegisterConCommandBase(ConCommandBase* base) {
  if (!base || !base->GetName() || !base->GetName()[0]) {
    Warning("Console: refused to register an object without a name\n");
    return;
  }
  base->SetNext(m_head);
  m_head = base;
  base->MarkRegistered();
  m_byName.insert_or_assign(base->GetName(), base);
  if (!base->IsCommand()) m_varsByName.insert_or_assign(base->GetName(), static_cast<ConVar*>(base));
}

ConVar* CCvar::FindVar(const char* name) {
  if (!name) return nullptr;
  auto it = m_varsByName.find(std::string_view(name));
  return it == m_varsByName.end() ? nullptr : it->second;
}

ConCommandBase* CCvar::FindCommandBase(std::string_view name) const {
  auto it = m_byName.find(name);
  return it == m_byName.end() ? nullptr : it->second;
}

namespace {

char FoldCase(char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; }

// Edits (insert, delete, replace, swap of two neighbours) that turn A into B, ignoring case; any count
// above LIMIT comes back as LIMIT + 1.
size_t EditDistance(std::string_view a, std::string_view b, size_t limit) {
  if ((a.size() > b.size() ? a.size() - b.size() : b.size() - a.size()) > limit) return limit + 1;
  std::vector<size_t> before(b.size() + 1), previous(b.size() + 1), row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) previous[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    size_t best = row[0];
    for (size_t j = 1; j <= b.size(); ++j) {
      size_t cost = FoldCase(a[i - 1]) == FoldCase(b[j - 1]) ? 0 : 1;
      row[j] = std::min({previous[j] + 1, row[j - 1] + 1, previous[j - 1] + cost});
      if (i > 1 && j > 1 && FoldCase(a[i - 1]) == FoldCase(b[j - 2]) && FoldCase(a[i - 2]) == FoldCase(b[j - 1]))
        row[j] = std::min(row[j], before[j - 2] + 1);
      best = std::min(best, row[j]);
    }
    if (best > limit) return limit + 1;
    before.swap(previous);
    previous.swap(row);
  }
  return std::min(previous[b.size()], limit + 1);
}

constexpr size_t kShortName = 4;       // up to this length a name is one edit from its suggestion
constexpr size_t kMostEdits = 2;
constexpr size_t kShortestPrefix = 3;  // a shorter start names too many commands to suggest one

}  // namespace

std::string CCvar::NearestName(std::string_view name) const {
  struct Candidate {
    size_t rank;    // edits, or one more than the most edits for a name that NAME begins
    size_t length;  // among names that NAME begins, the shorter ranks first
    const char* name;
  };
  auto ranksBefore = [](const Candidate& a, const Candidate& b) {
    if (a.rank != b.rank) return a.rank < b.rank;
    if (a.length != b.length) return a.length < b.length;
    return strcasecmp(a.name, b.name) < 0;
  };
  const size_t limit = name.size() <= kShortName ? 1 : kMostEdits;
  Candidate best{limit + 2, 0, nullptr};
  for (const auto& [known, base] : m_byName) {
    if (known.find("__") != std::string::npos) continue;
    Candidate c{EditDistance(name, known, limit), 0, base->GetName()};
    if (c.rank > limit) {
      bool begins = name.size() >= kShortestPrefix && known.size() > name.size() &&
                    strncasecmp(known.c_str(), name.data(), name.size()) == 0;
      if (!begins) continue;
      c = Candidate{limit + 1, known.size(), base->GetName()};
    }
    if (ranksBefore(c, best)) best = c;
  }
  return best.name ? best.name : "";
}

void CCvar::PrintUnknown(std::string_view name) const {
  Msg("Unknown command \"%.*s\"\n", int(name.size()), name.data());
  std::string nearest = NearestName(name);
  if (!nearest.empty()) Msg("  Did you mean \"%s\"?\n", nearest.c_str());
}

bool CCvar::CheatsAllowed() {
  ConVar* cheats = FindVar("sv_cheats");
  return cheats && cheats->GetInt() >= 1;
}

void CCvar::CallGlobalChangeCallback(ConVar* var, const char* oldString) {
  if (!var || !var->IsBitSet(FCVAR_NOTIFY)) return;
  const char* now = var->GetString();
  if (oldString && strcmp(oldString, now) == 0) return;
  Msg("Server cvar \"%s\" changed to %s\n", var->GetName(), now);
  if (m_notifyHook) m_notifyHook(var);
}

template <class Make>
ConCommandBase* CCvar::MakeOwned(Make make) {
  IConCommandBaseAccessor* accessor = ConCommandBase::s_pAccessor;
  ConCommandBase::s_pAccessor = nullptr;
  ConCommandBase* base = make();
  ConCommandBase::s_pAccessor = accessor;
  m_owned.emplace_back(base);
  RegisterConCommandBase(base);
  base->SetFlagsRaw(base->GetFlagsRaw() & ~FCVAR_UNREGISTERED);
  return base;
}

void CCvar::AddCommands(const ConsoleCommandDef* defs, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    const ConsoleCommandDef& d = defs[i];
    MakeOwned([&] { return new CTableCommand(*this, d); });
  }
}

void CCvar::AddVars(const ConsoleVarDef* defs, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    const ConsoleVarDef& d = defs[i];
    MakeOwned([&] { return new ConVar(d.name, d.defaultValue, d.flags | FCVAR_UNREGISTERED, d.help, d.onChange); });
  }
}

ConVar* CCvar::CreateVar(const char* name, const char* value, int flags, const char* help) {
  m_ownedText.push_back(std::make_unique<std::string>(name));
  const char* ownedName = m_ownedText.back()->c_str();
  m_ownedText.push_back(std::make_unique<std::string>(value ? value : ""));
  const char* ownedValue = m_ownedText.back()->c_str();
  return static_cast<ConVar*>(
      MakeOwned([&] { return new ConVar(ownedName, ownedValue, flags | FCVAR_UNREGISTERED, help); }));
}
