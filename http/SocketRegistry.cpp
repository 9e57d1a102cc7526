// SPDX-License-Identifier: MIT
#include "http/SocketRegistry.h"

#include <curl/curl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

namespace KELib {
namespace Http {

namespace {

curl_socket_t OpenSocket(void* registry, curlsocktype, curl_sockaddr* address) {
  return static_cast<SocketRegistry*>(registry)->Open(address->family, address->socktype,
                                                      address->protocol);
}

int CloseSocket(void* registry, curl_socket_t socket) {
  return static_cast<SocketRegistry*>(registry)->Close(socket);
}

}  // namespace

// The order makes it harmless when libcurl refuses one of these options. A function never lacks its
// data. And a socket that is registered when it is opened is also taken out when it is closed, for
// its number may belong to another file afterwards.
void SocketRegistry::Serve(void* easy) {
  void* const self = this;
  if (curl_easy_setopt(easy, CURLOPT_CLOSESOCKETDATA, self) == CURLE_OK &&
      curl_easy_setopt(easy, CURLOPT_CLOSESOCKETFUNCTION, &CloseSocket) == CURLE_OK &&
      curl_easy_setopt(easy, CURLOPT_OPENSOCKETDATA, self) == CURLE_OK) {
    curl_easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, &OpenSocket);
  }
}

void SocketRegistry::Cut() {
  std::lock_guard<std::mutex> guard(mutex);
  cut = true;
  for (const int socket : sockets) ::shutdown(socket, SHUT_RDWR);
}

void SocketRegistry::Admit() {
  std::lock_guard<std::mutex> guard(mutex);
  cut = false;
}

bool SocketRegistry::IsCut() const {
  std::lock_guard<std::mutex> guard(mutex);
  return cut;
}

int SocketRegistry::Open(int family, int type, int protocol) {
  std::lock_guard<std::mutex> guard(mutex);
  if (cut) return -1;
  try {
    sockets.reserve(sockets.size() + 1);
  } catch (...) {
    return -1;  // an exception must not cross libcurl
  }
  // A process that the agent starts must not inherit the connection.
  const int socket = ::socket(family, type | SOCK_CLOEXEC, protocol);
  if (socket >= 0) sockets.push_back(socket);
  return socket;
}

int SocketRegistry::Close(int socket) {
  std::lock_guard<std::mutex> guard(mutex);
  sockets.erase(std::remove(sockets.begin(), sockets.end(), socket), sockets.end());
  return ::close(socket);
}

}  // namespace Http
}  // namespace KELib
