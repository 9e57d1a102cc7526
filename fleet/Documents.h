// SPDX-License-Identifier: MIT
//
// What is in the cluster under a key, as JSON texts: an object, who publishes a site, how complete
// it is. docs/fleet.md describes them. Readers ignore members that they do not know.
//
// Thread safety: any thread.
#ifndef KECPP_FLEET_DOCUMENTS_H
#define KECPP_FLEET_DOCUMENTS_H

#include <kecpp/inventory.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace kecpp::fleet {

// In the order of Kind.
using Object = std::variant<Host, Machine, Role, Privilege, Identity>;

// An object as it is published: everything but the links that readers derive (a host's machines, a
// privilege's roles, a role's identities). Texts are UTF-8; bytes that are not are replaced.
class ObjectText {
 public:
  // One that would be longer than kLongestDocument is published without properties: readers learn
  // that it is there and how long it would be.
  ObjectText(std::string_view site, const Object& object);

  // What is the same for as long as the object is: the document without epoch and time.
  std::string Lasting() const { return head + rest; }

  // The document. `changed` is what TimeText gives.
  std::string Whole(std::uint64_t epoch, std::string_view changed) const;

  bool IsTooLong() const { return isTooLong; }

 private:
  std::string head;  // from the begin to the comma behind "key"
  std::string rest;  // "properties" and the end
  bool isTooLong = false;
};

// A document without its epoch and time, as ObjectText::Lasting wrote it; empty for what is none.
std::string LastingPart(std::string_view document);

// The object of a document that is found under its key, without derived links. Of one that is
// published without properties only the key is filled. Nothing when the text is no such document
// or its schema is another. `changed`, unless null, gets the milliseconds since 1970 of the
// document's "changed"; 0 without a sound one.
std::optional<Object> ReadObject(Kind kind, const std::string& key, std::string_view document,
                                 std::int64_t* changed = nullptr);

struct EpochDocument {
  std::uint64_t epoch = 0;
  std::string publisher;  // one process's own text
};
std::string ToText(const EpochDocument& document, std::string_view since);
std::optional<EpochDocument> ReadEpoch(std::string_view text);

struct SiteDocument {
  std::uint64_t epoch = 0;
  std::string agent;         // the publisher's version
  bool isComplete = false;   // "complete" or "syncing"
  bool isConnected = false;  // the publisher to its daemon: "connected" or "lost"
  std::uint64_t objects = 0;
  std::string agreed;  // the time of the last whole agreement; empty before the first
};
std::string ToText(const SiteDocument& document);
std::optional<SiteDocument> ReadSite(std::string_view text);

// "2026-11-22T18:24:00.123Z". Nothing for a text that is none, or years before 1685 or after 2254.
std::string TimeText(std::int64_t millisecondsSince1970);
std::optional<std::int64_t> ReadTime(const std::string& text);
std::int64_t NowMilliseconds();

}  // namespace kecpp::fleet

#endif
