// The key name table and memory of KeyValues. Names are symbols: the same name, ignoring case, gives the
// same integer everywhere in the process, and a symbol's text is the spelling first seen.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "vstdlib.h"

namespace {

struct CaseFoldHash {
  size_t operator()(const std::string& s) const {
    size_t h = 5381;
    for (unsigned char c : s) h = h * 33 + size_t(c >= 'A' && c <= 'Z' ? c + 32 : c);
    return h;
  }
};

struct CaseFoldEqual {
  bool operator()(const std::string& a, const std::string& b) const {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
  }
};

class CKeyValuesSystem final : public IKeyValuesSystem {
public:
  void* AllocKeyValuesMemory(int size) override { return malloc(size_t(size)); }
  void FreeKeyValuesMemory(void* memory) override { free(memory); }

  HKeySymbol GetSymbolForString(const char* name) override {
    if (!name) return INVALID_KEY_SYMBOL;
    m_probe.assign(name);
    auto it = m_symbols.find(m_probe);
    if (it != m_symbols.end()) return it->second;
    HKeySymbol symbol = HKeySymbol(m_names.size());
    m_names.push_back(std::make_unique<std::string>(m_probe));
    m_symbols.emplace(m_probe, symbol);
    return symbol;
  }

  const char* GetStringForSymbol(HKeySymbol symbol) override {
    if (symbol < 0 || size_t(symbol) >= m_names.size()) return "";
    return m_names[size_t(symbol)]->c_str();
  }

private:
  std::unordered_map<std::string, HKeySymbol, CaseFoldHash, CaseFoldEqual> m_symbols;
  std::vector<std::unique_ptr<std::string>> m_names;
  std::string m_probe;
};

}  // namespace

// Never destroyed, as the engine's lives as long as the process: trees that static objects own (the
// plugin's script pack tree) are deleted during static destruction, after this object's turn would come.
IKeyValuesSystem* KeyValuesSystem() {
  static auto* system = new CKeyValuesSystem;
  return system;
}
