// SPDX-License-Identifier: MIT
//
// The floor under all contenders: the blocks that the library allocates for each machine, of the
// same sizes and in the same order, and the copies of the kept texts, which were found before the
// clock starts. No parsing, no table, no locks. Its growth with the inventory is that of the
// allocator and of the page faults.
#include <array>
#include <cstring>
#include <string_view>

#include "benchmarks/Contender.h"
#include "foundation/KEHashmap.h"
#include "stub/classes/ZORBEL_HostedDependency.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"

namespace bench {

namespace {

using Block = std::unique_ptr<char[]>;

constexpr std::size_t kKept = 8;  // texts of a machine that are copied once, in document order
constexpr std::size_t kBlocks = kKept + 9;

struct Pieces {
  std::string_view type, id;
  std::array<std::string_view, kKept> texts;
};

class BareContender final : public Contender {
 public:
  void Prepare(const Text& text) override {
    pieces.clear();
    std::string_view rest(text.characters.get(), text.length);
    while (Skip(rest, "<obj type=\"")) {
      Pieces machine;
      machine.type = UpTo(rest, "\">");
      machine.id = UpTo(rest, "</obj>");
      if (machine.type == "VirtualMachine") TakeTexts(rest, machine);
    }
    blocks.resize(pieces.size());
  }

  void Apply(Text) override {
    for (std::size_t i = 0; i < pieces.size(); ++i) Store(pieces[i], blocks[i]);
    pieces.clear();  // they point into the text; further sets are not prepared
  }

  std::uint64_t Checksum() override { return 0; }
  std::size_t Walk() override { return 0; }
  void Drop() override {
    for (auto& machine : blocks) {
      for (Block& block : machine) block.reset();
    }
  }

 private:
  static bool Skip(std::string_view& rest, std::string_view markup) {
    const std::size_t at = rest.find(markup);
    rest.remove_prefix(at == std::string_view::npos ? rest.size() : at + markup.size());
    return at != std::string_view::npos;
  }

  static std::string_view UpTo(std::string_view& rest, std::string_view markup) {
    const std::string_view found = rest.substr(0, rest.find(markup));
    Skip(rest, markup);
    return found;
  }

  // The host's reference is converted to a link, not kept.
  void TakeTexts(std::string_view& rest, Pieces& machine) {
    std::size_t kept = 0;
    while (kept < kKept && Skip(rest, "<name>")) {
      const bool converted = UpTo(rest, "</name>") == "runtime.host";
      Skip(rest, "<val ");
      Skip(rest, ">");
      const std::string_view value = UpTo(rest, "</val>");
      if (!converted) machine.texts[kept++] = value;
    }
    pieces.push_back(machine);
  }

  static Block Copy(std::string_view text) {
    Block copy(new char[text.size() + 1]);
    std::memcpy(copy.get(), text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
  }

  static void Store(const Pieces& machine, std::array<Block, kBlocks>& into) {
    std::size_t next = 0;
    const auto room = [&](std::size_t size) { into[next++].reset(new char[size]); };
    room(sizeof(KE::Stub::ZORBEL_VMComputerSystem));
    into[next++] = Copy(machine.id);
    into[next++] = Copy(machine.type);
    into[next++] = Copy(machine.id);
    room(sizeof(KELib::KEEntry<KELib::KEString, KELib::Stub::KEStubBase*>));
    into[next++] = Copy(machine.id);
    for (const std::string_view text : machine.texts) into[next++] = Copy(text);
    room(sizeof(KE::Stub::ZORBEL_HostedDependency));
    room(sizeof(KELib::KEVector<KELib::Stub::KEAssocStubBase*>));
    room(2 * sizeof(void*));
  }

  std::vector<Pieces> pieces;
  std::vector<std::array<Block, kBlocks>> blocks;
};

}  // namespace

std::unique_ptr<Contender> MakeBareContender() {
  return std::make_unique<BareContender>();
}

}  // namespace bench
