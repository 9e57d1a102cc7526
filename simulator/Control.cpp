// SPDX-License-Identifier: MIT
#include "simulator/Control.h"

#include <chrono>
#include <nlohmann/json.hpp>

#include "simulator/Truth.h"

namespace sim {

namespace {

using nlohmann::json;

struct BadRequest {
  std::string text;
};

void Check(bool done, const json& order) {
  if (!done) throw BadRequest{"cannot do " + order.dump()};
}

json Created(const std::string& id, const json& order) {
  Check(!id.empty(), order);
  return {{"id", id}};
}

json ChangeMachine(Inventory& inventory, const json& order) {
  const std::string what = order.at("do");
  if (what == "create") {
    return Created(inventory.CreateMachine(order.at("name"), order.at("host")), order);
  }
  const std::string id = order.at("id");
  const bool done = what == "set"      ? inventory.Set(id, order.at("property"), order.at("value"))
                    : what == "remove" ? inventory.RemoveMachine(id)
                    : what == "move"   ? inventory.MoveMachine(id, order.at("host"))
                                       : false;
  Check(done, order);
  return json::object();
}

json ChangeHost(Inventory& inventory, const json& order) {
  const std::string what = order.at("do");
  if (what == "create") return Created(inventory.CreateHost(order.at("name")), order);
  const std::string id = order.at("id");
  const bool done = what == "set"      ? inventory.Set(id, order.at("property"), order.at("value"))
                    : what == "remove" ? inventory.RemoveHost(id)
                                       : false;
  Check(done, order);
  return json::object();
}

bool ChangeRole(Authorization& all, const json& order) {
  const std::string id = order.at("id");
  if (order.at("do") == "remove") return all.roles.erase(id) > 0;
  all.roles[id] = {id,
                   order.value("name", ""),
                   order.value("label", ""),
                   order.value("summary", ""),
                   order.value("system", false),
                   order.value("privileges", std::vector<std::string>())};
  return true;
}

bool ChangePrivilege(Authorization& all, const json& order) {
  const std::string id = order.at("id");
  if (order.at("do") == "remove") return all.privileges.erase(id) > 0;
  all.privileges[id] = order.value("name", "");
  return true;
}

bool ChangePermissions(Authorization& all, const json& order) {
  std::vector<Permission> fresh;
  for (const json& item : order) {
    fresh.push_back({item.at("principal"), item.value("roleId", ""), item.value("group", false)});
  }
  all.permissions = std::move(fresh);
  return true;
}

json Edit(Inventory& inventory, bool (*change)(Authorization&, const json&), const json& order) {
  Check(inventory.EditAuthorization([&](Authorization& all) { return change(all, order); }), order);
  return json::object();
}

json OrderFault(Controlled& controlled, const json& order) {
  FaultOrder fault;
  fault.kind = order.at("kind");
  fault.method = order.value("method", "*");
  fault.fault = order.value("fault", "");
  fault.count = order.value("count", 1U);
  fault.delayMs = order.value("delayMs", 0U);
  if (fault.kind == "clear") {
    controlled.faults.Clear();
  } else if (fault.kind == "refuse" && !order.contains("method")) {
    controlled.server.Refuse(std::chrono::milliseconds(order.value("delayMs", 1000U)));
  } else {
    Check(Faults::IsKnown(fault.kind) && fault.count > 0, order);
    controlled.faults.Order(fault);
  }
  return json::object();
}

json Count(Controlled& controlled) {
  const Statistics::Counts counts = controlled.statistics.Get();
  return {{"calls", counts.calls},
          {"faults", counts.faults},
          {"lastFault", counts.lastFault},
          {"sessions", controlled.daemon.SessionCount()},
          {"filters", controlled.daemon.Collector().Filters()},
          {"waits", controlled.daemon.Collector().PendingWaits()}};
}

json Restart(Controlled& controlled, const json& order) {
  controlled.restarts.Restart(std::to_string(order.value("pid", 4711)));
  return json::object();
}

std::string Text(const json& document) {
  return document.dump(-1, ' ', false, json::error_handler_t::replace);
}

using Action = std::function<json(const json&)>;

void Answer(const Action& action, const httplib::Request& request, httplib::Response& response) {
  try {
    const json order = request.body.empty() ? json::object() : json::parse(request.body);
    response.set_content(Text(action(order)), "application/json");
  } catch (const BadRequest& bad) {
    response.status = 400;
    response.set_content(bad.text, "text/plain");
  } catch (const json::exception& e) {
    response.status = 400;
    response.set_content(e.what(), "text/plain");
  }
}

void AddPost(HttpServer& server, const std::string& name, const Action& action) {
  server.Post("/control/" + name,
              [action](const httplib::Request& request, httplib::Response& response) {
                Answer(action, request, response);
              });
}

void AddGet(HttpServer& server, const std::string& name, const Action& action) {
  server.Get("/control/" + name,
             [action](const httplib::Request& request, httplib::Response& response) {
               Answer(action, request, response);
             });
}

}  // namespace

void AddControls(Controlled& all) {
  HttpServer& server = all.server;
  AddGet(server, "inventory", [&](const json&) { return Truth(all.inventory); });
  AddGet(server, "stats", [&](const json&) { return Count(all); });
  AddPost(server, "machine", [&](const json& o) { return ChangeMachine(all.inventory, o); });
  AddPost(server, "host", [&](const json& o) { return ChangeHost(all.inventory, o); });
  AddPost(server, "role", [&](const json& o) { return Edit(all.inventory, ChangeRole, o); });
  AddPost(server, "privilege",
          [&](const json& o) { return Edit(all.inventory, ChangePrivilege, o); });
  AddPost(server, "permissions",
          [&](const json& o) { return Edit(all.inventory, ChangePermissions, o); });
  AddPost(server, "fault", [&](const json& o) { return OrderFault(all, o); });
  AddPost(server, "churn", [&](const json& o) {
    all.churn.SetRate(o.at("rate"));
    return json::object();
  });
  AddPost(server, "session-lost", [&](const json&) {
    all.daemon.LoseSessions();
    return json::object();
  });
  AddPost(server, "restart", [&](const json& o) { return Restart(all, o); });
  AddPost(server, "quit", [](const json&) { return json::object(); });
  server.set_logger([&](const httplib::Request& request, const httplib::Response&) {
    if (request.path == "/control/quit") all.quit();
  });
}

}  // namespace sim
