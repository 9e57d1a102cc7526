// SPDX-License-Identifier: MIT
#include "simulator/driver/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <stdexcept>
#include <thread>

namespace driver {
namespace {

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string MakeFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "kecpp-XXXXXX").string();
  if (!mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp");
  return pattern;
}

// Between fork and exec: system calls only.
[[noreturn]] void Become(char* const* arguments, int output, int errors) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  dup2(output, STDOUT_FILENO);
  dup2(errors, STDERR_FILENO);
  execv(arguments[0], arguments);
  _exit(127);
}

}  // namespace

// The longer it has waited, the more seldom it asks: asking costs those for whom it waits.
bool Eventually(const std::function<bool()>& condition) {
  using std::chrono::milliseconds;
  using Clock = std::chrono::steady_clock;
  const auto begin = Clock::now();
  while (!condition()) {
    const auto waited = std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
    if (waited > std::chrono::minutes(1)) return false;
    std::this_thread::sleep_for(std::clamp(waited / 8, milliseconds(1), milliseconds(50)));
  }
  return true;
}

TemporaryFolder::TemporaryFolder() : path(MakeFolder()) {}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

ChildProcess::ChildProcess(std::vector<std::string> command, const std::vector<std::string>& more) {
  command.insert(command.end(), more.begin(), more.end());
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (std::string& word : command) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC;
  const int output = open((folder.path + "/out").c_str(), flags, 0600);
  const int errors = open((folder.path + "/err").c_str(), flags, 0600);
  pid = fork();
  if (pid == 0) Become(arguments.data(), output, errors);
  close(output);
  close(errors);
  if (pid < 0) throw std::runtime_error("fork");
}

ChildProcess::~ChildProcess() {
  if (IsRunning()) Signal(SIGKILL);
  Reap(true);
}

bool ChildProcess::Reap(bool block) {
  if (!reaped && waitpid(pid, &status, block ? 0 : WNOHANG) == pid) reaped = true;
  return reaped;
}

bool ChildProcess::IsRunning() {
  return !Reap(false);
}

void ChildProcess::Signal(int signal) {
  if (!reaped) kill(pid, signal);
}

int ChildProcess::Wait() {
  if (!Eventually([this] { return !IsRunning(); })) Signal(SIGKILL);
  Reap(true);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::vector<std::string> ChildProcess::AwaitUrls(int count) {
  const std::regex line("listening on (.*)\n");
  std::vector<std::string> urls;
  Eventually([&] {
    const bool hasEnded = !IsRunning();
    const std::string output = Output();
    urls.clear();
    for (std::sregex_iterator found(output.begin(), output.end(), line), end; found != end;
         ++found) {
      urls.push_back((*found)[1]);
    }
    return urls.size() >= static_cast<std::size_t>(count) || hasEnded;
  });
  if (urls.size() < static_cast<std::size_t>(count)) {
    throw std::runtime_error("it does not listen: " + Errors());
  }
  return urls;
}

std::string ChildProcess::Output() const {
  return ReadFile(folder.path + "/out");
}

std::string ChildProcess::Errors() const {
  return ReadFile(folder.path + "/err");
}

}  // namespace driver
