// The engine's console chain and its index, and the making of the server's own console objects.
#include "console.h"

#include <cstring>

#include "tier0.h"

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
    MakeOwned([&] { return new ConCommand(d.name, d.handler, d.help, d.flags | FCVAR_UNREGISTERED); });
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
