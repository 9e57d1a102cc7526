// SPDX-License-Identifier: MIT
#include "tools/publish/PublishOptions.h"

#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>

#include "fleet/Keys.h"
#include "tools/common/ConfigArgument.h"

namespace tools::publish {
namespace {

constexpr int USAGE_ERROR = 2;
constexpr int MAX_PORT = 65535;

// What is wrong with it, or nothing.
std::string ReadCredentials(const std::string& path, kecpp::fleet::EtcdOptions& cluster) {
  std::ifstream file(path);
  std::string line;
  if (!std::getline(file, line)) return "cannot read " + path;
  if (!line.empty() && line.back() == '\r') line.pop_back();
  const std::size_t colon = line.find(':');
  if (colon == std::string::npos || colon == 0) return path + " has no line NAME:PASSWORD";
  cluster.user = line.substr(0, colon);
  cluster.password = line.substr(colon + 1);
  return {};
}

// A file in which libcurl would find nothing gives a clear message only here.
std::string CheckFile(const std::string& path) {
  return std::ifstream(path) ? std::string() : "cannot read " + path;
}

std::string ReadCertificate(const std::string& text, kecpp::fleet::TlsFiles& tls) {
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos || colon == 0 || colon + 1 == text.size()) {
    return "expected CERT:KEY, got " + text;
  }
  tls.certificate = text.substr(0, colon);
  tls.key = text.substr(colon + 1);
  const std::string wrong = CheckFile(tls.certificate);
  return wrong.empty() ? CheckFile(tls.key) : wrong;
}

std::string CheckSite(const std::string& name) {
  if (!name.empty() && name.size() <= kecpp::fleet::kLongestSiteName) return {};
  return "a site's name has 1 to " + std::to_string(kecpp::fleet::kLongestSiteName) + " bytes";
}

// Runs `read` on the option's text; what it returns is wrong with it.
template <class Read>
CLI::Option* AddRead(CLI::App& app, const char* name, const char* type, const char* help,
                     Read read) {
  return app
      .add_option_function<std::string>(
          name,
          [read, name](const std::string& text) {
            const std::string wrong = read(text);
            if (!wrong.empty()) throw CLI::ValidationError(name, wrong);
          },
          help)
      ->type_name(type);
}

void DeclareCluster(CLI::App& app, PublishOptions& options) {
  auto& cluster = options.cluster;
  auto* to = AddRead(app, "--to", "URL,...", "Members of the etcd cluster: http(s)://HOST:PORT",
                     [&](const std::string& text) {
                       cluster.members = kecpp::fleet::ParseMembers(text);
                       return cluster.members.empty()
                                  ? "expected http(s)://HOST:PORT[,...], got " + text
                                  : std::string();
                     });
  auto* site = app.add_option("--site", options.site, "The name of what this daemon manages")
                   ->type_name("NAME")
                   ->check(CheckSite);
  to->needs(site);
  AddRead(app, "--credentials", "FILE", "User of the cluster: a file with the line NAME:PASSWORD",
          [&](const std::string& path) {
            options.credentialsFile = path;
            return ReadCredentials(path, cluster);
          })
      ->needs(to);
  AddRead(app, "--ca", "FILE", "Authorities that certify the cluster; the system's without",
          [&](const std::string& path) {
            cluster.tls.authorities = path;
            return CheckFile(path);
          })
      ->needs(to);
  AddRead(app, "--tls", "CERT:KEY", "Certificate and key to show to the cluster, PEM files",
          [&](const std::string& text) { return ReadCertificate(text, cluster.tls); })
      ->needs(to);
  app.add_option("--metrics", options.metricsPort,
                 "Serve /metrics on 127.0.0.1 at this port; 0 takes a free one")
      ->type_name("PORT")
      ->check(CLI::Range(0, MAX_PORT))
      ->needs(to);
}

}  // namespace

std::optional<int> ParsePublishOptions(int argc, const char* const* argv, PublishOptions& options) {
  CLI::App app(
      "Publishes the inventory of a virtualization host to an etcd cluster. Without --to it prints "
      "each change on standard output, a line of JSON.",
      PROGRAM);
  app.add_option("--config", options.config, "Configuration: a file, or an XML text")
      ->type_name("FILE")
      ->check(CheckConfig);
  DeclareCluster(app, options);
  app.add_option("--duration", options.duration, "End after so many seconds")
      ->type_name("SECONDS")
      ->check(CLI::Range(0.1, 1e9));
  app.add_option("--log-level", options.logLevel, "What the library writes to the system log")
      ->type_name("NAME")
      ->check(CLI::IsMember({"none", "panic", "error", "warning", "info", "verbose", "trivia"}));
  app.set_version_flag("--version", std::string("kecpp-publish " KECPP_TOOLS_VERSION ", library ") +
                                        kecpp::Version());
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : USAGE_ERROR;
  }
  return {};
}

void WarnOfOpenDoors(const PublishOptions& options) {
  if (options.cluster.user.empty()) return;
  struct stat status = {};
  if (stat(options.credentialsFile.c_str(), &status) == 0 && (status.st_mode & S_IROTH) != 0) {
    std::cerr << PROGRAM << ": every user of this machine can read " << options.credentialsFile
              << '\n';
  }
  for (const std::string& member : options.cluster.members) {
    const bool isHere = member.find("//127.") != std::string::npos ||
                        member.find("//localhost:") != std::string::npos ||
                        member.find("//[::1]") != std::string::npos;
    if (member.compare(0, 5, "https") == 0 || isHere) continue;
    std::cerr << PROGRAM << ": the password goes to " << member << " in clear\n";
  }
}

}  // namespace tools::publish
