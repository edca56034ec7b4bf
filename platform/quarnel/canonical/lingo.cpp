#include "contract/quarnel/lingo.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "contract/bostrel/characters_local.h"
#include "contract/quarnel/readers.h"
#include "platform/quarnel/molecule/elements_local.h"
#include "platform/quarnel/molecule/workspace_local.h"

namespace Quarnel {

using Bostrel::IsDigit;
using Bostrel::IsLower;
using Bostrel::ToLower;
using Bostrel::ToUpper;

namespace {

constexpr std::size_t lingoLength = 4;

// One letter for each atomic number.
constexpr std::string_view letters =
    "*HGAQBCNOFGAQJTPSLGKQMMVMMMMMMMJTDERGAQY"
    "MMMMMMMMMJTDEIGAQZZZZZZZZZZZZZZZMMWMMMMM"
    "MJTDEXGAQZZZUZZZZZZZZZZZMMMMMMMMMJTDEXG";
static_assert(letters.size() == 119);

char WithCaseOf(char letter, char model) { return IsLower(model) ? ToLower(letter) : letter; }

// Appends the atom in brackets at the start of `smiles`, brackets included; returns its length in
// `smiles`.
std::size_t AppendBracketAtom(std::string& text, std::string_view smiles) {
  std::size_t at = 1;
  while (IsDigit(smiles[at])) ++at;
  text.append(smiles.substr(0, at));
  const char first = smiles[at];
  if (IsLower(smiles[at + 1])) {
    const char symbol[] = {ToUpper(first), smiles[at + 1]};
    text += WithCaseOf(letters[GetAtomicNumOf({symbol, 2})], first);
    at += 2;
  }
  const std::size_t end = smiles.find(']', at) + 1;
  text.append(smiles.substr(at, end - at));
  return end;
}

// Calls visit with every substring, packed.
template <class Visit>
void ForEachLingo(const char* text, unsigned int step, Visit visit) {
  std::uint32_t lingo = 0;
  std::size_t wait = lingoLength;
  for (; *text != 0; ++text) {
    lingo = lingo << 8 | static_cast<unsigned char>(*text);
    if (--wait != 0) continue;
    wait = step;
    visit(lingo);
  }
}

// The substrings of a text with their counts, in a table of open addressing that is at most a
// quarter full.
class LingoCounts final : public ZQLingoSim::Impl {
 public:
  LingoCounts(const char* text, unsigned int step) : step_(step) {
    const std::size_t numSlots = std::bit_ceil(4 * std::strlen(text) + 4);
    slots_.resize(numSlots);
    shift_ = 32U - static_cast<unsigned int>(std::countr_zero(numSlots));
    ForEachLingo(text, step_, [this](std::uint32_t lingo) {
      Slot& slot = slots_[SlotOf(lingo)];
      if (slot.lingo == 0) {
        slot = {lingo, static_cast<std::uint32_t>(counts_.size())};
        counts_.push_back(0);
      }
      ++counts_[slot.place];
      ++total_;
    });
    // A substring that isn't found has the last count, which is 0.
    for (Slot& slot : slots_) {
      if (slot.lingo == 0) slot.place = static_cast<std::uint32_t>(counts_.size());
    }
    counts_.push_back(0);
  }

  void Compare(const char* other, unsigned int* onlyA, unsigned int* onlyB,
               unsigned int* both) const override {
    const Workspace<std::vector<unsigned int>> scratch;
    scratch->assign(counts_.begin(), counts_.end());
    unsigned int* const left = scratch->data();  // remaining count of each own substring
    unsigned int common = 0;
    unsigned int ofOther = 0;
    ForEachLingo(other, step_, [&](std::uint32_t lingo) {
      ++ofOther;
      unsigned int& count = left[slots_[SlotOf(lingo)].place];
      const unsigned int taken = count != 0 ? 1 : 0;
      count -= taken;
      common += taken;
    });
    *onlyA = total_ - common;
    *onlyB = ofOther - common;
    *both = common;
  }

 private:
  struct Slot {
    std::uint32_t lingo;  // 0: empty
    std::uint32_t place;  // index into counts_
  };

  // The slot of the substring, or the free one for it (Fibonacci hashing).
  std::size_t SlotOf(std::uint32_t lingo) const {
    std::size_t at = (lingo * 0x9E3779B9U) >> shift_;
    while (slots_[at].lingo != lingo && slots_[at].lingo != 0) at = (at + 1) & (slots_.size() - 1);
    return at;
  }

  unsigned int step_;
  unsigned int total_ = 0;
  unsigned int shift_;  // from a hash to a slot
  std::vector<Slot> slots_;
  std::vector<unsigned int> counts_;
};

}  // namespace

void ZQLingoMap::CreateString(std::string& text, const ZQMolBase& mol) const {
  const std::string whole = ZQMolToCanonicalSmiles(mol);
  text.clear();
  for (std::string_view rest = whole; !rest.empty();) {
    std::size_t length = 1;
    if (rest.starts_with('[')) {
      length = AppendBracketAtom(text, rest);
    } else if (rest.starts_with("Cl") || rest.starts_with("Br")) {
      length = 2;
      text += rest.starts_with("Cl") ? 'L' : 'R';
    } else if (rest.starts_with('%')) {
      length = rest.starts_with("%(") ? rest.find(')') + 1 : 3;
      text += '0';
    } else {
      text += IsDigit(rest.front()) ? '0' : rest.front();
    }
    rest.remove_prefix(length);
  }
}

ZQLingoSim::ZQLingoSim(const char* text, unsigned int step) {
  if (step != 0 && std::strlen(text) >= lingoLength) {
    impl_ = std::make_unique<const LingoCounts>(text, step);
  }
}

}  // namespace Quarnel
