// SPDX-License-Identifier: MIT
//
// Says in the system log, at level "error", what is wrong with a configuration document. The
// library goes on with what it finds, so nobody else would say it.
//
// All throw nothing; where memory runs out, nothing is said. Linear in the document's length.
// Thread safety: any thread.
#ifndef KECPP_CONFIG_CONFIGREPORT_H
#define KECPP_CONFIG_CONFIGREPORT_H

#include "foundation/KEString.h"
#include "xml/KEXmlReader.h"

namespace KELib {

// False for a document of the same text as the one before, in this process, blanks at its end
// aside: an agent that tries to connect takes its document at each try, and says once what is wrong
// with it. A document that is taken while errors are not logged does not count.
bool IsNews(const KEString& document);

// Writes a line for a document that is not well-formed. Comments are still in it, so that the
// line's number is that of the author.
void ReportMalformation(const KEString& document);

// Writes a line for each element or section that has no effect, at most ten and one that counts the
// others. The document has no comments; the reader is put back to its start.
void ReportIgnored(Xml::KEXmlReader& reader);

}  // namespace KELib

#endif
