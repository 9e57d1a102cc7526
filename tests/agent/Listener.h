// SPDX-License-Identifier: MIT
//
// A listener that takes indications, and misbehaves when it is asked to.
#ifndef KECPP_TESTS_AGENT_LISTENER_H
#define KECPP_TESTS_AGENT_LISTENER_H

#include <httplib.h>

#include <chrono>
#include <map>
#include <mutex>
#include <pugixml.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace agenttest {

// An instance as it was sent, without a path, and what tells it from others.
struct Instance {
  std::string key;
  std::string text;
};

// All kinds of objects have one of these two keys besides their class's name; links have ends.
inline Instance ReadInstance(pugi::xml_node node) {
  const std::string type = node.attribute("CLASSNAME").value();
  const bool isById = type == "Zorbel_Privilege" || type == "Zorbel_Identity";
  std::string key;
  for (pugi::xpath_node value : node.select_nodes(".//KEYVALUE")) {
    key += std::string(" ") + value.node().child_value();
  }
  if (key.empty()) {
    key = node.find_child_by_attribute("NAME", isById ? "InstanceID" : "Name").child_value("VALUE");
  }
  std::ostringstream text;
  node.print(text, "", pugi::format_raw);
  return {type + " " + key, text.str()};
}

struct Indication {
  std::string type, context;
  long long number;
  Instance source, previous;
};

class Listener {
 public:
  enum class Fault { LosesAnswer, IsSlow, Refuses, SaysError, SaysNonsense, Redirects };

  explicit Listener(int wantedPort = 0) {
    server.set_tcp_nodelay(true);
    server.set_keep_alive_timeout(1);  // so that it ends soon
    server.Post(".*", [this](const httplib::Request& request, httplib::Response& response) {
      Answer(request, response);
    });
    port = wantedPort;
    if (port == 0) {
      port = server.bind_to_any_port("127.0.0.1");
    } else {
      server.bind_to_port("127.0.0.1", port);
    }
    thread = std::thread([this] { server.listen_after_bind(); });
    while (!server.is_running()) std::this_thread::yield();
  }
  ~Listener() {
    server.stop();
    thread.join();
  }

  std::string Url() const { return "http://127.0.0.1:" + std::to_string(port) + "/here"; }
  int Port() const { return port; }

  // With the next messages, one each, before it behaves again; or with all for a while.
  void Misbehave(std::vector<Fault> next) {
    With([&] { faults = std::move(next); });
  }
  void RefuseAll(bool refuse) {
    With([&] { refusesAll = refuse; });
  }

  // What has come, each once, in its order.
  std::vector<Indication> Take() {
    std::vector<Indication> taken;
    With([&] { taken.swap(indications); });
    return taken;
  }
  std::size_t Faults() {
    std::size_t left = 0;
    With([&] { left = faults.size(); });
    return left;
  }
  // What was no indication, or none at the place for it.
  std::string Strange() {
    std::string text;
    With([&] { text = strange; });
    return text;
  }

 private:
  template <class Use>
  void With(Use use) {
    const std::lock_guard<std::mutex> lock(mutex);
    use();
  }

  void Answer(const httplib::Request& request, httplib::Response& response) {
    const std::lock_guard<std::mutex> lock(mutex);
    const bool isWell = request.path == "/here" &&
                        request.get_header_value("CIMExport") == "MethodRequest" &&
                        request.get_header_value("CIMExportMethod") == "ExportIndication" &&
                        request.has_header("Content-Length") && !request.has_header("Accept");
    if (!isWell) strange += request.path + " ";
    if (refusesAll) return static_cast<void>(response.status = 503);
    if (faults.empty()) return Accept(request, response);
    const Fault fault = faults.front();
    faults.erase(faults.begin());
    switch (fault) {
      case Fault::LosesAnswer:
        Accept(request, response);
        response.body.clear();
        response.set_content_provider(
            100, "text/xml", [](std::size_t, std::size_t, httplib::DataSink&) { return false; });
        break;
      case Fault::IsSlow:
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        Accept(request, response);
        break;
      case Fault::Refuses:
        response.status = 503;
        break;
      case Fault::SaysError:
        Say(response, "<ERROR CODE=\"1\"/>");
        break;
      case Fault::SaysNonsense:
        response.set_content(std::string(100, '<'), "text/xml");
        break;
      case Fault::Redirects:
        response.set_redirect("http://127.0.0.1:" + std::to_string(port) + "/there");
        break;
    }
  }

  static void Say(httplib::Response& response, const std::string& content) {
    response.set_content(
        "<?xml version=\"1.0\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" "
        "PROTOCOLVERSION=\"1.0\"><SIMPLEEXPRSP><EXPMETHODRESPONSE NAME=\"ExportIndication\">" +
            content + "</EXPMETHODRESPONSE></SIMPLEEXPRSP></MESSAGE></CIM>",
        "application/xml");
  }

  // An indication that comes again because its answer was lost has the same number.
  void Accept(const httplib::Request& request, httplib::Response& response) {
    Say(response, "");
    pugi::xml_document document;
    document.load_string(request.body.c_str());
    const pugi::xml_node node = document.select_node("//EXPPARAMVALUE/INSTANCE").node();
    const auto value = [&](const char* name) {
      return std::string(node.find_child_by_attribute("NAME", name).child_value("VALUE"));
    };
    const auto embedded = [&](const char* name) {
      pugi::xml_document inner;
      inner.load_string(value(name).c_str());
      return ReadInstance(inner.document_element());
    };
    Indication indication{node.attribute("CLASSNAME").value(),
                          value("SequenceContext"),
                          std::atoll(value("SequenceNumber").c_str()),
                          embedded("SourceInstance"),
                          {}};
    if (!value("PreviousInstance").empty()) indication.previous = embedded("PreviousInstance");
    const auto [last, isFirst] = numbers.try_emplace(indication.context, indication.number);
    if (!isFirst && last->second == indication.number) return;
    last->second = indication.number;
    indications.push_back(std::move(indication));
  }

  httplib::Server server;
  int port = 0;
  std::mutex mutex;
  std::vector<Indication> indications;  // guarded by `mutex`, like all below
  std::map<std::string, long long> numbers;
  std::vector<Fault> faults;
  bool refusesAll = false;
  std::string strange;
  std::thread thread;
};

}  // namespace agenttest

#endif
