// SPDX-License-Identifier: MIT
#include "simulator/Control.h"

#include <nlohmann/json.hpp>

namespace sim {

namespace {

using nlohmann::json;

struct BadRequest {
  std::string text;
};

void Check(bool done, const json& order) {
  if (!done) throw BadRequest{"cannot do " + order.dump()};
}

json ChangeObject(Inventory& inventory, const json& order) {
  Check(inventory.Set(order.at("id"), order.at("property"), order.at("value")), order);
  return json::object();
}

json ChangeMachine(Inventory& inventory, const json& order) {
  const std::string what = order.at("do");
  if (what == "create")
    return {{"id", inventory.CreateMachine(order.at("name"), order.at("host"))}};
  if (what == "set") return ChangeObject(inventory, order);
  const bool done = what == "remove" ? inventory.RemoveMachine(order.at("id"))
                    : what == "move" ? inventory.MoveMachine(order.at("id"), order.at("host"))
                                     : false;
  Check(done, order);
  return json::object();
}

json ChangeHost(Inventory& inventory, const json& order) {
  const std::string what = order.at("do");
  if (what == "create") return {{"id", inventory.CreateHost(order.at("name"))}};
  if (what == "set") return ChangeObject(inventory, order);
  Check(what == "remove" && inventory.RemoveHost(order.at("id")), order);
  return json::object();
}

json ChangeRole(Inventory& inventory, const json& order) {
  if (order.at("do") == "remove") {
    Check(inventory.RemoveRole(order.at("id")), order);
    return json::object();
  }
  Role role;
  role.id = order.at("id");
  role.name = order.value("name", "");
  role.label = order.value("label", "");
  role.summary = order.value("summary", "");
  role.system = order.value("system", false);
  role.privileges = order.value("privileges", std::vector<std::string>());
  inventory.SetRole(role);
  return json::object();
}

json ChangePrivilege(Inventory& inventory, const json& order) {
  if (order.at("do") == "remove") {
    Check(inventory.RemovePrivilege(order.at("id")), order);
  } else {
    inventory.SetPrivilege(order.at("id"), order.value("name", ""));
  }
  return json::object();
}

json ChangePermissions(Inventory& inventory, const json& order) {
  std::vector<Permission> all;
  for (const json& item : order) {
    all.push_back({item.at("principal"), item.value("roleId", ""), item.value("group", false)});
  }
  inventory.SetPermissions(all);
  return json::object();
}

json OrderFault(Faults& faults, const json& order) {
  if (order.at("kind") == "clear") {
    faults.Clear();
    return json::object();
  }
  FaultOrder fault;
  fault.kind = order.at("kind");
  fault.method = order.value("method", "*");
  fault.fault = order.value("fault", "");
  fault.count = order.value("count", 1U);
  fault.delayMs = order.value("delayMs", 0U);
  Check(Faults::IsKnownKind(fault.kind) && fault.count > 0, order);
  faults.Order(fault);
  return json::object();
}

json Statistic(Controlled& controlled) {
  std::string last;
  const unsigned int faults = controlled.statistics.Faults(last);
  return {{"calls", controlled.statistics.Calls()},
          {"faults", faults},
          {"lastFault", last},
          {"sessions", controlled.daemon.Sessions()},
          {"filters", controlled.daemon.Collector().Filters()},
          {"waits", controlled.daemon.Collector().PendingWaits()}};
}

using Action = std::function<json(const json&)>;

void AddPost(httplib::Server& server, const std::string& name, Action action) {
  server.Post(
      "/control/" + name, [action](const httplib::Request& request, httplib::Response& response) {
        try {
          const json order = request.body.empty() ? json::object() : json::parse(request.body);
          response.set_content(action(order).dump(), "application/json");
        } catch (const BadRequest& bad) {
          response.status = 400;
          response.set_content(bad.text, "text/plain");
        } catch (const json::exception& e) {
          response.status = 400;
          response.set_content(e.what(), "text/plain");
        }
      });
}

}  // namespace

void AddControls(httplib::Server& server, Controlled& controlled) {
  Inventory& inventory = controlled.inventory;
  server.Get(
      "/control/inventory", [&inventory](const httplib::Request&, httplib::Response& response) {
        const auto lenient = json::error_handler_t::replace;
        response.set_content(inventory.Truth().dump(-1, ' ', false, lenient), "application/json");
      });
  server.Get("/control/stats", [&controlled](const httplib::Request&, httplib::Response& response) {
    response.set_content(Statistic(controlled).dump(), "application/json");
  });
  AddPost(server, "machine", [&](const json& o) { return ChangeMachine(inventory, o); });
  AddPost(server, "host", [&](const json& o) { return ChangeHost(inventory, o); });
  AddPost(server, "role", [&](const json& o) { return ChangeRole(inventory, o); });
  AddPost(server, "privilege", [&](const json& o) { return ChangePrivilege(inventory, o); });
  AddPost(server, "permissions", [&](const json& o) { return ChangePermissions(inventory, o); });
  AddPost(server, "fault", [&](const json& o) { return OrderFault(controlled.faults, o); });
  AddPost(server, "churn", [&](const json& o) {
    controlled.churn.SetRate(o.at("rate"));
    return json::object();
  });
  AddPost(server, "session-lost", [&](const json&) {
    controlled.daemon.LoseSessions();
    return json::object();
  });
  AddPost(server, "restart", [&](const json& o) {
    controlled.daemon.LoseSessions();
    controlled.restart(std::to_string(o.value("pid", 4711)));
    return json::object();
  });
  AddPost(server, "quit", [&](const json&) {
    controlled.quit();
    return json::object();
  });
}

}  // namespace sim
