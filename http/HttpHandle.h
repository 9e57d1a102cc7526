// SPDX-License-Identifier: MIT
//
// One connection of a pool: a handle of libcurl, made ready in two steps. Init() gives
// it the options that all handles have, InitializeHttpPost() those of the connection it is to
// serve.
//
// Thread safety: none. A handle is used by the thread that took it from the pool, and by
//   the pool under its mutex.
#ifndef KECPP_HTTP_HTTPHANDLE_H
#define KECPP_HTTP_HTTPHANDLE_H

#include <memory>

#include "foundation/KEExport.h"

struct curl_slist;

namespace KELib {
namespace Http {

class ConnectionInfo;
class HttpConnectionPool;
class SSLInfo;
class SocketRegistry;
struct HandleCookies;

class KECPP_API HttpHandle {
 public:
  HttpHandle();
  HttpHandle(const HttpHandle&) = delete;
  HttpHandle& operator=(const HttpHandle&) = delete;
  ~HttpHandle();  // calls Release()

  // Creates the handle on `share`, a share handle of libcurl that outlives it. Throws
  // HttpException; the object is empty then.
  void Init(void* share);

  // Lets the handle and its connection to the server go. An empty object stays as it is.
  void Release();

  // Makes its own list of `lines`, which may be null, for as long as the handle uses it.
  // Lines without a value take the form that libcurl sends. Throws HttpException.
  void SetHeaders(curl_slist* lines);

  // Sets the time that a transfer may take, in seconds (see ClampTimeout). False when refused.
  bool SetTimeout(long long seconds);

  void* handle = nullptr;         // of libcurl; null when released
  bool prepared = false;          // the connection's options are applied
  curl_slist* headers = nullptr;  // owned; in use by the handle
  long timeout = 0;               // seconds, as last set
  char errorText[256] = "";       // written by libcurl during a transfer

  std::unique_ptr<SocketRegistry> sockets;  // null before Init()
  std::unique_ptr<HandleCookies> cookies;   // null before the first transfer with a CookieStore
};

// A thread's hold on a pool's handle, given back when the reference dies. Copies refer to the same
// acquisition and do not count: the first one that dies gives the handle back; what the others do
// later does not touch a handle that somebody else has taken since. The pool knows by their
// addresses which references hold a handle: programs keep them on their stacks, in two pointers.
//
// Thread safety: a reference belongs to one thread. The pool outlives it. Not to be copied, set or
//   destroyed under the pool's mutex.
class KECPP_API HttpHandleRef {
 public:
  HttpHandleRef() = default;
  // Throws std::bad_alloc.
  HttpHandleRef(const HttpHandleRef& other);
  // Unless both hold the same handle, gives the own one back first. Throws std::bad_alloc.
  HttpHandleRef& operator=(const HttpHandleRef& other);
  ~HttpHandleRef();

  // Gives the current handle back, unless it is the same, and holds this one, which is in use, in
  // its present acquisition. Throws std::bad_alloc.
  void Set(HttpConnectionPool* pool, HttpHandle* handle);

  HttpHandle* handle = nullptr;
  HttpConnectionPool* pool = nullptr;

 private:
  void GiveBack();
};

// What libcurl accepts as a time-out in seconds: 0 (no limit) to 2147483.
KECPP_API long ClampTimeout(long long seconds);

// Applies the options of a connection for posting; once in a handle's life. Throws HttpException
// for an incomplete address or a refused option, InvalidArgumentException for a certificate type
// other than "PEM".
KECPP_API void InitializeHttpPost(ConnectionInfo* info, HttpHandle* handle);

// Applies the client certificate; null does nothing. The server's certificate is not verified,
// neither its chain nor its host name, even when a CA file is given. Throws as above.
KECPP_API void InitializeSSL(SSLInfo* ssl, HttpHandle* handle);

}  // namespace Http
}  // namespace KELib

#endif
