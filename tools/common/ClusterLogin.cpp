// SPDX-License-Identifier: MIT
#include "tools/common/ClusterLogin.h"

#include <sys/stat.h>

#include <fstream>
#include <iostream>

namespace tools {
namespace {

// Each says what is wrong, or nothing.
std::string ReadCredentials(const std::string& path, ClusterLogin& login) {
  std::ifstream file(path);
  std::string line;
  if (!std::getline(file, line)) return "cannot read " + path;
  if (!line.empty() && line.back() == '\r') line.pop_back();
  const std::size_t colon = line.find(':');
  if (colon == std::string::npos || colon == 0) return path + " has no line NAME:PASSWORD";
  login.file = path;
  login.user = line.substr(0, colon);
  login.password = line.substr(colon + 1);
  return {};
}

// A file in which libcurl would find nothing gives a clear message only here.
std::string CheckFile(const std::string& path) {
  return std::ifstream(path) ? std::string() : "cannot read " + path;
}

std::string ReadCertificate(const std::string& text, ClusterLogin& login) {
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos || colon == 0 || colon + 1 == text.size()) {
    return "expected CERT:KEY, got " + text;
  }
  login.certificate = text.substr(0, colon);
  login.key = text.substr(colon + 1);
  const std::string wrong = CheckFile(login.certificate);
  return wrong.empty() ? CheckFile(login.key) : wrong;
}

bool IsHere(const std::string& member) {
  return member.find("//127.") != std::string::npos ||
         member.find("//localhost:") != std::string::npos ||
         member.find("//[::1]") != std::string::npos;
}

}  // namespace

void AddLoginOptions(CLI::App& app, CLI::Option* members, ClusterLogin& login) {
  const auto add = [&](const char* name, const char* type, const char* help, auto read) {
    const auto use = [read, name](const std::string& text) {
      const std::string wrong = read(text);
      if (!wrong.empty()) throw CLI::ValidationError(name, wrong);
    };
    app.add_option_function<std::string>(name, use, help)->type_name(type)->needs(members);
  };
  add("--credentials", "FILE", "User of the cluster: a file with the line NAME:PASSWORD",
      [&login](const std::string& path) { return ReadCredentials(path, login); });
  add("--ca", "FILE", "Authorities that certify the cluster; the system's without",
      [&login](const std::string& path) {
        login.authorities = path;
        return CheckFile(path);
      });
  add("--tls", "CERT:KEY", "Certificate and key to show to the cluster, PEM files",
      [&login](const std::string& text) { return ReadCertificate(text, login); });
}

void WarnOfOpenDoors(const char* program, const ClusterLogin& login,
                     const std::vector<std::string>& members) {
  if (login.user.empty()) return;
  struct stat status = {};
  if (stat(login.file.c_str(), &status) == 0 && (status.st_mode & S_IROTH) != 0) {
    std::cerr << program << ": every user of this machine can read " << login.file << '\n';
  }
  for (const std::string& member : members) {
    if (member.compare(0, 5, "https") == 0 || IsHere(member)) continue;
    std::cerr << program << ": the password goes to " << member << " in clear\n";
  }
}

}  // namespace tools
