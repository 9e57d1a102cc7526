// SPDX-License-Identifier: MIT
#include "tools/agent/indications/ListenerClient.h"

#include <curl/curl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <pugixml.hpp>
#include <stdexcept>

namespace tools::agent {
namespace {

constexpr long CONNECT_SECONDS = 5;
constexpr long SECONDS = 10;
constexpr std::size_t MOST_ANSWER = std::size_t{64} << 10;
constexpr long OK = 200;

// Why an answer is no success; empty when it is one.
std::string ReadAnswer(const std::string& answer) {
  pugi::xml_document document;
  if (!document.load_buffer(answer.data(), answer.size())) return "it answers no XML";
  const pugi::xml_node response =
      document.child("CIM").child("MESSAGE").child("SIMPLEEXPRSP").child("EXPMETHODRESPONSE");
  if (!response) return "it answers no response";
  const pugi::xml_node error = response.child("ERROR");
  if (!error) return {};
  return std::string("it answers error ") + error.attribute("CODE").value();
}

}  // namespace

class ListenerClient::Impl {
 public:
  Impl(const ListenerUrl& listenerUrl, const AllowedHosts& allowedHosts, const std::string& caFile,
       const std::atomic<bool>& endFlag)
      : url(listenerUrl), hosts(allowedHosts), ended(endFlag), curl(curl_easy_init()) {
    for (const char* header :
         {"Content-Type: application/xml; charset=\"utf-8\"", "CIMExport: MethodRequest",
          "CIMExportMethod: ExportIndication", "Accept:", "Expect:"}) {
      curl_slist* longer = curl_slist_append(headers, header);
      if (longer) headers = longer;
    }
    if (!curl || !SetUp(caFile)) {
      CleanUp();
      throw std::runtime_error("libcurl cannot be set up");
    }
  }
  ~Impl() { CleanUp(); }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  std::string Send(const std::string& message) {
    answer.clear();
    error[0] = 0;
    isRefused = false;
    if (!Set(CURLOPT_POSTFIELDS, message.data()) ||
        !Set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(message.size()))) {
      return "libcurl cannot be set up";
    }
    const CURLcode code = curl_easy_perform(curl);
    if (code != CURLE_OK) {
      if (isRefused) return "its address is none that indications may be sent to";
      return error[0] ? error.data() : curl_easy_strerror(code);
    }
    long status = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    return status == OK ? ReadAnswer(answer) : "it answers HTTP status " + std::to_string(status);
  }

 private:
  template <class Value>
  bool Set(CURLoption option, Value value) {
    return curl_easy_setopt(curl, option, value) == CURLE_OK;
  }

  bool SetUp(const std::string& caFile) {
#if LIBCURL_VERSION_NUM >= 0x075500
    const bool isBound = Set(CURLOPT_PROTOCOLS_STR, "http,https");
#else
    const bool isBound = Set(CURLOPT_PROTOCOLS, CURLPROTO_HTTP | CURLPROTO_HTTPS);
#endif
    return isBound && headers && Set(CURLOPT_URL, url.text.c_str()) && Set(CURLOPT_POST, 1L) &&
           Set(CURLOPT_HTTPHEADER, headers) && Set(CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1) &&
           Set(CURLOPT_FOLLOWLOCATION, 0L) && Set(CURLOPT_PROXY, "") &&
           Set(CURLOPT_SSL_VERIFYPEER, 1L) && Set(CURLOPT_SSL_VERIFYHOST, 2L) &&
           (caFile.empty() || Set(CURLOPT_CAINFO, caFile.c_str())) && Set(CURLOPT_NOSIGNAL, 1L) &&
           Set(CURLOPT_CONNECTTIMEOUT, CONNECT_SECONDS) && Set(CURLOPT_TIMEOUT, SECONDS) &&
           Set(CURLOPT_ERRORBUFFER, error.data()) && Set(CURLOPT_WRITEFUNCTION, Receive) &&
           Set(CURLOPT_WRITEDATA, this) && Set(CURLOPT_OPENSOCKETFUNCTION, Open) &&
           Set(CURLOPT_OPENSOCKETDATA, this) && Set(CURLOPT_NOPROGRESS, 0L) &&
           Set(CURLOPT_XFERINFOFUNCTION, Look) && Set(CURLOPT_XFERINFODATA, this);
  }

  void CleanUp() {
    if (curl) curl_easy_cleanup(curl);
    curl_slist_free_all(headers);
  }

  static std::size_t Receive(const char* data, std::size_t size, std::size_t count, void* self) {
    auto& impl = *static_cast<Impl*>(self);
    if (impl.answer.size() + size * count > MOST_ANSWER) return 0;
    impl.answer.append(data, size * count);
    return size * count;
  }

  // The name was resolved: what it leads to is judged, and nothing else is connected to.
  static curl_socket_t Open(void* self, curlsocktype, curl_sockaddr* address) {
    auto& impl = *static_cast<Impl*>(self);
    impl.isRefused = !impl.hosts.MayReach(impl.url.host, address->addr);
    if (impl.isRefused) return CURL_SOCKET_BAD;
    return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
  }

  static int Look(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    return static_cast<Impl*>(self)->ended ? 1 : 0;
  }

  const ListenerUrl url;
  const AllowedHosts& hosts;
  const std::atomic<bool>& ended;
  CURL* curl;
  curl_slist* headers = nullptr;
  std::array<char, CURL_ERROR_SIZE> error = {};
  std::string answer;
  bool isRefused = false;
};

ListenerClient::ListenerClient(const ListenerUrl& url, const AllowedHosts& hosts,
                               const std::string& caFile, const std::atomic<bool>& ended)
    : impl(std::make_unique<Impl>(url, hosts, caFile, ended)) {}

ListenerClient::~ListenerClient() = default;

std::string ListenerClient::Send(const std::string& message) {
  return impl->Send(message);
}

}  // namespace tools::agent
