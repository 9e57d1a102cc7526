// SPDX-License-Identifier: MIT
#include "config/KEConfigSourceImpl.h"

#include <cstring>
#include <memory>

#include "foundation/KEFile.h"

namespace KELib {

const char* const DEFAULT_CONFIG = "DEFAULT_CONFIG";
const char* const XML_MARKER_TAG = "<?xml";

KEConfigSource::~KEConfigSource() = default;

bool IsXmlStringSource(KEString& source) {
  return std::strncmp(source.Cstr(), XML_MARKER_TAG, std::strlen(XML_MARKER_TAG)) == 0;
}

KEConfigSource* CreateConfigSource(KEString& source, const char* defaultContent) {
  if (defaultContent == nullptr || defaultContent[0] == '\0') return nullptr;
  auto made = std::make_unique<KEConfigSourceImpl>(defaultContent);
  made->Init(source);
  return made.release();
}

KEConfigSourceImpl::KEConfigSourceImpl(const char* fallback) : defaultContent(fallback) {}

KEConfigSourceImpl::~KEConfigSourceImpl() = default;

void KEConfigSourceImpl::Init(KEString& source) {
  if (!content.Empty()) return;
  if (source.Empty() || source.Equals(DEFAULT_CONFIG)) {
    UseDefault();
  } else if (IsXmlStringSource(source)) {
    content = source;
    sourcePath = source;
  } else if (ReadFile(source)) {
    sourcePath = source;
  } else {
    UseDefault();
  }
}

bool KEConfigSourceImpl::ReadFile(KEString& path) {
  std::unique_ptr<KEFile> file(CreateKEFile(path, FILE_IO_READ));
  return file->Read(content) && !content.Empty();
}

// Also in place of a file of which only a part could be read.
void KEConfigSourceImpl::UseDefault() {
  content = defaultContent;
  sourcePath = DEFAULT_CONFIG;
}

KEString& KEConfigSourceImpl::GetSourcePath() {
  return sourcePath.Empty() ? content : sourcePath;
}

KEString& KEConfigSourceImpl::Content() {
  return content;
}

}  // namespace KELib
