// SPDX-License-Identifier: MIT
#include "simulator/Daemon.h"

#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <random>

namespace sim {

namespace {

const char kServiceContent[] =
    "<returnval>"
    "<rootFolder type=\"Folder\">group-d1</rootFolder>"
    "<propertyCollector type=\"PropertyCollector\">propertyCollector-1</propertyCollector>"
    "<about><name>Zorbel Host Agent</name><productLineId>embeddedOrx</productLineId>"
    "<apiVersion>2.5</apiVersion></about>"
    "<sessionManager type=\"SessionManager\">sessionManager-1</sessionManager>"
    "<authorizationManager type=\"AuthorizationManager\">authmgr-1</authorizationManager>"
    "</returnval>";

std::string Random(unsigned int words) {
  std::random_device source;
  std::string text;
  char word[16];
  for (unsigned int i = 0; i < words; ++i) {
    std::snprintf(word, sizeof(word), "%08x", source());
    text += word;
  }
  return text;
}

[[noreturn]] void Refuse(const std::string& text) {
  throw Fault{"InvalidRequestFault", text};
}

void CheckThis(const SoapCall& call, const char* wanted) {
  if (call.ThisValue() != wanted) Refuse(call.method + " is not a method of " + call.ThisValue());
}

}  // namespace

Daemon::Daemon(Inventory& objects, const DaemonOptions& given)
    : inventory(objects), options(given), collector(objects, given.maxObjects) {}

Daemon::~Daemon() {
  Shutdown();
  for (std::thread& task : tasks) task.join();
}

void Daemon::Shutdown() {
  shutdown = true;
  collector.Shutdown();
}

std::size_t Daemon::Sessions() {
  const std::lock_guard<std::mutex> lock(mutex);
  return sessions.size();
}

void Daemon::LoseSessions() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    sessions.clear();
  }
  collector.CloseAll();
}

void Daemon::CheckSession(const std::string& session) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (sessions.count(session) == 0) {
    throw Fault{"NotAuthenticatedFault", "The session is not authenticated."};
  }
}

std::string Daemon::Call(const SoapCall& call, std::string& session) {
  const std::string& method = call.method;
  if (method == "RetrieveServiceContent") {
    CheckThis(call, "ServiceInstance");
    return kServiceContent;
  }
  if (method == "AcquireLocalTicket") return Ticket(call);
  if (method == "Login") return Login(call, session);
  CheckSession(session);
  if (method == "Logout") {
    CheckThis(call, "sessionManager-1");
    collector.CloseSession(session);
    const std::lock_guard<std::mutex> lock(mutex);
    sessions.erase(session);
    return "";
  }
  if (method == "DestroyPropertyFilter") {
    collector.DestroyFilter(session, call.ThisValue());
    return "";
  }
  if (method == "RetrieveAllPermissions") {
    CheckThis(call, Inventory::kAuthorization);
    return inventory.PermissionsXml();
  }
  if (method == "StartTask") return StartTask(call);

  CheckThis(call, "propertyCollector-1");
  if (method == "CreateFilter") {
    if (call.Argument("partialUpdates") != "true") Refuse("partialUpdates is not true");
    return "<returnval type=\"PropertyFilter\">" +
           collector.CreateFilter(session, call.Element().child("spec")) + "</returnval>";
  }
  if (method == "WaitForUpdates") {
    return "<returnval>" + collector.Wait(session, call.Argument("version")) + "</returnval>";
  }
  if (method == "CancelWaitForUpdates") {
    collector.CancelWait(session);
    return "";
  }
  Refuse("There is no method " + method);
}

// --- logging in ----------------------------------------------------------------------------------

std::string Daemon::Ticket(const SoapCall& call) {
  CheckThis(call, "sessionManager-1");
  const std::string user = call.Argument("userName");
  if (user != options.user) throw Fault{"InvalidLoginFault", "There is no user " + user};
  if (options.ticketFolder.empty()) Refuse("This daemon hands no local tickets out.");
  const std::string password = Random(4);
  std::string path;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    tickets[user] = password;
    path = options.ticketFolder + "/ticket-" + std::to_string(nextTicket++);
  }
  const mode_t before = umask(0077);
  std::ofstream(path) << password;
  umask(before);
  return "<returnval><userName>" + user + "</userName><passwordFilePath>" + path +
         "</passwordFilePath></returnval>";
}

std::string Daemon::Login(const SoapCall& call, std::string& session) {
  CheckThis(call, "sessionManager-1");
  const std::string user = call.Argument("userName"), password = call.Argument("password");
  const std::lock_guard<std::mutex> lock(mutex);
  const auto ticket = tickets.find(user);
  const bool byTicket = ticket != tickets.end() && ticket->second == password;
  if (!byTicket && (user != options.user || password != options.password)) {
    throw Fault{"InvalidLoginFault", "Login refused."};
  }
  if (sessions.count(session) > 0) throw Fault{"InvalidStateFault", "Already logged in."};
  if (byTicket) tickets.erase(ticket);
  session = Random(4);
  sessions.insert(session);
  collector.OpenSession(session);
  return "<returnval><key>" + session.substr(0, 8) + "</key><userName>" + user +
         "</userName></returnval>";
}

// --- tasks ---------------------------------------------------------------------------------------

// Starts a task that is queued, then runs, then ends as "outcome" says ("hang": never; "leave": it
// disappears), each step after "millis" milliseconds. Both arguments may be missing; the object's
// identifier then names the outcome.
std::string Daemon::StartTask(const SoapCall& call) {
  const pugi::xml_node outcomeNode = call.Element().child("outcome");
  const std::string given = outcomeNode ? outcomeNode.text().get() : call.ThisValue();
  const std::string outcome =
      given == "error" || given == "hang" || given == "leave" ? given : "success";
  const int millis = call.Element().child("millis").text().as_int(20);
  const std::string id = inventory.StartTask();
  const std::lock_guard<std::mutex> lock(mutex);
  tasks.emplace_back([this, id, outcome, millis] {
    const auto step = std::chrono::milliseconds(millis);
    std::this_thread::sleep_for(step);
    inventory.Set(id, "info.state", "running");
    std::this_thread::sleep_for(step);
    if (shutdown || outcome == "hang") return;
    if (outcome == "leave") {
      inventory.RemoveTask(id);
    } else {
      inventory.Set(id, "info.state", outcome);
    }
  });
  return "<returnval type=\"Task\">" + id + "</returnval>";
}

}  // namespace sim
