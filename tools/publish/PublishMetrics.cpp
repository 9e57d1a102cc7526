// SPDX-License-Identifier: MIT
#include "tools/publish/PublishMetrics.h"

#include <httplib.h>

#include <chrono>
#include <functional>
#include <stdexcept>
#include <thread>

#include "tools/common/Exposition.h"
#include "tools/common/ProcessFigures.h"

namespace tools::publish {
namespace {

double Number(const Counters::Count& count) {
  return static_cast<double>(count.load());
}

}  // namespace

class PublishMetrics::Server {
 public:
  Server(int wanted, const std::function<std::string()>& text) {
    server.new_task_queue = [] { return new httplib::ThreadPool(2); };
    server.set_payload_max_length(1024);
    server.Get("/metrics",
               [this, text](const httplib::Request& request, httplib::Response& response) {
                 if (!IsNamed(request.get_header_value("Host"))) {
                   response.status = 403;
                   return;
                 }
                 response.set_content(text(), Exposition::CONTENT_TYPE);
               });
    constexpr const char* LOOPBACK = "127.0.0.1";
    port = wanted == 0 ? server.bind_to_any_port(LOOPBACK)
                       : (server.bind_to_port(LOOPBACK, wanted) ? wanted : -1);
    if (port < 0) throw std::runtime_error("cannot listen on port " + std::to_string(wanted));
    thread = std::thread([this] { server.listen_after_bind(); });
    while (!server.is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  ~Server() {
    server.stop();
    thread.join();
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  int Port() const { return port; }

 private:
  // A web page whose name leads to 127.0.0.1 sends that name: it gets nothing.
  bool IsNamed(const std::string& host) const {
    const std::string number = ':' + std::to_string(port);
    return host == "127.0.0.1" + number || host == "localhost" + number;
  }

  httplib::Server server;
  int port = -1;
  std::thread thread;
};

PublishMetrics::PublishMetrics(int port, const kecpp::Inventory& shown, const Counters& counts,
                               const Marks& waiting)
    : inventory(shown),
      counters(counts),
      marks(waiting),
      server(std::make_unique<Server>(port, [this] { return Text(); })) {}

PublishMetrics::~PublishMetrics() = default;

std::string PublishMetrics::Url() const {
  return "http://127.0.0.1:" + std::to_string(server->Port()) + "/metrics";
}

std::string PublishMetrics::Text() const {
  Exposition out;
  const kecpp::Status status = inventory.State();
  out.Family("kecpp_build_info", "gauge", "The version of publisher and library.");
  out.Sample({{"publisher", KECPP_TOOLS_VERSION}, {"library", kecpp::Version()}}, 1);
  out.Family("kecpp_connected", "gauge", "1 while the daemon is connected and read, else 0.");
  out.Sample(status.state == kecpp::Status::State::connected ? 1 : 0);
  out.Family("kecpp_publish_documents_total", "counter", "Documents written and removed.");
  out.Sample({{"operation", "put"}}, Number(counters.put));
  out.Sample({{"operation", "remove"}}, Number(counters.removed));
  out.Family("kecpp_publish_unchanged_total", "counter",
             "Objects looked at of which the cluster had the same.");
  out.Sample(Number(counters.unchanged));
  out.Family("kecpp_publish_transactions_total", "counter", "Transactions, by their outcome.");
  out.Sample({{"outcome", "done"}}, Number(counters.transactions));
  out.Sample({{"outcome", "contested"}}, Number(counters.contested));
  out.Family("kecpp_publish_failed_requests_total", "counter",
             "Requests to the cluster that failed; they are tried again.");
  out.Sample(Number(counters.failed));
  out.Family("kecpp_publish_renewals_total", "counter",
             "Times that the site was claimed again after a request of unknown outcome.");
  out.Sample(Number(counters.renewed));
  out.Family("kecpp_publish_fenced", "gauge", "1 when another publisher has the site, else 0.");
  out.Sample(counters.isFenced ? 1 : 0);
  out.Family("kecpp_publish_failing", "gauge", "1 while requests to the cluster fail, else 0.");
  out.Sample(counters.isInTrouble ? 1 : 0);
  out.Family("kecpp_publish_behind_objects", "gauge", "Objects that wait to be looked at.");
  out.Sample(static_cast<double>(marks.Size()));
  out.Family("kecpp_publish_behind_seconds", "gauge", "How long the oldest of them waits.");
  out.Sample(marks.Age());
  out.Family("kecpp_publish_objects", "gauge", "Documents of this site in the cluster.");
  out.Sample(Number(counters.objects));
  if (counters.agreed != 0) {
    out.Family("kecpp_publish_agreed_timestamp_seconds", "gauge",
               "When inventory and cluster were last compared as a whole, since the epoch.");
    out.Sample(static_cast<double>(counters.agreed) / 1000);
  }
  WriteProcessFigures(out);
  return out.Take();
}

}  // namespace tools::publish
