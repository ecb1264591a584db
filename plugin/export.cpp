// The library's only export. Interfaces are kept in a singly linked list of records made by static
// initialisation; the plugin object is the one record, under "ISERVERPLUGINCALLBACKS002".
#include "plugin.h"

namespace {

struct InterfaceReg {
  void* (*factory)();
  const char* name;
  InterfaceReg* next;
};

InterfaceReg* s_interfaces = nullptr;

struct InterfaceRegistrar {
  InterfaceReg reg;
  InterfaceRegistrar(void* (*factory)(), const char* name) : reg{factory, name, s_interfaces} { s_interfaces = &reg; }
};

void* PluginFactory() { return static_cast<IServerPluginCallbacks*>(&g_TidewrightPlugin); }

InterfaceRegistrar s_pluginReg(PluginFactory, INTERFACEVERSION_ISERVERPLUGINCALLBACKS);

bool SameName(const char* a, const char* b) {
  while (*a && *a == *b) ++a, ++b;
  return *a == *b;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void* CreateInterface(const char* name, int* returnCode) {
  for (InterfaceReg* r = s_interfaces; r; r = r->next) {
    if (name && SameName(r->name, name)) {
      if (returnCode) *returnCode = IFACE_OK;
      return r->factory();
    }
  }
  if (returnCode) *returnCode = IFACE_FAILED;
  return nullptr;
}
