// SPDX-License-Identifier: MIT
#include "simulator/driver/Simulator.h"

#include <httplib.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace driver {
namespace {

// The environment overrides what the build says.
std::string Program() {
  const char* chosen = std::getenv("KECPP_SIMULATOR");
  return chosen ? chosen : KECPP_SIMULATOR_PROGRAM;
}

}  // namespace

Simulator::Simulator(const std::vector<std::string>& options)
    : process({Program(), "--listen-port", "0", "--ticket-dir", folder.path}, options),
      url(process.AwaitUrl()),
      host(url.substr(0, url.find('/', url.find("://") + 3))) {}

std::string Simulator::Document(const std::string& loginInfo) const {
  // The daemon does not ask for a certificate, but the library wants one for https.
  const std::string pem = KECPP_CLIENT_CERTIFICATE;
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Config>\n<SSLInfo><certFile>" + pem +
         "</certFile><passPhrase/><keyFile>" + pem + "</keyFile><CACertFile>" + pem +
         "</CACertFile></SSLInfo>\n<ConnectionInfo><url>" + url +
         "</url><timeout>60</timeout></ConnectionInfo>\n<LoginInfo>" + loginInfo +
         "</LoginInfo>\n<LogInfo><level>error</level></LogInfo>\n</Config>\n";
}

std::string Simulator::Config() const {
  return Document("<localTicket>true</localTicket><userName>root</userName><password></password>");
}

std::string Simulator::Config(const std::string& user, const std::string& password) const {
  return Document("<localTicket>false</localTicket><userName>" + user + "</userName><password>" +
                  password + "</password>");
}

// In one step: a program that was started earlier may be reading the file at this moment.
std::string Simulator::ConfigFile(const std::string& config) const {
  std::string path = folder.path + "/config.xml";
  const std::string written = path + ".new";
  std::ofstream(written) << config;
  if (std::rename(written.c_str(), path.c_str()) != 0)
    throw std::runtime_error("cannot write " + path);
  return path;
}

Json Simulator::Ask(const std::string& method, const std::string& control,
                    const std::string& body) {
  const std::string path = "/control/" + control;
  httplib::Client client(host);
  client.enable_server_certificate_verification(false);
  httplib::Result answer(nullptr, httplib::Error::Unknown);
  Eventually([&] {
    answer = method == "GET" ? client.Get(path) : client.Post(path, body, "application/json");
    return answer || !process.IsRunning();
  });
  if (!answer) throw std::runtime_error(path + ": " + httplib::to_string(answer.error()));
  if (answer->status != 200) throw std::runtime_error(path + ": " + answer->body);
  return answer->body.empty() ? Json() : Json::parse(answer->body);
}

}  // namespace driver
