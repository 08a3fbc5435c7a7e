// tests/hostrun/unit/service_list_test.cpp - the list of services: which functions it lets into the host's
// table, and that the host serves all of it.
#include "hostrun/host/service_list.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "hostrun/host/services.h"

namespace hostrun {
namespace {

// The host's table takes what IsService and IsProcedure let through. Compiling this is the check.
static_assert(IsService<Object*(const char*)>("PluginNewInstance"));
static_assert(!IsService<Object*(HostString*)>("PluginNewInstance"), "another argument");
static_assert(!IsService<HostString*(const char*)>("PluginNewInstance"), "another result");
static_assert(!IsService<Object*()>("PluginNewInstance"), "an argument too few");
static_assert(!IsService<Object*(const char*, std::int32_t)>("PluginNewInstance"), "an argument too many");
static_assert(!IsService<Object*(const char*)>("PluginNewInstances"), "a name that is not there");
static_assert(!IsService<Object*(const char*)>("REALnewInstance"), "the bundle's name for it");
static_assert(IsService<const void*(HostString*)>("REALGetStringCFString"), "one of two types of one name");
static_assert(IsService<const void*(HostString*, char)>("REALGetStringCFString"), "the other");
static_assert(!IsService<std::int32_t(HostString*)>("LenB( s as string ) as integer"),
              "found by another way");
static_assert(IsProcedure<void(Object*, std::int32_t, double)>("RuntimeArrayDirectGetInsertProc"));
static_assert(IsProcedure<void(Object*, std::int32_t, Object*)>("RuntimeArrayDirectGetInsertProc"));
static_assert(!IsProcedure<void(Object*, std::int32_t, float)>("RuntimeArrayDirectGetInsertProc"));
static_assert(!IsProcedure<void(Object*, std::int32_t, double)>("RuntimeUBound"), "answers no procedure");

// Written down by hand: what plugins ask for, whatever the list says.
const std::set<std::string> kNames = {"REALGetRBVersion",
                                      "RegisterPluginVersion",
                                      "PluginRegisterClass",
                                      "PluginNewInstance",
                                      "REALLockObject",
                                      "REALUnlockObject",
                                      "REALSetPropValueInt",
                                      "REALSetPropValueString",
                                      "RuntimeRaiseException",
                                      "REALLockString",
                                      "REALUnlockString",
                                      "REALBuildString",
                                      "REALBuildStringWithEncoding",
                                      "REALConvertString",
                                      "REALGetStringEncoding",
                                      "REALSetStringEncoding",
                                      "REALGetStringCFString",
                                      "PluginGetStringData",
                                      "PluginDisposeStringData",
                                      "StringGetCString",
                                      "newMemoryBlock",
                                      "memoryBlockGetPtr",
                                      "memoryBlockGetSize",
                                      "RuntimeArrayCreateSingleDimBoundedArray",
                                      "RuntimeUBound",
                                      "RuntimeArrayDirectGetInsertProc",
                                      "RuntimeArrayDirectGetGetProc",
                                      "REALFSRefFromFolderItem",
                                      "REALLoadGlobalMethod"};

TEST(ServiceList, HasEachNameThatPluginsAskForAndNoOther) {
  std::set<std::string> names;
  ForEachService([&]<class>(const char*, const char* hostName) { names.insert(hostName); });
  EXPECT_EQ(names, kNames);
}

TEST(ServiceList, TheHostServesEachName) {
  for (const std::string& name : kNames) EXPECT_NE(ResolveService(name.c_str()), nullptr) << name;
}

TEST(ServiceList, TheHostDoesNotKnowTheBundlesOwnNames) {
  ForEachService([]<class>(const std::string& bundleName, const char*) {
    if (kNames.contains(bundleName)) return;
    EXPECT_EQ(ResolveService(bundleName.c_str()), nullptr) << bundleName;
  });
}

}  // namespace
}  // namespace hostrun
