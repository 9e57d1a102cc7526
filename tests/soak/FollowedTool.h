// SPDX-License-Identifier: MIT
//
// kecpp-inventory following a daemon for a long time. Of its output the last document is kept, of
// its log the number of lines and the lines themselves in a file.
//
// Thread safety: one thread uses it; a thread of its own reads the tool's output.
#ifndef KECPP_TESTS_SOAK_FOLLOWEDTOOL_H
#define KECPP_TESTS_SOAK_FOLLOWEDTOOL_H

#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>

#include "endtoend/ChildProcess.h"
#include "soak/ProcessSample.h"

namespace soak {

class FollowedTool {
 public:
  // Starts it with the configuration file `config`, logging at level verbose.
  explicit FollowedTool(const std::string& config);
  ~FollowedTool();
  FollowedTool(const FollowedTool&) = delete;
  FollowedTool& operator=(const FollowedTool&) = delete;

  bool IsRunning() { return process->IsRunning(); }
  ProcessSample Sample() const { return SampleOf(process->Pid()); }

  // Waits until the last document is `truth`, at most a minute.
  bool Becomes(const nlohmann::json& truth);
  nlohmann::json LastDocument();
  unsigned long Documents();  // shown so far

  unsigned long LogLines() const;
  std::string LogPath() const { return folder.path + "/log"; }
  unsigned long Reconnections() const;

  // Asks it to end; its exit status.
  int End();

 private:
  void KeepLast();

  endtoend::TemporaryFolder folder;
  std::mutex mutex;  // guards what follows, up to the process
  std::string last;
  unsigned long documents = 0;
  std::unique_ptr<endtoend::ChildProcess> process;
  std::thread reader;
};

}  // namespace soak

#endif
