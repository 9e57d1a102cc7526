// SPDX-License-Identifier: MIT
//
// Decides where the configuration document comes from: a file, a text, or the built-in default.
//
// Thread safety: none.
#ifndef KECPP_CONFIG_KECONFIGSOURCE_H
#define KECPP_CONFIG_KECONFIGSOURCE_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib {

extern KECPP_API const char* const DEFAULT_CONFIG;  // names the built-in document
extern KECPP_API const char* const XML_MARKER_TAG;  // how an XML text begins

// True for a text that is a document itself and no path: it begins with XML_MARKER_TAG.
KECPP_API bool IsXmlStringSource(KEString& source);

class KECPP_API KEConfigSource {
 public:
  virtual ~KEConfigSource();

  // Loads the document that `source` names; the argument is not changed. A file that is missing,
  // unreadable or empty is no error: the default document takes its place. Only the first call that
  // loads something has an effect.
  virtual void Init(KEString& source) = 0;

  // Where the document came from: a path, the text itself, or DEFAULT_CONFIG.
  virtual KEString& GetSourcePath() = 0;

  // The document; a configuration takes it over and leaves it empty.
  virtual KEString& Content() = 0;
};

// A new, loaded source that the caller owns; null when `defaultContent` is null or empty. The
// default document is borrowed and outlives the source.
KECPP_API KEConfigSource* CreateConfigSource(KEString& source, const char* defaultContent);

}  // namespace KELib

#endif
