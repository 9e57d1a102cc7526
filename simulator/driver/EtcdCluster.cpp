// SPDX-License-Identifier: MIT
#include "simulator/driver/EtcdCluster.h"

#include <arpa/inet.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

namespace driver {
namespace {

// Of loopback, for an etcd that is about to start: it cannot say which port it took itself.
class FreePort {
 public:
  FreePort() : socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* name = reinterpret_cast<sockaddr*>(&address);
    if (bind(socket, name, length) != 0 || getsockname(socket, name, &length) != 0) {
      throw std::runtime_error("no free port");
    }
    number = ntohs(address.sin_port);
  }
  ~FreePort() { close(socket); }
  FreePort(const FreePort&) = delete;
  FreePort& operator=(const FreePort&) = delete;

  std::string Url(const char* scheme) const {
    return scheme + ("://127.0.0.1:" + std::to_string(number));
  }

 private:
  int socket;
  int number = 0;
};

}  // namespace

std::string EtcdCluster::Programs() {
  ChildProcess script({KECPP_ETCD_SCRIPT});
  if (script.Wait() != 0) return {};
  const std::string text = script.Output();
  return text.substr(0, text.find('\n'));
}

EtcdCluster::EtcdCluster(int count, std::vector<std::string> options)
    : programs(Programs()),
      isSecure(std::find(options.begin(), options.end(), "--auto-tls") != options.end()) {
  if (programs.empty()) throw std::runtime_error("there is no etcd");
  std::vector<std::string> peers;
  std::string initial;
  {
    const std::vector<FreePort> ports(2 * Index(count));
    for (std::size_t i = 0; i < Index(count); ++i) {
      members.push_back({ports[2 * i].Url(isSecure ? "https" : "http"), {}, nullptr});
      peers.push_back(ports[2 * i + 1].Url("http"));
      initial += (i == 0 ? "m" : ",m") + std::to_string(i) + '=' + peers[i];
    }
  }
  for (std::size_t i = 0; i < members.size(); ++i) {
    const std::string name = "m" + std::to_string(i);
    members[i].command = {programs + "/etcd",
                          "--name=" + name,
                          "--data-dir=" + folder.path + '/' + name,
                          "--listen-client-urls=" + members[i].url,
                          "--advertise-client-urls=" + members[i].url,
                          "--listen-peer-urls=" + peers[i],
                          "--initial-advertise-peer-urls=" + peers[i],
                          "--initial-cluster=" + initial,
                          "--log-level=error"};
    members[i].command.insert(members[i].command.end(), options.begin(), options.end());
  }
  for (int i = 0; i < count; ++i) Start(i);
  for (int i = 0; i < count; ++i) {
    if (!Answers(i)) throw std::runtime_error("etcd does not answer at " + Url(i));
  }
}

std::string EtcdCluster::Urls() const {
  std::string all;
  for (const Member& member : members) all += (all.empty() ? "" : ",") + member.url;
  return all;
}

void EtcdCluster::Start(int member) {
  Member& one = members.at(Index(member));
  one.process = std::make_unique<ChildProcess>(one.command);
}

void EtcdCluster::Kill(int member) {
  members.at(Index(member)).process.reset();
}

void EtcdCluster::Signal(int member, int signal) {
  Member& one = members.at(Index(member));
  if (one.process) one.process->Signal(signal);
}

std::string EtcdCluster::Certificate(int member) const {
  return folder.path + "/m" + std::to_string(member) + "/fixtures/client/cert.pem";
}

std::vector<std::string> EtcdCluster::CtlCommand(const std::string& endpoints) const {
  std::vector<std::string> command = {programs + "/etcdctl", "--endpoints=" + endpoints};
  if (isSecure) {
    command.insert(command.end(), {"--insecure-transport=false", "--insecure-skip-tls-verify"});
  }
  return command;
}

bool EtcdCluster::Answers(int member) const {
  return Eventually([&] {
    ChildProcess probe(CtlCommand(Url(member)), {"--command-timeout=2s", "get", "probe"});
    // With users an answer to nobody is a refusal.
    return probe.Wait() == 0 || probe.Errors().find("user name is empty") != std::string::npos ||
           !members.at(Index(member)).process->IsRunning();
  });
}

int EtcdCluster::Ctl(const std::vector<std::string>& arguments, std::string* output) const {
  ChildProcess tool(CtlCommand(Urls()), arguments);
  const int status = tool.Wait();
  if (output != nullptr) *output = tool.Output() + tool.Errors();
  return status;
}

}  // namespace driver
