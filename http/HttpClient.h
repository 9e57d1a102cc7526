// SPDX-License-Identifier: MIT
//
// Posts requests to one server.
//
// Thread safety: Post() from any thread, several at once; the others while no other thread uses the
//   client.
#ifndef KECPP_HTTP_HTTPCLIENT_H
#define KECPP_HTTP_HTTPCLIENT_H

#include <memory>

#include "foundation/KEExport.h"
#include "http/HttpRequest.h"
#include "http/HttpResponse.h"
#include "http/HttpSession.h"

namespace KELib {
namespace Http {

class KECPP_API HttpClient {
 public:
  virtual ~HttpClient();

  // Throws NotImplementedException: sessions are kept in memory only.
  virtual void SaveSession() = 0;

  // Posts the request's content to the connection's URL and appends the reply's body to the
  // response, whatever the HTTP status. A transfer that fails shows in the response's error code
  // and text; a time-out throws RequestTimedOutException. Throws HttpException "Unable to connect.
  // Busy." when all handles are in use (within CallLimits only after having waited for one), and
  // for options that cannot be set. Blocks for the time of the transfer; holds no lock.
  virtual void Post(HttpRequest* request, HttpResponse* response) = 0;

  // Throws NotImplementedException: the server is only posted to.
  virtual void Get(HttpRequest* request, HttpResponse* response) = 0;

  virtual bool IsConnected() = 0;
  virtual ConnectionInfo* GetConnectionInfo() = 0;
  virtual HttpSession* GetSession() = 0;
};

// The one implementation: each client has its own session.
class KECPP_API HttpClientImpl : public HttpClient {
 public:
  HttpClientImpl();
  HttpClientImpl(const HttpClientImpl&) = delete;
  HttpClientImpl& operator=(const HttpClientImpl&) = delete;
  ~HttpClientImpl() override;

  // Makes the session; takes `info` over unless it throws HttpException.
  void Init(ConnectionInfo* info);

  void SaveSession() override;
  void Post(HttpRequest* request, HttpResponse* response) override;
  void Get(HttpRequest* request, HttpResponse* response) override;

  // Whether there is a session that is valid.
  bool IsConnected() override;

  // Null before Init().
  ConnectionInfo* GetConnectionInfo() override;
  HttpSessionImpl* GetSession() override { return session.get(); }

 private:
  void TakeHandle(HttpHandleRef& ref);

  std::unique_ptr<HttpSessionImpl> session;
};

}  // namespace Http
}  // namespace KELib

#endif
