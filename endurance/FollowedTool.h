// SPDX-License-Identifier: MIT
//
// A program that follows a daemon for a long time and prints documents, each in a line. Keeps the
// last one, and its log lines in a file.
//
// Thread safety: one thread uses it; it has a thread that reads the tool's output.
#ifndef KECPP_ENDURANCE_FOLLOWEDTOOL_H
#define KECPP_ENDURANCE_FOLLOWEDTOOL_H

#include <signal.h>
#include <sys/stat.h>

#include <fstream>
#include <mutex>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "simulator/driver/ChildProcess.h"
#include "simulator/driver/ProcessSample.h"

namespace endurance {

class FollowedTool {
 public:
  // Starts it: the program and its arguments.
  explicit FollowedTool(const std::vector<std::string>& command)
      : process({"/bin/sh", "-c", START, "sh", MakePipe(), LogPath(), KECPP_LOG_TAP}, command),
        reader([this] { KeepLast(); }) {}

  ~FollowedTool() {
    process.Signal(SIGKILL);  // ends the reader as well
    reader.join();
  }
  FollowedTool(const FollowedTool&) = delete;
  FollowedTool& operator=(const FollowedTool&) = delete;

  bool IsRunning() { return process.IsRunning(); }
  ProcessSample Sample() const { return SampleOf("/proc/" + std::to_string(process.Pid())); }

  // Waits until the last document is `truth`, at most a minute.
  bool Becomes(const nlohmann::json& truth) {
    return driver::Eventually([&] { return LastDocument() == truth || !IsRunning(); }) &&
           LastDocument() == truth;
  }
  nlohmann::json LastDocument() {
    const std::lock_guard<std::mutex> lock(mutex);
    return nlohmann::json::parse(last, nullptr, false);
  }
  unsigned long Documents() {  // shown so far
    const std::lock_guard<std::mutex> lock(mutex);
    return documents;
  }

  unsigned long LogLines() const { return CountLines(std::ifstream(LogPath()), ""); }
  unsigned long Reconnections() const {
    return CountLines(std::istringstream(process.Errors()), "connection lost");
  }

  // Asks it to end; its exit status.
  int End() {
    process.Signal(SIGTERM);
    return process.Wait();
  }

 private:
  // Arguments: the pipe, the file for the log, the library that taps it, the program and its own.
  static constexpr const char* START =
      "pipe=$1; export KECPP_LOG_TAP=\"$2\" LD_PRELOAD=\"$3\"; shift 3; exec \"$@\" > \"$pipe\"";

  std::string PipePath() const { return folder.path + "/pipe"; }
  std::string LogPath() const { return folder.path + "/log"; }

  std::string MakePipe() const {
    if (mkfifo(PipePath().c_str(), 0600) != 0) throw std::runtime_error("mkfifo");
    return PipePath();
  }

  void KeepLast() {
    std::ifstream pipe(PipePath());
    for (std::string line; std::getline(pipe, line);) {
      const std::lock_guard<std::mutex> lock(mutex);
      last.swap(line);
      ++documents;
    }
  }

  static unsigned long CountLines(std::istream&& text, const std::string& holding) {
    unsigned long found = 0;
    for (std::string line; std::getline(text, line);) {
      found += line.find(holding) != std::string::npos ? 1 : 0;
    }
    return found;
  }

  driver::TemporaryFolder folder;
  driver::ChildProcess process;
  std::mutex mutex;  // guards what follows
  std::string last;
  unsigned long documents = 0;
  std::thread reader;
};

}  // namespace endurance

#endif
