// SPDX-License-Identifier: MIT
#include "simulator/Daemon.h"

#include <map>
#include <vector>

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

// On which object a method acts, and its arguments. A null value: any object of the type; a null
// type: any object.
struct Shape {
  const char* type;
  const char* value;
  std::vector<std::string> elements;
};

const std::map<std::string, Shape>& Shapes() {
  static const auto& shapes = *new std::map<std::string, Shape>{
      {"RetrieveServiceContent", {"ServiceInstance", "ServiceInstance", {"_this"}}},
      {"AcquireLocalTicket", {"SessionManager", "sessionManager-1", {"_this", "userName"}}},
      {"Login", {"SessionManager", "sessionManager-1", {"_this", "userName", "password"}}},
      {"Logout", {"SessionManager", "sessionManager-1", {"_this"}}},
      {"CreateFilter",
       {"PropertyCollector", "propertyCollector-1", {"_this", "spec", "partialUpdates"}}},
      {"WaitForUpdates", {"PropertyCollector", "propertyCollector-1", {"_this", "version"}}},
      {"CancelWaitForUpdates", {"PropertyCollector", "propertyCollector-1", {"_this"}}},
      {"DestroyPropertyFilter", {"PropertyFilter", nullptr, {"_this"}}},
      {"RetrieveAllPermissions", {"AuthorizationManager", Inventory::kAuthorization, {"_this"}}},
      {"StartTask", {nullptr, nullptr, {}}}};
  return shapes;
}

void CheckShape(const SoapCall& call) {
  const auto found = Shapes().find(call.method);
  if (found == Shapes().end()) Refuse("There is no method " + call.method);
  const Shape& shape = found->second;
  const std::string value = call.ThisValue();
  const bool wrong = (shape.type != nullptr && call.ThisType() != shape.type) ||
                     (shape.value != nullptr && value != shape.value);
  if (wrong) Refuse(call.method + " is not a method of " + call.ThisType() + " " + value);
  if (!shape.elements.empty()) call.CheckElements(shape.elements);
}

}  // namespace

Daemon::Daemon(Inventory& objects, const DaemonOptions& options)
    : inventory(objects),
      sessions(options.account),
      collector(objects, options.maxObjects),
      tasks(objects) {}

void Daemon::LoseSessions() {
  sessions.LogoutAll();
  collector.CloseAll();
}

std::string Daemon::Call(const SoapCall& call, std::string& cookie,
                         const std::function<bool()>& abandoned) {
  CheckShape(call);
  const std::string& method = call.method;
  if (method == "RetrieveServiceContent") return kServiceContent;
  if (method == "AcquireLocalTicket") return Ticket(call);
  if (method == "Login") return Login(call, cookie);
  sessions.Check(cookie);
  if (method == "Logout") {
    sessions.Logout(cookie);
    collector.CloseSession(cookie);
    return "";
  }
  if (method == "RetrieveAllPermissions") return inventory.PermissionItems();
  if (method == "StartTask") return StartTask(call);
  return Collect(call, cookie, abandoned);
}

std::string Daemon::Ticket(const SoapCall& call) {
  const std::string user = call.Argument("userName");
  return "<returnval><userName>" + Escaped(user) + "</userName><passwordFilePath>" +
         sessions.IssueTicket(user) + "</passwordFilePath></returnval>";
}

std::string Daemon::Login(const SoapCall& call, std::string& cookie) {
  const std::string user = call.Argument("userName");
  cookie = sessions.Login(user, call.Argument("password"), cookie);
  collector.OpenSession(cookie);
  return "<returnval><key>" + cookie.substr(0, 8) + "</key><userName>" + Escaped(user) +
         "</userName></returnval>";
}

std::string Daemon::Collect(const SoapCall& call, const std::string& cookie,
                            const std::function<bool()>& abandoned) {
  if (call.method == "CreateFilter") {
    if (call.Argument("partialUpdates") != "true") Refuse("partialUpdates is not true");
    return "<returnval type=\"PropertyFilter\">" +
           collector.CreateFilter(cookie, call.Element().child("spec")) + "</returnval>";
  }
  if (call.method == "WaitForUpdates") {
    std::string sets = collector.Wait(cookie, call.Argument("version"), abandoned);
    return sets.insert(0, "<returnval>").append("</returnval>");
  }
  if (call.method == "CancelWaitForUpdates") {
    collector.CancelWait(cookie);
  } else {
    collector.DestroyFilter(cookie, call.ThisValue());
  }
  return "";
}

// Both arguments may be missing; the object's identifier then names the outcome.
std::string Daemon::StartTask(const SoapCall& call) {
  const pugi::xml_node named = call.Element().child("outcome");
  const std::string outcome = named ? named.text().get() : call.ThisValue();
  const bool known = outcome == "error" || outcome == "hang" || outcome == "leave";
  const std::chrono::milliseconds pause(call.Element().child("millis").text().as_int(20));
  return "<returnval type=\"Task\">" + tasks.Start(known ? outcome : "success", pause) +
         "</returnval>";
}

}  // namespace sim
