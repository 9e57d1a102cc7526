// SPDX-License-Identifier: MIT
//
// The way in: service instances by configuration, their sessions, and logging in.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kecpp.h>

#include "simulator/driver/Simulator.h"

namespace endtoend {
namespace {

using driver::Simulator;
using KE::Service::DEFAULT_CONFIG_CONTENT;
using KE::Service::KEServiceInst;
using KE::Service::KESession;

class Entry : public testing::Test {
 protected:
  Entry() { KELib::Logging::GetDefaultLogger()->SetLevelByName("error"); }
  ~Entry() override { KE::Service::FreeServiceManagerInstance(); }

  int Calls(const char* method) { return simulator.Stats()["calls"].value(method, 0); }
  void Fail(const char* method) {
    simulator.Control("fault",
                      {{"method", method}, {"kind", "soap-fault"}, {"fault", "Unwilling"}});
  }

  KE::Service::KEConnectFailureKind LastFailure() {
    KE::Service::KEConnectFailure failure;
    manager.GetLastFailure(failure);
    return failure.kind;
  }

  Simulator simulator{{"--user", "a<b&c", "--password", "p&\"w>"}};
  KE::Service::KEServiceInstManager& manager = *KE::Service::GetServiceManagerInstance();
  // Needs no ticket: what stands in the document is XML text.
  const std::string config = simulator.Config("a&lt;b&amp;c", "p&amp;\"w&gt;");
};

TEST_F(Entry, AReadableConfigurationIsOneInstance) {
  const std::string path = simulator.ConfigFile(config);
  KEServiceInst* byPath = manager.GetServiceInstance(path.c_str(), DEFAULT_CONFIG_CONTENT);
  ASSERT_NE(byPath, nullptr);
  EXPECT_EQ(manager.GetServiceInstance(path.c_str(), DEFAULT_CONFIG_CONTENT), byPath);
  KEServiceInst* byText = manager.GetServiceInstance(config.c_str(), DEFAULT_CONFIG_CONTENT);
  EXPECT_NE(byText, byPath);
  EXPECT_EQ(manager.GetServiceInstance(config.c_str(), DEFAULT_CONFIG_CONTENT), byText);
  EXPECT_EQ(Calls("Login"), 2);
  manager.FreeServiceInstance(byPath);
  manager.FreeServiceInstance(nullptr);
  EXPECT_EQ(simulator.Stats()["sessions"], 1);
  manager.FreeAllServiceInstance();
  EXPECT_EQ(simulator.Stats()["sessions"], 0);
}

TEST_F(Entry, TheDefaultDocumentConnectsAnewAndFreesTheInstanceBefore) {
  KELib::KEString none;
  for (const char* path : {"", "/nowhere/config.xml", ""}) {
    KEServiceInst* instance = manager.GetServiceInstance(path, config.c_str());
    ASSERT_NE(instance, nullptr);
    EXPECT_TRUE(instance->IsInitialized());
  }
  EXPECT_EQ(Calls("Login"), 3);
  EXPECT_EQ(manager.GetServiceInstance(none, ""), nullptr);
}

TEST_F(Entry, NothingIsLeftWhenTheManagerIsFreed) {
  for (int round = 1; round <= 2; ++round) {
    KELib::Logging::GetDefaultLogger()->SetLevelByName("error");
    KE::Service::KEServiceInstManager* again = KE::Service::GetServiceManagerInstance();
    ASSERT_NE(again->GetServiceInstance(config.c_str(), DEFAULT_CONFIG_CONTENT), nullptr);
    EXPECT_EQ(Calls("Login"), round) << "the manager before is forgotten";
    KE::Service::FreeServiceManagerInstance();
    EXPECT_EQ(simulator.Stats()["sessions"], 0);
    EXPECT_STREQ(KELib::Logging::GetDefaultLogger()->GetLevelByName(), "verbose");
  }
}

TEST_F(Entry, SessionsTakeTurns) {
  KEServiceInst* instance = manager.GetServiceInstance(config.c_str(), DEFAULT_CONFIG_CONTENT);
  ASSERT_NE(instance, nullptr);
  KESession* first = instance->GetCurrentSession();
  KESession* second = instance->CreateSession();
  EXPECT_EQ(instance->GetSession(), first);
  EXPECT_EQ(instance->GetSession(), second);
  EXPECT_EQ(instance->GetCurrentSession(), first);
  EXPECT_NE(first->GetId(), second->GetId());
  instance->Stop();
  EXPECT_EQ(instance->GetSession(), nullptr);
  EXPECT_EQ(simulator.Stats()["sessions"], 0);
}

TEST_F(Entry, AFailedLoginShowsAtTheDataSyncAndMayBeRepeated) {
  Fail("Login");
  KEServiceInst* instance = manager.GetServiceInstance(config.c_str(), DEFAULT_CONFIG_CONTENT);
  ASSERT_NE(instance, nullptr);
  KESession* session = instance->GetSession();
  try {
    session->GetDataSync();
    FAIL() << "not logged in";
  } catch (const KELib::SystemException& error) {
    EXPECT_STREQ(error.What(), "No Session in Progress");
  }
  EXPECT_EQ(LastFailure(), KE::Service::KEConnectFailureKind::loginRefused);
  KELib::KEString user("a<b&c"), password("p&\"w>");  // raw texts
  session->Login(user, password);
  EXPECT_NE(session->GetDataSync(), nullptr);
  EXPECT_EQ(LastFailure(), KE::Service::KEConnectFailureKind::none);
  session->Login(user, password);
  EXPECT_EQ(Calls("Login"), 2) << "refused while logged in";
  Fail("Logout");
  session->Logout();
  EXPECT_THROW(session->GetDataSync(), KELib::SystemException);
  session->Logout();
  EXPECT_EQ(Calls("Logout"), 1) << "there is nothing to log out of";
}

}  // namespace
}  // namespace endtoend
