// SPDX-License-Identifier: MIT
//
// A session is one login to the management daemon. It owns the data sync that works under it.
//
// Thread safety: every operation takes the session's mutex.
// Ownership: the service instance owns its sessions; a session owns its data sync.
#ifndef KECPP_SERVICE_ENTRY_KESESSION_H
#define KECPP_SERVICE_ENTRY_KESESSION_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib {
class KEConfig;
}

namespace KE::Service {

class KEDataSync;
class KEMethod;

class KECPP_API KESession {
 public:
  virtual ~KESession();

  // Reads the server's references from `serviceContent` (unchanged afterwards) and logs in as the
  // configuration's "LoginInfo" says. Only the first call has an effect. A failed login is logged;
  // the session is then not logged in and GetDataSync throws.
  virtual void Init(KELib::KEConfig* config, KEMethod* method, KELib::KEString& serviceContent) = 0;

  // Ends the data sync's work (KEDataSync::Cleanup). The data sync itself stays.
  virtual void Cleanup() = 0;

  // An identity that no other living session has.
  virtual const void* GetId() = 0;

  // Logs in with `user` and `password`, raw texts. A failure is logged; nothing is thrown. Refused
  // while logged in: a second login would orphan the server's session.
  virtual void Login(KELib::KEString& user, KELib::KEString& password) = 0;

  // Lets the sync thread leave, then logs out. Also a failed logout ends the session locally.
  virtual void Logout() = 0;

  // The session's data sync, created on first use and alive as long as the session.
  // Throws SystemException "No Session in Progress" when not logged in.
  virtual KEDataSync* GetDataSync() = 0;
};

// Creates a session and initialises it. Returned also when its login failed. Throws XmlException
// when the content lacks a reference or is malformed. The caller owns the session; `config` and
// `method` outlive it.
KECPP_API KESession* CreateSession(KELib::KEConfig* config, KEMethod* method,
                                   KELib::KEString& serviceContent);

}  // namespace KE::Service

#endif
