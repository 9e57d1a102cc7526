// SPDX-License-Identifier: MIT
#include "service/entry/KEServiceInstManagerImpl.h"

#include <string>

#include "config/KEConfig.h"
#include "config/KEConfigSource.h"
#include "config/Malformation.h"
#include "foundation/KEConstants.h"
#include "foundation/KEFile.h"
#include "foundation/KEMutexGuard.h"
#include "foundation/Logger.h"
#include "service/entry/ConnectState.h"
#include "service/entry/KEServiceInstImpl.h"
#include "soap/SoapClient.h"
#include "soap/SoapMessage.h"

namespace KE::Service {

using KELib::KEMutexGuard;
using KELib::KEString;

KEServiceInstManagerImpl* KEServiceInstManagerImpl::_inst = nullptr;

namespace {

// The document that the configuration was made of; false when the file cannot be read any more.
bool LoadDocument(KEString& source, const char* defaultConfig, KEString& document) {
  if (source.Equals(KELib::DEFAULT_CONFIG)) {
    document = defaultConfig;
  } else if (KELib::IsXmlStringSource(source)) {
    document = source;
  } else {
    const std::unique_ptr<KELib::KEFile> file(KELib::CreateKEFile(source, KELib::FILE_IO_READ));
    return file->Read(document);
  }
  return true;
}

// What follows from a malformed document is best shown by the place of its fault.
void BlameConfiguration(KEString& source, const char* defaultConfig) {
  KEString document;
  KELib::Malformation fault;
  if (!ConnectState::Get().HasFailed() || !LoadDocument(source, defaultConfig, document) ||
      !KELib::FindMalformation(document, fault)) {
    return;
  }
  std::string text = "malformed configuration";
  const bool isFile = !source.Equals(KELib::DEFAULT_CONFIG) && !KELib::IsXmlStringSource(source);
  if (isFile) text += std::string(" ") + source.Cstr();
  text += ", line " + std::to_string(fault.line) + ": " + fault.what.Cstr();
  ConnectState::Get().Blame(text.c_str());
}

}  // namespace

KEServiceInstManager::~KEServiceInstManager() = default;

KEServiceInstManager* GetServiceManagerInstance() {
  return KEServiceInstManagerImpl::GetInstance();
}

void FreeServiceManagerInstance() {
  KEServiceInstManagerImpl::FreeInstance();
}

KEServiceInstManager* KEServiceInstManagerImpl::GetInstance() {
  if (_inst == nullptr) {
    KELib::Logging::GetDefaultLogger();
    KELib::Soap::InitSoapService();
    _inst = new KEServiceInstManagerImpl;
  }
  return _inst;
}

void KEServiceInstManagerImpl::FreeInstance() {
  if (_inst == nullptr) return;
  _inst->FreeAllServiceInstance();
  KELib::Soap::ReleaseSoapService();
  KELib::Logging::FreeDefaultLogger();
  ConnectState::Get().Clear();
  delete _inst;
  _inst = nullptr;
}

KEServiceInstManagerImpl::KEServiceInstManagerImpl()
    : instances(KELib::HASH_CAP, KELib::HASH_FILLRATIO), mutex(std::make_unique<KELib::KEMutex>()) {
  // Freeing must not need memory: these two are made here.
  instances.Begin();  // the map's room for iterators
  ConnectState::Get();
}

KEServiceInstManagerImpl::~KEServiceInstManagerImpl() = default;

KEServiceInst* KEServiceInstManagerImpl::GetServiceInstance(const char* configPath,
                                                            const char* defaultConfig) {
  KEString path(configPath);
  return GetServiceInstance(path, defaultConfig);
}

KEServiceInst* KEServiceInstManagerImpl::GetServiceInstance(KEString& configPath,
                                                            const char* defaultConfig) {
  KEMutexGuard guard(mutex.get());
  if (KEServiceInst** found = instances.Get(configPath)) return *found;

  ConnectState::Get().Clear();
  KEString path(configPath);  // the configuration may work on its argument
  std::unique_ptr<KELib::KEConfig> config(KELib::CreateConfig(path, defaultConfig));
  if (config == nullptr) {
    ConnectState::Get().Note(KEConnectFailureKind::badSettings, "there is no configuration");
    return nullptr;
  }
  auto inst = std::make_unique<KEServiceInstImpl>();
  const bool connected = inst->Init(config.release());
  BlameConfiguration(inst->GetConfig()->GetConfigPath(), defaultConfig);
  if (!connected) {
    inst->Stop();
    return nullptr;
  }
  try {
    File(inst.get());
  } catch (...) {
    StopForGood(*inst);
    throw;
  }
  return inst.release();
}

// Files an instance under the path that its configuration was loaded from. An instance held there
// already, as the default configuration's usually is, is destroyed first: the map would destroy it
// while its thread may still be inside.
void KEServiceInstManagerImpl::File(KEServiceInst* inst) {
  KEString key(inst->GetConfig()->GetConfigPath());
  KEServiceInst** held = instances.Get(key);
  if (held != nullptr) {
    KEServiceInst* older = *held;
    Unlink(older);
    if (static_cast<KEServiceInstImpl*>(older)->EndSyncs()) delete older;
  }
  instances.Insert(key, inst);
}

void KEServiceInstManagerImpl::FreeServiceInstance(KEServiceInst* inst) {
  KEMutexGuard guard(mutex.get());
  if (inst == nullptr || !Unlink(inst)) return;
  Destroy(inst);
}

// Takes an instance out of the map without destroying it. False when it is not held. Needs no
// memory.
bool KEServiceInstManagerImpl::Unlink(KEServiceInst* inst) {
  bool held = false;
  for (auto it = instances.Begin(); !it.End(); ++it) {
    if (it->value != inst) continue;
    it->value = nullptr;
    held = true;
  }
  if (held) instances.Remove(inst->GetConfig()->GetConfigPath());
  return held;
}

// Stops an instance and destroys it, unless a thread cannot be brought to leave it: then it stays
// in memory for good, since destroying it would pull it from under that thread.
void KEServiceInstManagerImpl::Destroy(KEServiceInst* inst) {
  if (!StopForGood(*inst)) {
    KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_ERROR,
                        "Service instance is kept: a thread is still inside.");
    return;
  }
  delete inst;
}

// True when no thread is inside any more. What a stop without memory leaves undone, the destruction
// does.
bool KEServiceInstManagerImpl::StopForGood(KEServiceInst& inst) {
  try {
    inst.Stop();
    return inst.GetCurrentSession() == nullptr;
  } catch (const std::exception& e) {
    KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE,
                        "Exception stopping service instance : %s", e.what());
  }
  return static_cast<KEServiceInstImpl&>(inst).EndSyncs();
}

void KEServiceInstManagerImpl::GetLastFailure(KEConnectFailure& failure) {
  ConnectState::Get().GetFailure(failure);
}

void KEServiceInstManagerImpl::InterruptConnecting() {
  ConnectState::Get().Interrupt();
}

void KEServiceInstManagerImpl::FreeAllServiceInstance() {
  KEMutexGuard guard(mutex.get());
  FreeAllServiceInstanceNoLock();
}

void KEServiceInstManagerImpl::FreeAllServiceInstanceNoLock() {
  for (auto it = instances.Begin(); !it.End(); it = instances.Begin()) {
    KEServiceInst* inst = it->value;
    Unlink(inst);
    Destroy(inst);
  }
}

}  // namespace KE::Service
