// SPDX-License-Identifier: MIT
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/BarePost.h"
#include "benchmarks/ByteServer.h"
#include "benchmarks/Contender.h"
#include "benchmarks/Measure.h"
#include "benchmarks/PublicPath.h"
#include "benchmarks/Rounds.h"
#include "benchmarks/Workloads.h"
#include "http/ConnectionInfo.h"
#include "http/HttpClient.h"
#include "http/HttpService.h"

namespace bench {

std::unique_ptr<Contender> MakeLibraryContender();

namespace {

constexpr unsigned int kMachines = 74000;  // a reply of 100 MB

// Does the work in a separate process, whose heap is fresh, and returns its figure.
double InChild(const std::function<double()>& work) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  const pid_t child = fork();
  if (child == 0) {
    double figure = 0;
    try {
      figure = work();
    } catch (const std::exception& e) {
      std::fprintf(stderr, "%s\n", e.what());
    }
    _exit(write(ends[1], &figure, sizeof(figure)) == sizeof(figure) && figure > 0 ? 0 : 1);
  }
  double figure = 0;
  const ssize_t got = read(ends[0], &figure, sizeof(figure));
  close(ends[0]);
  close(ends[1]);
  int status = 0;
  waitpid(child, &status, 0);
  if (got != sizeof(figure) || status != 0) throw std::runtime_error("a part failed");
  return figure;
}

double ReceiveBare(const std::string& url) {
  BarePost post(url);
  post.Call("Warm", "");
  const Clocks begin = Clocks::Now();
  post.Call("Download", "");
  return (Clocks::Now() - begin).cpu;
}

void Post(KELib::Http::HttpClient& client, const char* method,
          KELib::Http::HttpResponse& response) {
  const std::string text =
      std::string("<soapenv:Body>\n<") + method + " xmlns=\"urn:pxa25\"></" + method + ">";
  KELib::KEString content(text.c_str());
  KELib::Http::HttpRequest request;
  request.SetContent(content);
  client.Post(&request, &response);
  if (response.GetErrorCode() != 0) throw std::runtime_error("the library's transfer failed");
}

double ReceiveByLibrary(const std::string& url) {
  KELib::KEString target(url.c_str());
  auto info = std::make_unique<KELib::Http::ConnectionInfo>(nullptr, target, true);
  const std::unique_ptr<KELib::Http::HttpClient> client(
      KELib::Http::GetHttpService()->CreateHttpClient(info.release()));
  KELib::Http::HttpResponse warm, response;
  Post(*client, "Warm", warm);
  const Clocks begin = Clocks::Now();
  Post(*client, "Download", response);
  return (Clocks::Now() - begin).cpu;
}

// Receives by libcurl alone and fills the caches with the part of the reply that is the set.
double ReceiveAndFill(const std::string& url) {
  const std::unique_ptr<Contender> library = MakeLibraryContender();
  BarePost post(url);
  post.Call("Warm", "");
  const Clocks begin = Clocks::Now();
  post.Call("Download", "");
  Clocks took = Clocks::Now() - begin;
  const char* inner = std::strstr(post.Body(), "<returnval");
  Text set;
  set.length = post.Length() - static_cast<std::size_t>(inner - post.Body());
  set.characters = post.TakeBody();
  std::memmove(set.characters.get(), inner, set.length + 1);
  const Clocks filling = Clocks::Now();
  library->Apply(std::move(set));
  took.cpu += (Clocks::Now() - filling).cpu;
  return took.cpu;
}

double FillByPublicPath(const std::string& url) {
  PublicPath path(url);
  KELib::KEString result;
  path.Method().Invoke("urn:pxa25", "Warm", "T", "v", result);
  const Clocks begin = Clocks::Now();
  path.Watch();
  return (Clocks::Now() - begin).cpu;
}

// Puts the process and its children on one processor. The scheduler would put the server's threads
// on the caller's processor in some runs and not in others, and that alone changes a ratio from 0.7
// to 1.8.
void StayOnOneProcessor() {
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(static_cast<unsigned int>(sched_getcpu()), &one);
  if (sched_setaffinity(0, sizeof(one), &one) != 0) throw std::runtime_error("no processor");
}

// Alternates, so that both see the same machine.
double CallRatio() {
  constexpr unsigned int kCalls = 3000;
  StayOnOneProcessor();
  const ByteServer server(Inventory(), 0);
  const std::string& url = server.Url();
  BarePost post(url);
  PublicPath path(url);
  KELib::KEString result;
  std::vector<double> bare, library;
  for (unsigned int i = 0; i < kCalls; ++i) {
    const Clocks begin = Clocks::Now();
    post.Call("Ping", "<_this type=\"T\">v</_this>");
    const Clocks middle = Clocks::Now();
    path.Method().Invoke("urn:pxa25", "Ping", "T", "v", result);
    library.push_back((Clocks::Now() - middle).wall);
    bare.push_back((middle - begin).wall);
  }
  return Median(library) / Median(bare);
}

}  // namespace

void RunWire() {
  Inventory inventory;
  inventory.machines = kMachines;
  const ByteServer server(inventory, 0);
  const std::string& url = server.Url();
  const double bare = InChild([&] { return ReceiveBare(url); });
  const double received = InChild([&] { return ReceiveByLibrary(url); });
  const double parts = InChild([&] { return ReceiveAndFill(url); });
  const double whole = InChild([&] { return FillByPublicPath(url); });
  const double call = InChild([] { return CallRatio(); });
  std::printf(
      "{\"workload\": \"wire\", \"call\": %.4f, \"receive\": %.4f, \"path\": %.4f, "
      "\"bareReceive\": %.0f, \"libraryReceive\": %.0f, \"parts\": %.0f, \"whole\": %.0f}\n",
      call, received / bare, whole / parts, bare, received, parts, whole);
}

}  // namespace bench
