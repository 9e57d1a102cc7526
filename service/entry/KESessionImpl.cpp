// SPDX-License-Identifier: MIT
#include "service/entry/KESessionImpl.h"

#include <sys/stat.h>

#include "config/KEConfig.h"
#include "datasync/KEDataSyncImpl.h"
#include "foundation/KEException.h"
#include "foundation/KEFile.h"
#include "foundation/KEMutexGuard.h"
#include "foundation/Logger.h"
#include "foundation/StringUtil.h"
#include "http/CallLimits.h"
#include "http/CallTrace.h"
#include "service/call/KEMethod.h"
#include "service/call/ServiceConstants.h"
#include "service/entry/ConnectState.h"
#include "service/entry/KEServiceInst.h"
#include "service/entry/LoginConstants.h"
#include "service/entry/ServiceContent.h"
#include "xml/KEXmlBuffer.h"
#include "xml/KEXmlReader.h"
#include "xml/XmlEscape.h"

namespace KE::Service {

namespace {

using KELib::KEMutexGuard;
using KELib::KEString;

// A server that does not answer must not hold the end of a session up.
constexpr int kLogoutLimitMs = 1000;

void LogVerbose(const char* text) {
  KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE, "%s", text);
}

// The server names the file: opening a pipe of that name could wait for ever.
bool IsRegularFile(const KEString& path) {
  struct stat status {};
  return stat(path.Cstr(), &status) == 0 && S_ISREG(status.st_mode);
}

// Why a call failed, ahead of the line that says what it means.
void LogReason(const char* format, const KELib::Exception& e) {
  KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE, format, e.What());
}

void NoteNoUser(const KEString& user) {
  ConnectState::Get().Note(KEConnectFailureKind::noUserName,
                           user.Empty() ? "the configuration names no user to log in as"
                                        : "the configuration has no password to log in with");
}

// Reported if the login is then refused.
void NoteNoTicket(const char* reason) {
  KELib::Http::CallTrace* trace = KELib::Http::CallTrace::Current();
  if (trace != nullptr) trace->before = reason;
}

// Replaces `password` by the file's content. False, and nothing has changed, when it cannot be
// read.
bool ReadPasswordFile(KEString& path, KEString& password) {
  if (!IsRegularFile(path)) return false;
  const std::unique_ptr<KELib::KEFile> file(KELib::CreateKEFile(path, KELib::FILE_IO_READ));
  KEString content;
  if (!file->Read(content)) return false;
  password.Transfer(content);
  return true;
}

}  // namespace

KESession::~KESession() = default;

KESession* CreateSession(KELib::KEConfig* config, KEMethod* method, KEString& serviceContent) {
  auto session = std::make_unique<KESessionImpl>();
  session->Init(config, method, serviceContent);
  return session.release();
}

KESessionImpl::KESessionImpl() : mutex(std::make_unique<KELib::KEMutex>()) {}

KESessionImpl::~KESessionImpl() = default;

void KESessionImpl::Init(KELib::KEConfig* config, KEMethod* invoker, KEString& serviceContent) {
  KEMutexGuard guard(mutex.get());
  if (method != nullptr) return;
  id = this;
  method = invoker;
  SetupSession(serviceContent);
  initialized = true;
  LoginAsConfigured(*config);
}

void KESessionImpl::SetupSession(KEString& serviceContent) {
  ServiceContent content(serviceContent);
  rootFolder = content.Reference(PxaRootFolder);
  propertyCollector = content.Reference(PxaPropColl);
  KEString productLine, apiVersion;
  content.Text(ProductLineIdTag, productLine);
  content.Text(ApiVersionTag, apiVersion);
  newApi = !productLine.Equals("rvz") && apiVersion.Find("2", 0) == 0;
  sessionManager = content.Reference(PxaSessionMgr);
}

// --- logging in ----------------------------------------------------------------------------------

void KESessionImpl::LoginAsConfigured(KELib::KEConfig& config) {
  KELib::Http::CallTrace trace;
  if (!config.FindParentConfigKey(CfgKeyLoginInfo)) {
    return ConnectState::Get().Note(KEConnectFailureKind::noUserName,
                                    "the configuration has no LoginInfo");
  }
  KEString localTicket, user, password;
  config.GetConfigValue(CfgKeyLocalTicket, localTicket);
  config.GetConfigValue(userNameTag, user);
  config.GetConfigValue(CfgKeyPassword, password);

  const bool byTicket = KELib::StringUtil::ParseBool(localTicket.Cstr()) && !user.Empty();
  if (!byTicket && (user.Empty() || password.Empty())) return NoteNoUser(user);
  const bool passwordIsRaw = byTicket && SetupLocalLogin(user, password);
  if (!MayLogin()) return;

  KEString userXml, passwordXml;
  KELib::Xml::EscapeStray(user.Cstr(), userXml);
  if (passwordIsRaw) {
    KELib::Xml::EscapeText(password.Cstr(), passwordXml);
  } else {
    KELib::Xml::EscapeStray(password.Cstr(), passwordXml);
  }
  SendLogin(userXml, passwordXml);
}

bool KESessionImpl::SetupLocalLogin(KEString& user, KEString& password) {
  KEString ticketUser, path;
  try {
    AcquireTicket(user, ticketUser, path);
  } catch (const KELib::Exception& e) {
    LogReason("Exception Acquiring local ticket : %s", e);
    NoteNoTicket(e.What());
    LogVerbose("Unable to get local ticket information\n");
    return false;
  }
  if (!ticketUser.Empty() && !ticketUser.Equals(user)) user.Transfer(ticketUser);
  if (path.Empty()) {
    LogVerbose("Invalid Local Ticket information. No password file.\n");
    NoteNoTicket("it names no password file");
    return false;
  }
  const bool read = ReadPasswordFile(path, password);
  if (!read) {
    LogVerbose("Unable to read the local ticket's password file\n");
    NoteNoTicket("its password file cannot be read");
  }
  return read;
}

