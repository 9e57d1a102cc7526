// SPDX-License-Identifier: MIT
#include "soak/FollowedTool.h"

#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace soak {
namespace {

// Arguments: the pipe, the file for the log, the library that taps it, the program and its own.
constexpr const char* START =
    "pipe=$1; export KECPP_LOG_TAP=\"$2\" LD_PRELOAD=\"$3\"; shift 3; exec \"$@\" > \"$pipe\"";

unsigned long CountLines(std::istream& text, const std::string& holding) {
  unsigned long found = 0;
  for (std::string line; std::getline(text, line);) {
    found += line.find(holding) != std::string::npos ? 1 : 0;
  }
  return found;
}

}  // namespace

FollowedTool::FollowedTool(const std::string& config) {
  const std::string pipe = folder.path + "/pipe";
  if (mkfifo(pipe.c_str(), 0600) != 0) throw std::runtime_error("mkfifo");
  const std::vector<std::string> command = {
      "/bin/sh",          "-c",       START,  "sh",       pipe,       LogPath(), KECPP_LOG_TAP,
      KECPP_TOOL_PROGRAM, "--config", config, "--follow", "--format", "json",    "--log-level",
      "verbose"};
  process = std::make_unique<endtoend::ChildProcess>(command);
  reader = std::thread([this] { KeepLast(); });
}

FollowedTool::~FollowedTool() {
  process->Signal(SIGKILL);  // ends the reader as well
  reader.join();
}

void FollowedTool::KeepLast() {
  std::ifstream pipe(folder.path + "/pipe");
  for (std::string line; std::getline(pipe, line);) {
    const std::lock_guard<std::mutex> lock(mutex);
    last.swap(line);
    ++documents;
  }
}

nlohmann::json FollowedTool::LastDocument() {
  const std::lock_guard<std::mutex> lock(mutex);
  return nlohmann::json::parse(last, nullptr, false);
}

unsigned long FollowedTool::Documents() {
  const std::lock_guard<std::mutex> lock(mutex);
  return documents;
}

bool FollowedTool::Becomes(const nlohmann::json& truth) {
  return endtoend::Eventually([&] { return LastDocument() == truth || !IsRunning(); }) &&
         LastDocument() == truth;
}

unsigned long FollowedTool::LogLines() const {
  std::ifstream log(LogPath());
  return CountLines(log, "");
}

unsigned long FollowedTool::Reconnections() const {
  std::istringstream errors(process->Errors());
  return CountLines(errors, "connection lost");
}

int FollowedTool::End() {
  process->Signal(SIGTERM);
  return process->Wait();
}

}  // namespace soak
