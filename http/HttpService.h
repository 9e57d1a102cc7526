// SPDX-License-Identifier: MIT
//
// libcurl's process-wide state, and the maker of clients.
//
// Thread safety: all operations from any thread. Release it only when no client is left.
#ifndef KECPP_HTTP_HTTPSERVICE_H
#define KECPP_HTTP_HTTPSERVICE_H

#include <memory>

#include "foundation/KEExport.h"
#include "foundation/KEMutex.h"
#include "foundation/KEThreadAnnotations.h"
#include "http/ConnectionInfo.h"
#include "http/HttpClient.h"

namespace KELib {
namespace Http {

class KECPP_API HttpService {
 public:
  virtual ~HttpService();

  // A new client, owned by the caller, which takes `info` over. Throws HttpException, for example
  // for a secure connection without SSL settings; `info` stays the caller's then.
  virtual HttpClient* CreateHttpClient(ConnectionInfo* info) = 0;
};

// The one implementation. It keeps the transport library initialised for as long as it lives.
class KECPP_API HttpServiceImpl : public HttpService {
 public:
  HttpServiceImpl();
  HttpServiceImpl(const HttpServiceImpl&) = delete;
  HttpServiceImpl& operator=(const HttpServiceImpl&) = delete;
  ~HttpServiceImpl() override;  // calls Release()

  HttpClient* CreateHttpClient(ConnectionInfo* info) override;

  // Initialises libcurl, once. Throws HttpException.
  void Init();

  // Undoes it.
  void Release();

  // The process-wide instance, initialised; made when there is none. Throws HttpException.
  static HttpServiceImpl* GetInstance();

  // Releases and deletes it.
  static void ReleaseInstance();

 private:
  std::unique_ptr<KEMutex> mutex;
  bool initialized KECPP_GUARDED_BY(mutex) = false;

  // Guards the one instance's making and deletion. Leaked: it must outlive every thread.
  static KEMutex& InstanceMutex();
  static bool CreateAtLoad();

  // Without a destructor, since a process may end on any thread.
  static HttpServiceImpl* _inst KECPP_GUARDED_BY(InstanceMutex());
  static const bool createdAtLoad;
};

// HttpServiceImpl::GetInstance() and ReleaseInstance().
KECPP_API HttpService* GetHttpService();
KECPP_API void ReleaseHttpService();

}  // namespace Http
}  // namespace KELib

#endif