void KESessionImpl::AcquireTicket(const KEString& user, KEString& ticketUser, KEString& path) {
  KEString userXml, response;
  KELib::Xml::EscapeStray(user.Cstr(), userXml);
  KELib::Xml::KEXmlBuffer body;
  StartBody(MethodAcquireLocalTicket, body);
  body.AddElementTagAndValue(userNameTag, userXml.Cstr());
  body.EndAddElementTag(MethodAcquireLocalTicket);
  const KELib::Http::CallLimits limits;
  method->Invoke(targetNamespace, MethodAcquireLocalTicket, body, response);
  ServiceContent ticket(response);
  ticket.Text(userNameTag, ticketUser);
  ticket.Text(passwdFilePath, path);
}

void KESessionImpl::Login(KEString& user, KEString& password) {
  KEMutexGuard guard(mutex.get());
  LoginNoLock(user, password);
}

void KESessionImpl::LoginNoLock(KEString& user, KEString& password) {
  if (!MayLogin()) return;
  KELib::Http::CallTrace trace;
  KEString userXml, passwordXml;
  KELib::Xml::EscapeText(user.Cstr(), userXml);
  KELib::Xml::EscapeText(password.Cstr(), passwordXml);
  SendLogin(userXml, passwordXml);
}

bool KESessionImpl::MayLogin() {
  const char* reason = nullptr;
  if (method == nullptr) {
    reason = "Unable to Login - no method found\n";
  } else if (!initialized) {
    reason = "Session not initialized\n";
  } else if (loggedIn) {
    reason = "Already Logged in\n";
  }
  if (reason != nullptr) LogVerbose(reason);
  return reason == nullptr;
}

void KESessionImpl::SendLogin(const KEString& userXml, const KEString& passwordXml) {
  KELib::Xml::KEXmlBuffer body;
  StartBody(MethodLogin, body);
  body.AddElementTagAndValue(userNameTag, userXml.Cstr());
  body.AddElementTagAndValue(CfgKeyPassword, passwordXml.Cstr());
  body.EndAddElementTag(MethodLogin);
  try {
    const KELib::Http::CallLimits limits;
    method->Invoke(targetNamespace, MethodLogin, body, userSession);
    loggedIn = true;
    ConnectState::Get().Clear();
  } catch (const KELib::Exception& e) {
    ConnectState::Get().Note(ConnectStep::login, e.What());
    LogReason("Exception Logging in : %s", e);
    LogVerbose("Unable to Login - No UserSession received\n");
    userSession.Clear();
    loggedIn = false;
  } catch (...) {
    loggedIn = true;  // the server may have let us in already: its session must not stay behind
    Logout();
    throw;
  }
}

void KESessionImpl::StartBody(const char* name, KELib::Xml::KEXmlBuffer& body) {
  body.StartAddElementTag(name);
  body.AddNamespace(nullptr, targetNamespace);
  body.AddElementTagAttrAndValue(ThisMorefTag, MorefTypeAttr, sessionManager->type.Cstr(),
                                 sessionManager->value.Cstr());
}

// --- logging out ---------------------------------------------------------------------------------

void KESessionImpl::Logout() {
  KEMutexGuard guard(mutex.get());
  if (method == nullptr) {
    LogVerbose("Unable to Logout - no method found\n");
    return;
  }
  if (!loggedIn) {
    LogVerbose("Already Logged out\n");
    return;
  }
  // While the login still holds, so that the sync thread leaves without an error to log.
  if (dataSync != nullptr) dataSync->RequestStop();
  loggedIn = false;
  try {
    KELib::Xml::KEXmlBuffer body;
    StartBody(MethodLogout, body);
    body.EndAddElementTag(MethodLogout);
    KELib::Http::CallLimits limits;
    limits.SetTransferLimit(kLogoutLimitMs);
    method->Invoke(targetNamespace, MethodLogout, body, userSession);
  } catch (const KELib::Exception& e) {
    LogReason("Exception Logging out : %s", e);
    LogVerbose("Unable to Logout - Error reported by server.\n");
    userSession.Clear();
  } catch (const std::exception&) {
    LogVerbose("Unable to Logout - out of memory.\n");
    userSession.Clear();
  }
  // Another thread may have set a watch up meanwhile, which has died with the login.
  if (auto* sync = dynamic_cast<KEDataSyncImpl*>(dataSync.get())) sync->RenewStop();
}

KEDataSync* KESessionImpl::GetDataSync() {
  KEMutexGuard guard(mutex.get());
  if (!loggedIn) throw KELib::SystemException("No Session in Progress");
  if (dataSync == nullptr) dataSync.reset(CreateDataSync(method, propertyCollector.get()));
  return dataSync.get();
}

void KESessionImpl::Cleanup() {
  KEMutexGuard guard(mutex.get());
  if (dataSync != nullptr) dataSync->Cleanup();
}

bool KESessionImpl::EndSync() {
  KEMutexGuard guard(mutex.get());
  auto* sync = dynamic_cast<KEDataSyncImpl*>(dataSync.get());
  return sync == nullptr || sync->End();
}

const void* KESessionImpl::GetId() {
  KEMutexGuard guard(mutex.get());
  return id;
}

bool KESessionImpl::IsInitialized() {
  KEMutexGuard guard(mutex.get());
  return initialized;
}

bool KESessionImpl::IsLoggedIn() {
  KEMutexGuard guard(mutex.get());
  return loggedIn;
}

}  // namespace KE::Service
