// SPDX-License-Identifier: MIT
//
// A program that this one starts. It dies with this one, however that ends.
#ifndef KECPP_SIMULATOR_DRIVER_CHILDPROCESS_H
#define KECPP_SIMULATOR_DRIVER_CHILDPROCESS_H

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace driver {

// Asks again and again, up to a minute, until `condition` holds; false when it never did.
bool Eventually(const std::function<bool()>& condition);

// A folder that is removed with the object.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::string path;
};

class ChildProcess {
 public:
  // `command` is the program's path and its arguments; `more` are further arguments.
  explicit ChildProcess(std::vector<std::string> command,
                        const std::vector<std::string>& more = {});
  ~ChildProcess();  // kills it if need be
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  pid_t Pid() const { return pid; }
  bool IsRunning();
  void Signal(int signal);

  // The exit status, or 128 and the signal's number. Waits up to a minute, then kills it.
  int Wait();

  // Waits until it has written a line "... listening on URL" and returns the URL; or so many of
  // them. Throws when it ends without such a line.
  std::string AwaitUrl() { return AwaitUrls(1).front(); }
  std::vector<std::string> AwaitUrls(int count);

  // What it has written so far.
  std::string Output() const;
  std::string Errors() const;

 private:
  bool Reap(bool block);

  TemporaryFolder folder;
  pid_t pid = -1;
  bool reaped = false;
  int status = 0;
};

}  // namespace driver

#endif
