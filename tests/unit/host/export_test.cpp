// The library's one export: only the exact current name gives the plugin object.
#include <gtest/gtest.h>

#include "plugin.h"

extern "C" void* CreateInterface(const char* name, int* returnCode);

namespace {

TEST(CreateInterface, OnlyTheExactCurrentNameGivesThePluginObject) {
  int code = -1;
  EXPECT_EQ(CreateInterface("ISERVERPLUGINCALLBACKS002", &code), static_cast<IServerPluginCallbacks*>(&g_TidewrightPlugin));
  EXPECT_EQ(code, IFACE_OK);
  for (const char* name : {"ISERVERPLUGINCALLBACKS001", "ISERVERPLUGINCALLBACKS003", "iserverplugincallbacks002",
                           "ISERVERPLUGINCALLBACKS00", "ISERVERPLUGINCALLBACKS0022", "", "VEngineServer021",
                           static_cast<const char*>(nullptr)}) {
    SCOPED_TRACE(name ? name : "(null)");
    code = -1;
    EXPECT_EQ(CreateInterface(name, &code), nullptr);
    EXPECT_EQ(code, IFACE_FAILED);
  }
  EXPECT_NE(CreateInterface("ISERVERPLUGINCALLBACKS002", nullptr), nullptr);  // a null code either way
  EXPECT_EQ(CreateInterface("ISERVERPLUGINCALLBACKS001", nullptr), nullptr);
}

}  // namespace
