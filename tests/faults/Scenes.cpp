// SPDX-License-Identifier: MIT
#include "faults/Scenes.h"

#include <stdexcept>

namespace faults {
namespace {

void Nothing(Stage&) {}
void Enter(Stage& s) {
  s.Enter();
}
void EnterAndWatch(Stage& s) {
  s.Enter();
  s.WatchSystems();
  s.AwaitWait();
}
void EnterAndWatchAll(Stage& s) {
  EnterAndWatch(s);
  s.WatchAuthorization();
  s.CachesBecomeTrue();
  s.AwaitWait();
}

bool EntersAgain(Stage& s) {
  return s.Enter() == "returns" && s.LoggedIn();
}
bool LogsInAgain(Stage& s) {
  if (s.LoggedIn()) return true;
  return s.LogIn() == "returns" && s.LoggedIn();
}
bool WatchesAgain(Stage& s) {
  return s.WatchSystems() == "returns" && s.CachesBecomeTrue();
}
bool WatchesAuthorizationAgain(Stage& s) {
  return s.WatchAuthorization() == "returns" && WatchesAgain(s);
}
bool CachesBecomeTrue(Stage& s) {
  return s.CachesBecomeTrue();
}
bool CallsAgain(Stage& s) {
  return s.CallMethod() == "returns";
}

template <std::string (Stage::*step)()>
std::string Do(Stage& s) {
  return (s.*step)();
}

const Scene kScenes[] = {
    {"RetrieveServiceContent", "RetrieveServiceContent", Nothing, Do<&Stage::Enter>, EntersAgain},
    {"AcquireLocalTicket", "AcquireLocalTicket", Nothing, Do<&Stage::Enter>, EntersAgain},
    {"Login", "Login", Nothing, Do<&Stage::Enter>, LogsInAgain},
    {"Logout", "Logout", Enter, Do<&Stage::LogOut>, LogsInAgain},
    {"CreateFilter", "CreateFilter", Enter, Do<&Stage::WatchSystems>, WatchesAgain},
    {"WaitForUpdates: first", "WaitForUpdates", Enter, Do<&Stage::WatchSystems>, CachesBecomeTrue},
    {"WaitForUpdates: later", "WaitForUpdates", EnterAndWatch, Do<&Stage::MeetInLoop>,
     CachesBecomeTrue},
    {"CancelWaitForUpdates", "CancelWaitForUpdates", EnterAndWatch, Do<&Stage::StopAll>,
     WatchesAgain},
    {"DestroyPropertyFilter", "DestroyPropertyFilter", EnterAndWatch, Do<&Stage::StopWatching>,
     WatchesAgain},
    {"RetrieveAllPermissions: first", "RetrieveAllPermissions", Enter,
     Do<&Stage::WatchAuthorization>, WatchesAuthorizationAgain},
    {"RetrieveAllPermissions: later", "RetrieveAllPermissions", EnterAndWatchAll,
     Do<&Stage::MeetInLoop>, CachesBecomeTrue},
    {"your own call", "StartTask", Enter, Do<&Stage::CallMethod>, CallsAgain},
};

}  // namespace

const Scene& FindScene(const std::string& name) {
  for (const Scene& scene : kScenes) {
    if (name == scene.name) return scene;
  }
  throw std::runtime_error("There is no scene " + name);
}

}  // namespace faults
