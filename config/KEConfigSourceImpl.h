// SPDX-License-Identifier: MIT
//
// The one implementation of KEConfigSource.
#ifndef KECPP_CONFIG_KECONFIGSOURCEIMPL_H
#define KECPP_CONFIG_KECONFIGSOURCEIMPL_H

#include "config/KEConfigSource.h"

namespace KELib {

class KECPP_API KEConfigSourceImpl : public KEConfigSource {
 public:
  // `defaultContent`, the text used for a file without content, outlives the object.
  explicit KEConfigSourceImpl(const char* defaultContent);
  ~KEConfigSourceImpl() override;

  void Init(KEString& source) override;
  KEString& GetSourcePath() override;
  KEString& Content() override;

 private:
  bool ReadFile(KEString& path);
  void UseDefault();

  const char* defaultContent;  // borrowed
  KEString sourcePath;
  KEString content;
};

}  // namespace KELib

#endif
