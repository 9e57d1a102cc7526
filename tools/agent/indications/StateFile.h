// SPDX-License-Identifier: MIT
//
// One file in a folder, replaced as a whole: it holds what was written last or what was written
// before, whenever the machine stops.
//
// Thread safety: one thread at a time.
#ifndef KECPP_TOOLS_AGENT_INDICATIONS_STATEFILE_H
#define KECPP_TOOLS_AGENT_INDICATIONS_STATEFILE_H

#include <optional>
#include <string>

namespace tools::agent {

class StateFile {
 public:
  // Keeps other processes out of the folder. Throws std::runtime_error, as all here do.
  StateFile(const std::string& folder, const std::string& name);
  ~StateFile();
  StateFile(const StateFile&) = delete;
  StateFile& operator=(const StateFile&) = delete;

  // Nothing when there is no file yet.
  std::optional<std::string> Read() const;

  // When it throws, the file is as it was.
  void Write(const std::string& text) const;

  // Renames the file and gives its new path: it could not be understood, and must not be lost.
  std::string SetAside() const;

  std::string Path() const { return folder + "/" + name; }

 private:
  [[noreturn]] void Fail(const char* what) const;

  const std::string folder;
  const std::string name;
  int directory = -1;
  int lock = -1;
};

}  // namespace tools::agent

#endif
