#include "korvex/unhashed.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>

#include "contract/quarnel/subsearch.h"
#include "korvex/circular.h"
#include "korvex/fptype_records.h"
#include "tests/generator_helpers.h"

namespace ZQKorvex {

namespace {

using Atoms = std::vector<const ZQAtomBase*>;

using PreparedTexts = Prepared<std::string>;

// The name of a set of atoms, by complete keys in each round and plain recursion.
std::string NameOf(const PreparedTexts& from, const Atoms& set) {
  struct Key {
    std::string text;  // in the first round only
    std::size_t rank;
    std::vector<std::size_t> neighbours;
    Texts bonds;
    bool operator<(const Key& other) const {
      return std::tie(text, rank, neighbours, other.bonds) <
             std::tie(other.text, other.rank, other.neighbours, bonds);
    }
  };
  std::map<const ZQAtomBase*, std::size_t> ranks;
  for (const ZQAtomBase* atom : set) ranks[atom] = 0;
  for (bool split = true, first = true; split; first = false) {
    std::map<const ZQAtomBase*, Key> keys;
    for (const ZQAtomBase* atom : set) {
      Key key{first ? from.atoms[atom->GetIdx()] : "", ranks[atom], {}, {}};
      for (auto bond = atom->GetBonds(); bond; ++bond) {
        if (!ranks.contains(bond->GetNbr(atom))) continue;
        key.neighbours.push_back(ranks[bond->GetNbr(atom)]);
        if (!first) key.bonds.push_back(from.bonds[bond->GetIdx()]);
      }
      if (first) key.rank = key.neighbours.size();
      std::ranges::sort(key.neighbours);
      std::ranges::sort(key.bonds);
      keys[atom] = key;
    }
    const auto before = ranks;
    for (auto& ranked : ranks) {
      const Key& key = keys[ranked.first];
      ranked.second = std::ranges::count_if(set, [&](auto* other) { return keys[other] < key; });
    }
    split = first || ranks != before;
  }
  const ZQAtomBase* root = *std::ranges::find_if(set, [&](auto* atom) { return ranks[atom] == 0; });
  const std::function<std::string(const ZQAtomBase*)> write = [&](const ZQAtomBase* atom) {
    ranks.erase(atom);  // visited
    std::string text = from.atoms[atom->GetIdx()];
    for (;;) {
      std::vector<std::tuple<std::size_t, std::string, std::size_t, const ZQAtomBase*>> ways;
      for (auto bond = atom->GetBonds(); bond; ++bond) {
        const auto nbr = ranks.find(bond->GetNbr(atom));
        if (nbr == ranks.end()) continue;
        ways.emplace_back(nbr->second, from.bonds[bond->GetIdx()], ways.size(), nbr->first);
      }
      if (ways.empty()) return text;
      const auto& [rank, bond, place, next] = std::ranges::min(ways);
      const std::string branch = bond + write(next);
      text += ways.size() > 1 ? "(" + branch + ")" : branch;
    }
  };
  return write(root);
}

// The environments of radius 1 to 9 around each atom, up to the first that doesn't grow.
std::set<std::string> NamesOfBalls(const PreparedTexts& from) {
  std::set<std::string> names;
  for (auto centre = from.mol.GetAtoms(); centre; ++centre) {
    Atoms ball{&*centre};
    std::size_t layer = 0;
    for (int radius = 1; radius <= 9 && layer != ball.size(); ++radius) {
      for (const std::size_t end = ball.size(); layer < end; ++layer) {
        for (auto nbr = ball[layer]->GetAtoms(); nbr; ++nbr) {
          if (std::ranges::find(ball, &*nbr) == ball.end()) ball.push_back(&*nbr);
        }
      }
      names.insert(NameOf(from, ball));
    }
  }
  return names;
}

std::string BytesOf(const ZQFingerPrint& fp) {
  return {reinterpret_cast<const char*>(fp.Words()), fp.GetSize() / 8};
}

std::string Stored(std::string text, bool isPath) {
  text.resize((text.size() + 7) / 8 * 8, ' ');
  if (!text.empty()) text.back() = '\0';
  return isPath && !text.empty() ? text + '\0' : text;
}

const struct Kind {
  unsigned int number;
  bool (*makeOfType)(ZQFingerPrint&, const ZQMolBase&, const ZQFPTypeBase*);
  bool (*make)(ZQFingerPrint&, const ZQMolBase&, unsigned, unsigned, unsigned, unsigned);
  unsigned int limit;
  const char* wrongType;
} kinds[] = {
    {9000, ZQMakeUnhashedPathFP, ZQMakeUnhashedPathFP, 255, "Invalid path fingerprint type"},
    {9001, ZQMakeUnhashedCircularFP, ZQMakeUnhashedCircularFP, 9,
     "Invalid circular fingerprint type"},
    {9002, ZQMakeUnhashedTreeFP, ZQMakeUnhashedTreeFP, 19,
     "Invalid unhashed tree fingerprint type"}};

}  // namespace

TEST(Unhashed, BallsAreNamedAsByRecursion) {
  for (const std::string& smiles : SampleSmiles()) {
    for (const unsigned int atype : {ZQFPAtomType::DefaultTreeAtom, ZQFPAtomType::None}) {
      const PreparedTexts from(ReadSmiles(smiles), atype, ZQFPBondType::Order);
      std::string text;
      for (const std::string& name : NamesOfBalls(from)) text += name + " ";
      ZQFingerPrint fp;
      ASSERT_TRUE(ZQMakeUnhashedCircularFP(fp, ReadSmiles(smiles), 1, 9, atype, 1));
      EXPECT_EQ(BytesOf(fp), Stored(text, false)) << smiles;
    }
  }
}

TEST(Unhashed, WorkedTexts) {
  const struct {
    const char* smiles;
    unsigned int kind, distance;
    const char* text;  // before the padding
  } cases[] = {
      {"CCCC", 0, 3, "C-C-C-C "},  // 8 bytes: its blank becomes NUL
      {"CCCCN", 0, 3, "C-C-C-C C-C-C-N N-C-C-C "},
      {"CCC", 1, 2, "C-C-C "},
      {"CC(C)(C)C", 1, 2, "C-C(-C)(-C)-C "},
      {"CC=C", 2, 2, "C=C-C "},  // the bond of higher order ranks first
      {"C1CCO1", 2, 3, "C(-C-O-C) "},
      {"NC1CC1", 2, 3, "C(-C-C-N) "},
      {"[H][H]", 0, 0, ""},
      {"C", 1, 1, "C "},
      {"C", 2, 1, ""},
  };
  for (const auto& [smiles, kind, distance, text] : cases) {
    ZQFingerPrint fp;
    for (unsigned int bit = 0; bit < 999; ++bit) fp.SetBitOn(bit);
    EXPECT_TRUE(kinds[kind].make(fp, ReadSmiles(smiles), distance, distance, 3, 1));
    EXPECT_EQ(BytesOf(fp), Stored(text, kind == 0)) << smiles;
    EXPECT_EQ(fp.GetSize() % 8, 0);
  }
}

TEST(Unhashed, TextsAreFoundInTheirMoleculeWhateverItsOrder) {
  std::vector<std::string> all = SampleSmiles();
  std::erase(all, "C12C3C4C1C5C2C3C45");  // its ties make the text depend on the order
  for (const std::string& smiles : all) {
    ZQMol mol = ReadSmiles(smiles);
    // A coordination bond, which has no symbol.
    if (mol.GetAtomAt(0)->GetAtomicNum() == 26) {
      mol.NewBond(mol.GetAtomAt(0), mol.GetAtomAt(1), 0);
    }
    const PreparedTexts prepared(mol, 0, 0);
    const ZQSubSearchTarget target(prepared.mol);
    for (const Kind& kind : kinds) {
      for (const unsigned int atype : {191, 4239, 1791, 6399}) {
        const unsigned int btype = atype == 191 ? 1 : 5;
        ZQFingerPrint fp;
        ASSERT_TRUE(kind.make(fp, mol, 0, 4, atype, btype));
        for (const ZQMol& other : OtherGuises(mol, 2)) {
          ZQFingerPrint again;
          ASSERT_TRUE(kind.make(again, other, 0, 4, atype, btype));
          EXPECT_EQ(again, fp) << smiles;
        }
        std::istringstream texts(BytesOf(fp).c_str());
        for (std::string text; texts >> text;) {
          EXPECT_TRUE(ZQSubSearch(text).SingleMatch(target)) << text << " in " << smiles;
        }
      }
    }
  }
}

TEST(Unhashed, BadInput) {
  const ZQMol mol = "CCO"_mol;
  ZQMol invalid = mol;
  invalid.SetValid(false);
  CapturedReports reports;
  ZQFingerPrint fp;
  for (const Kind& kind : kinds) {
    for (const ZQFPTypeBase* type : {ZQGetFPType(kind.limit == 9 ? 9000 : 9001), {}}) {
      EXPECT_FALSE(kind.makeOfType(fp, mol, type));
      EXPECT_EQ(reports.Take(), Texts{kind.wrongType});
    }
    EXPECT_TRUE(kind.make(fp, mol, 1, kind.limit, 8191, 255));
    EXPECT_EQ(reports.Take(), Texts{});
    EXPECT_FALSE(kind.make(fp, mol, 1, kind.limit + 1, 8192, 256));
    EXPECT_EQ(reports.Take(), Texts(3, "Assertion"));
    fp.SetFPTypeBase(ZQGetFPType(104));
    EXPECT_FALSE(kind.make(fp, invalid, 0, 1, 3, 1) || fp || fp.CountBits() == 0);
  }
  ZQMol star;
  ZQAtomBase* centre = star.NewAtom(6);
  for (int i = 0; i < 127; ++i) star.NewBond(centre, star.NewAtom(8), 1);
  EXPECT_TRUE(ZQMakeUnhashedCircularFP(fp, star, 2, 2, 1, 1) && fp.GetSize() != 0);
  star.NewBond(centre, star.NewAtom(8), 1);
  EXPECT_FALSE(ZQMakeUnhashedCircularFP(fp, star, 2, 2, 1, 1) || fp);
  EXPECT_EQ(reports.Take(),
            Texts{"ZQMakeUnhashedCircularFP() : an atom with 128 neighbours (at most "
                  "127 can be told apart in a text)"});
  EXPECT_TRUE(ZQMakeUnhashedCircularFP(fp, star, 0, 0, 1, 1));
  EXPECT_TRUE(ZQMakeUnhashedTreeFP(fp, star, 0, 1, 1, 1));
  const Prepared<std::string> from(star, 1, 1);
  Texts ids;
  EXPECT_EQ(ZQCircularIdGenerator(ids, from.mol, from.atoms, from.bonds, 2, 2, 1, 1), 0U);
  EXPECT_EQ(reports.Take(), Texts(129, "128 is greater than the maximum 127\nAssertion"));
}

TEST(FPTypeRecords, RoundTrip) {
  const struct {
    unsigned int kind;
    bool (*write)(zqostream&, const ZQFingerPrint&);
    bool (*read)(zqistream&, unsigned short, ZQFingerPrint&);
    std::string bytes;
  } cases[] = {
      {101, ZQWriteMACCSFingerPrintType, ZQReadMACCSFingerPrintType, ""},
      {102, ZQWritePathFingerPrintType, ZQReadPathFingerPrintType, {"\5\0\3\xbf\0\0\0\1", 8}},
      {103, ZQWriteLingoFingerPrintType, ZQReadLingoFingerPrintType, ""},
      {104,
       ZQWriteCircularFingerPrintType,
       ZQReadCircularFingerPrintType,
       {"\5\0\1\x8f\x10\0\0\1", 8}},
      {105, ZQWriteTreeFingerPrintType, ZQReadTreeFingerPrintType, {"\4\0\1\x3f\0\0\0\1", 8}}};
  for (const auto& [kind, write, read, bytes] : cases) {
    const ZQFPTypeBase* type = ZQGetFPType(kind);
    ZQFingerPrint fp;
    ZQFingerPrint old;
    ZQFingerPrint cut;
    std::istringstream in(bytes + bytes + "1234567");
    std::ostringstream out;
    EXPECT_TRUE(read(in, type->GetVersion(), fp) && write(out, fp) && read(in, 0, old));
    EXPECT_EQ(fp.GetFPTypeBase(), type);
    EXPECT_EQ(old.GetFPTypeBase()->GetVersion(), 0);
    EXPECT_EQ(old.GetFPTypeBase()->GetID(), type->GetID());
    CapturedReports reports;
    // If nothing is written, any fingerprint is accepted.
    EXPECT_EQ(write(out, old), bytes.empty());
    EXPECT_EQ(write(out, cut), bytes.empty());
    EXPECT_FALSE(read(in, 0, old));
    EXPECT_EQ(reports.Take(), Texts(bytes.empty() ? 1 : 3, "Assertion"));
    EXPECT_EQ(out.str(), bytes);
    EXPECT_EQ(read(in, 8192, cut), bytes.empty());
  }
}

}  // namespace ZQKorvex
