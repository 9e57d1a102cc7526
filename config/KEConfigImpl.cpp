// SPDX-License-Identifier: MIT
#include "config/KEConfigImpl.h"

#include "config/ConfigComments.h"
#include "config/ConfigReport.h"
#include "foundation/KEException.h"

namespace KELib {

namespace {

[[noreturn]] void ThrowNotImplemented() {
  throw NotImplementedException("NotImplementedException");
}

bool IsGiven(const char* text) {
  return text != nullptr && text[0] != '\0';
}

void RefuseToSet(const char* name, const char* value) {
  if (IsGiven(name) && IsGiven(value)) ThrowNotImplemented();
}

}  // namespace

KEConfig::~KEConfig() = default;

KEConfig* CreateConfig(KEString& source, const char* defaultContent) {
  std::unique_ptr<KEConfigSource> made(CreateConfigSource(source, defaultContent));
  if (made == nullptr) return nullptr;
  auto config = std::make_unique<KEConfigImpl>();
  config->Init(made.release());
  return config.release();
}

KEConfigImpl::KEConfigImpl() = default;

KEConfigImpl::~KEConfigImpl() = default;

void KEConfigImpl::Init(KEConfigSource* given) {
  if (source != nullptr || given == nullptr) return;
  source.reset(given);
  const bool isNews = IsNews(source->Content());
  if (isNews) ReportMalformation(source->Content());
  RemoveComments(source->Content());
  reader.SetInput(source->Content(), false);
  reader.SetStartPos(0);
  if (isNews) ReportIgnored(reader);
}

KEString& KEConfigImpl::GetConfigPath() {
  if (source == nullptr) throw SystemException("Configuration is not initialised.");
  return source->GetSourcePath();
}

// Behind the last element there is nothing to find; the reader itself takes that for an error.
bool KEConfigImpl::FindParentConfigKey(const char* name) {
  if (reader.GetInputLength() > 0 && reader.End()) return false;
  return reader.FindElementTag(name);
}

bool KEConfigImpl::FindParentConfigKey(KEString& name) {
  return FindParentConfigKey(name.Cstr());
}

bool KEConfigImpl::GetConfigValue(const char* key, KEString& value) {
  if (!IsGiven(key)) return false;
  if (reader.GetInputLength() > 0 && reader.End()) return false;
  return reader.GetNamedElementValue(key, value);
}

bool KEConfigImpl::GetConfigValue(KEString& key, KEString& value) {
  return GetConfigValue(key.Cstr(), value);
}

bool KEConfigImpl::GetConfigPair(KEString& key, KEString) {
  if (!key.Empty()) ThrowNotImplemented();
  return true;
}

void KEConfigImpl::SetParentConfigKey(const char*) {
  ThrowNotImplemented();
}
void KEConfigImpl::SetParentConfigKey(KEString&) {
  ThrowNotImplemented();
}
void KEConfigImpl::SetConfigPair(const char* name, const char* value) {
  RefuseToSet(name, value);
}
void KEConfigImpl::SetConfigPair(KEString& name, KEString& value) {
  RefuseToSet(name.Cstr(), value.Cstr());
}
void KEConfigImpl::SetConfigValue(const char* name, const char* value) {
  RefuseToSet(name, value);
}
void KEConfigImpl::SetConfigValue(KEString& name, KEString& value) {
  RefuseToSet(name.Cstr(), value.Cstr());
}

}  // namespace KELib
