// SPDX-License-Identifier: MIT
//
// Starts an etcd cluster of one or three members on free ports of loopback, with its data in a
// temporary folder, and kills, stops and starts members. For tests, the endurance run and
// benchmarks.
#ifndef KECPP_SIMULATOR_DRIVER_ETCDCLUSTER_H
#define KECPP_SIMULATOR_DRIVER_ETCDCLUSTER_H

#include <memory>
#include <string>
#include <vector>

#include "simulator/driver/ChildProcess.h"

namespace driver {

class EtcdCluster {
 public:
  // The folder of the programs, as scripts/etcd prints it; empty where they cannot be had.
  static std::string Programs();

  // Starts `members` with these further options and waits until they answer. With "--auto-tls" they
  // serve HTTPS, each with a certificate that it makes itself.
  explicit EtcdCluster(int members, std::vector<std::string> options = {});

  int Members() const { return static_cast<int>(members.size()); }
  const std::string& Url(int member) const { return members.at(Index(member)).url; }
  std::string Urls() const;  // all, with commas between
  // Its certificate, which is its own authority.
  std::string Certificate(int member) const;

  void Start(int member);  // again, with its data
  void Kill(int member);   // SIGKILL
  void Signal(int member, int signal);
  bool IsRunning(int member) { return members.at(Index(member)).process != nullptr; }
  pid_t Pid(int member) const { return members.at(Index(member)).process->Pid(); }

  // Waits until the member answers reads that the majority confirms; false after a minute.
  bool Answers(int member) const;

  // Runs etcdctl with these arguments against all members; its exit status, and what it printed.
  int Ctl(const std::vector<std::string>& arguments, std::string* output = nullptr) const;

 private:
  struct Member {
    std::string url;
    std::vector<std::string> command;
    std::unique_ptr<ChildProcess> process;
  };
  std::vector<std::string> CtlCommand(const std::string& endpoints) const;
  static std::size_t Index(int member) { return static_cast<std::size_t>(member); }

  TemporaryFolder folder;
  const std::string programs;
  const bool isSecure;
  std::vector<Member> members;
};

}  // namespace driver

#endif
