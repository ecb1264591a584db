// The library's one export: only the exact current name gives the plugin object.
#include <gtest/gtest.h>

#include "host/plugin.h"

extern "C" void* CreateInterface(const char* name, int* returnCode);

namespace {

TEST(CreateInterface, CurrentNameGivesThePluginObject) {
  int code = -1;
  void* found = CreateInterface("ISERVERPLUGINCALLBACKS002", &code);
  EXPECT_EQ(code, IFACE_OK);
  EXPECT_EQ(found, static_cast<IServerPluginCallbacks*>(&g_TidewrightPlugin));
}

TEST(CreateInterface, OtherNamesGiveNothing) {
  for (const char* name : {"ISERVERPLUGINCALLBACKS001", "ISERVERPLUGINCALLBACKS003", "iserverplugincallbacks002",
                           "ISERVERPLUGINCALLBACKS00", "ISERVERPLUGINCALLBACKS0022", "", "VEngineServer021"}) {
    SCOPED_TRACE(name);
    int code = -1;
    EXPECT_EQ(CreateInterface(name, &code), nullptr);
    EXPECT_EQ(code, IFACE_FAILED);
  }
}

TEST(CreateInterface, NullCodeIsToleratedEitherWay) {
  EXPECT_NE(CreateInterface("ISERVERPLUGINCALLBACKS002", nullptr), nullptr);
  EXPECT_EQ(CreateInterface("ISERVERPLUGINCALLBACKS001", nullptr), nullptr);
  int code = -1;
  EXPECT_EQ(CreateInterface(nullptr, &code), nullptr);
  EXPECT_EQ(code, IFACE_FAILED);
}

}  // namespace
