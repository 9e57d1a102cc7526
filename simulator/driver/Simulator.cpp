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
std::string Executable() {
  const char* chosen = std::getenv("KECPP_SIMULATOR");
  return chosen ? chosen : KECPP_SIMULATOR_PROGRAM;
}

}  // namespace

Simulator::Program::Program(const std::vector<std::string>& options)
    : process({Executable(), "--listen-port", "0", "--ticket-dir", folder.path}, options) {}

Simulator::Simulator(const std::vector<std::string>& options)
    : Simulator(std::move(Several(1, options).front())) {}

Simulator::Simulator(std::shared_ptr<Program> of, const std::string& ofService)
    : program(std::move(of)),
      url(ofService),
      host(url.substr(0, url.find('/', url.find("://") + 3))) {}

std::vector<Simulator> Simulator::Several(int count, const std::vector<std::string>& options) {
  std::vector<std::string> words = options;
  if (count != 1) words.insert(words.end(), {"--daemons", std::to_string(count)});
  const auto program = std::make_shared<Program>(words);
  std::vector<Simulator> all;
  for (const std::string& url : program->process.AwaitUrls(count)) {
    all.push_back(Simulator(program, url));
  }
  return all;
}

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
  std::string path = TicketFolder() + "/config-" + host.substr(host.rfind(':') + 1) + ".xml";
  const std::string written = path + ".new";
  std::ofstream(written) << config;
  if (std::rename(written.c_str(), path.c_str()) != 0)
    throw std::runtime_error("cannot write " + path);
  return path;
}

void Simulator::KeepConnection() {
  client = std::make_shared<httplib::Client>(host);
  client->enable_server_certificate_verification(false);
  client->set_keep_alive(true);
  client->set_tcp_nodelay(true);
}

Json Simulator::Ask(const std::string& method, const std::string& control,
                    const std::string& body) {
  const std::string path = "/control/" + control;
  httplib::Client once(host);
  once.enable_server_certificate_verification(false);
  httplib::Client& to = client ? *client : once;
  httplib::Result answer(nullptr, httplib::Error::Unknown);
  Eventually([&] {
    answer = method == "GET" ? to.Get(path) : to.Post(path, body, "application/json");
    return answer || !program->process.IsRunning();
  });
  if (!answer) throw std::runtime_error(path + ": " + httplib::to_string(answer.error()));
  if (answer->status != 200) throw std::runtime_error(path + ": " + answer->body);
  return answer->body.empty() ? Json() : Json::parse(answer->body);
}

}  // namespace driver
