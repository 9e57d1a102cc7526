// SPDX-License-Identifier: MIT
//
// What a program says to systemd, whose place this takes.
#ifndef KECPP_TESTS_SUPPORT_SERVICEMESSAGES_H
#define KECPP_TESTS_SUPPORT_SERVICEMESSAGES_H

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <string>

#include "simulator/driver/ChildProcess.h"

class ServiceMessages {
 public:
  ServiceMessages() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(bind(messages, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  }
  ~ServiceMessages() { close(messages); }
  ServiceMessages(const ServiceMessages&) = delete;
  ServiceMessages& operator=(const ServiceMessages&) = delete;

  // For a shell that becomes the program.
  std::string Exports() const {
    return "export NOTIFY_SOCKET='" + path + "' WATCHDOG_USEC=400000\n";
  }

  // Whether it says so, at some time.
  bool Says(const std::string& text) {
    return driver::Eventually([&] {
      char message[1000];
      ssize_t length;
      while ((length = recv(messages, message, sizeof message, MSG_DONTWAIT)) >= 0) {
        said.append(message, static_cast<std::size_t>(length)) += '\n';
      }
      return said.find(text) != std::string::npos;
    });
  }

  std::string said;

 private:
  driver::TemporaryFolder folder;
  const std::string path = folder.path + "/notify";
  const int messages = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
};

#endif
