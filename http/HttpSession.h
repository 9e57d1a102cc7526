// SPDX-License-Identifier: MIT
//
// A connection's settings and the pool of handles that serve it.
//
// Thread safety: GetHandle() from any thread between Init() and Release().
#ifndef KECPP_HTTP_HTTPSESSION_H
#define KECPP_HTTP_HTTPSESSION_H

#include <memory>

#include "foundation/KEExport.h"
#include "http/ConnectionInfo.h"
#include "http/HttpConnectionPool.h"

namespace KELib {
namespace Http {

class KECPP_API HttpSession {
 public:
  virtual ~HttpSession();

  // Whether it can serve requests.
  virtual bool IsValid() = 0;

  virtual ConnectionInfo* GetConnectionInfo() = 0;
};

// The one implementation: the connection's settings and its pool of handles.
class KECPP_API HttpSessionImpl : public HttpSession {
 public:
  // Takes `info` over.
  explicit HttpSessionImpl(ConnectionInfo* info);
  ~HttpSessionImpl() override;

  bool IsValid() override { return pool != nullptr && connectionInfo != nullptr; }
  ConnectionInfo* GetConnectionInfo() override { return connectionInfo.get(); }

  // Makes the pool ready. Throws HttpException.
  void Init();

  // Deletes the pool.
  void Release();

  // Null before Init() and after Release().
  HttpConnectionPool* GetPool() { return pool.get(); }

  // HttpConnectionPool::GetHandle for this connection; nothing happens without a pool.
  void GetHandle(HttpHandleRef& ref);

  // Gives the settings, which the session forgets, back to the caller.
  ConnectionInfo* ReleaseConnectionInfo() { return connectionInfo.release(); }

 private:
  std::unique_ptr<HttpConnectionPool> pool;
  std::unique_ptr<ConnectionInfo> connectionInfo;
};

}  // namespace Http
}  // namespace KELib

#endif
