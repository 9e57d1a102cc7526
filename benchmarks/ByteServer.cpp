// SPDX-License-Identifier: MIT
#include "benchmarks/ByteServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <signal.h>
#include <strings.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace bench {

namespace {

const char* const kEnvelopeHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<soapenv:Envelope xmlns:soapenv=\"http://schemas.xmlsoap.org/soap/envelope/\" "
    "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" "
    "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\n<soapenv:Body>\n";
const char* const kEnvelopeTail = "\n</soapenv:Body>\n</soapenv:Envelope>";

std::string Reply(const std::string& method, std::string_view inner) {
  const std::string open = kEnvelopeHead + ("<" + method + "Response xmlns=\"urn:pxa25\">");
  const std::string close = "</" + method + "Response>" + kEnvelopeTail;
  std::string reply =
      "HTTP/1.1 200 OK\r\nContent-Type: text/xml; charset=utf-8\r\nContent-Length: " +
      std::to_string(open.size() + inner.size() + close.size()) + "\r\n\r\n";
  return reply.append(open).append(inner).append(close);
}

// The name of the method in a request's body: the first element in the SOAP body.
std::string MethodOf(const std::string& body) {
  std::size_t at = body.find("Body>");
  at = at == std::string::npos ? at : body.find('<', at);
  if (at == std::string::npos) return "None";
  return body.substr(at + 1, body.find_first_of(" >/\r\n", at + 1) - at - 1);
}

constexpr const char* kServiceContent =
    "<returnval><rootFolder type=\"Folder\">root</rootFolder>"
    "<propertyCollector type=\"PropertyCollector\">collector-1</propertyCollector>"
    "<about><name>Benchmark</name><productLineId>embeddedOrx</productLineId>"
    "<apiVersion>2.5</apiVersion></about>"
    "<sessionManager type=\"SessionManager\">sessions-1</sessionManager></returnval>";

class Connections {
 public:
  Connections(const Inventory& inventory, unsigned int count)
      : machines(inventory.machines), left(count) {
    const Text set = FirstSet(inventory);
    const std::string_view inner(set.characters.get(), set.length);
    first = Reply("WaitForUpdates", inner);
    download = Reply("Download", inner);
  }

  void Serve(int connection) {
    std::string received;
    while (ReadRequest(connection, received)) {
      if (!Answer(connection, received)) break;
    }
    close(connection);
  }

 private:
  // Reads one request; `body` is its content.
  static bool ReadRequest(int connection, std::string& body) {
    std::string text;
    std::size_t head = std::string::npos, length = 0;
    char piece[16384];
    while (head == std::string::npos || text.size() < head + length) {
      const ssize_t n = read(connection, piece, sizeof(piece));
      if (n <= 0) return false;
      text.append(piece, static_cast<std::size_t>(n));
      if (head != std::string::npos || (head = text.find("\r\n\r\n")) == std::string::npos)
        continue;
      head += 4;
      for (std::size_t at = 0; at < head; at = text.find("\r\n", at) + 2) {
        if (strncasecmp(text.c_str() + at, "content-length:", 15) == 0) {
          length = std::strtoul(text.c_str() + at + 15, nullptr, 10);
        }
      }
    }
    body = text.substr(head);
    return true;
  }

  static bool Send(int connection, std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t n = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (n <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
  }

  bool Answer(int connection, const std::string& body) {
    const std::string method = MethodOf(body);
    if (method == "Download") return Send(connection, download);
    if (method == "CreateFilter") {
      return Send(connection, Reply(method, std::string("<returnval type=\"PropertyFilter\">") +
                                                kFilter + "</returnval>"));
    }
    if (method == "CancelWaitForUpdates") Cancel();
    if (method == "Burst") Burst();
    if (method == "RetrieveServiceContent") return Send(connection, Reply(method, kServiceContent));
    if (method == "Login") {
      return Send(connection, Reply(method, "<returnval><key>1</key></returnval>"));
    }
    if (method != "WaitForUpdates") return Send(connection, Reply(method, "<returnval/>"));
    const bool isFirst = body.find("xsi:nil") != std::string::npos ||
                         body.find("<version></version>") != std::string::npos;
    return isFirst ? Send(connection, first) : AnswerWait(connection, method);
  }

  bool AnswerWait(int connection, const std::string& method) {
    {
      std::unique_lock<std::mutex> lock(mutex);
      if (left == 0) {
        changed.wait(lock, [this] { return cancelled || !burst.empty(); });
        cancelled = false;
        const std::string reply = std::move(burst);
        burst.clear();
        lock.unlock();
        return !reply.empty() && Send(connection, reply);
      }
      --left;
    }
    const timespec pause{0, 3000000};
    nanosleep(&pause, nullptr);
    const std::string machine = MachineId(0);
    return Send(
        connection,
        Reply(method, std::string("<returnval><version>17</version><filterSet><filter "
                                  "type=\"PropertyFilter\">") +
                          kFilter +
                          "</filter><objectSet><kind>modify</kind><obj "
                          "type=\"VirtualMachine\">" +
                          machine + "</obj><changeSet><name>name</name><op>assign</op><val>" +
                          std::to_string(NanosecondsNow()) +
                          "</val></changeSet></objectSet></filterSet></returnval>"));
  }

  void Cancel() {
    const std::lock_guard<std::mutex> lock(mutex);
    cancelled = true;
    changed.notify_all();
  }

  void Burst() {
    const unsigned int from = bursts++ * kBurst;
    const Text set = ChangeSets(from % machines, kBurst, 3 * from, 3);
    const std::lock_guard<std::mutex> lock(mutex);
    burst = Reply("WaitForUpdates", std::string_view(set.characters.get(), set.length));
    changed.notify_all();
  }

  const unsigned int machines;
  std::string first, download;
  unsigned int bursts = 0;  // ordered by one client
  std::mutex mutex;         // guards what follows
  std::condition_variable changed;
  unsigned int left;
  bool cancelled = false;
  std::string burst;  // not sent yet
};

[[noreturn]] void Run(int listener, const Inventory& inventory, unsigned int changes) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  auto* connections = new Connections(inventory, changes);  // as long as the process
  for (;;) {
    const int connection = accept(listener, nullptr, nullptr);
    if (connection < 0) _exit(1);
    const int on = 1;
    setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    std::thread([connections, connection] { connections->Serve(connection); }).detach();
  }
}

}  // namespace

long long NanosecondsNow() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * 1000000000LL + now.tv_nsec;
}

ByteServer::ByteServer(const Inventory& inventory, unsigned int changes) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof(address);
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      listen(listener, 16) != 0 ||
      getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("no port to listen on");
  }
  url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
  process = fork();
  if (process < 0) throw std::runtime_error("no process for the server");
  if (process == 0) Run(listener, inventory, changes);
  close(listener);
}

ByteServer::~ByteServer() {
  kill(process, SIGKILL);
  waitpid(process, nullptr, 0);
}

}  // namespace bench
