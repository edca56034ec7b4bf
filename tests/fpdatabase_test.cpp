#include "korvex/fpdatabase.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <new>
#include <optional>
#include <set>

#include "korvex/fpkinds.h"
#include "korvex/fptypes.h"
#include "korvex/fpversion.h"
#include "korvex/measuresim_lingo.h"
#include "korvex/measuresim_unhashed.h"
#include "tests/fp_helpers.h"
#include "tests/generator_helpers.h"

namespace ZQKorvex {
namespace {

const std::string mismatch = "ZQFPDatabase::GetScores() fingerprint type mismatch!";
const std::string sortedMismatch = "ZQFPDatabase::GetSortedScores() fingerprint type mismatch!";

// The searches of one query against stated scores: of ranges by the database's order and cutoff, or
// by options. Among equal scores any order and any choice at the limit are right.
void ExpectSearches(const ZQFPDatabase& database, const ZQFingerPrint& query,
                    const std::vector<float>& scores,
                    std::optional<ZQFPDatabaseOptions> options = {}) {
  const bool descending = options ? options->GetDescendingOrder() : database.GetDescendingOrder();
  const bool has = options ? options->HasCutoff() : database.HasCutoff();
  const float cutoff = options ? options->GetCutoff() : database.GetCutoff();
  const auto size = static_cast<unsigned int>(scores.size());
  for (const auto& [begin, end] :
       {std::pair(0U, 0U), {0U, size}, {size / 3, size - 1}, {7U, ~0U}, {5U, 3U}, {size, 0U}}) {
    if (options && end != 0) break;
    const unsigned int stop = end == 0 ? size : std::min(end, size);
    Hits kept;
    std::vector<double> ranked;
    for (unsigned int i = begin; i < stop; ++i) {
      const float s = scores[i];
      if (!has || (descending ? s >= cutoff : s <= cutoff)) kept.emplace_back(i, s);
      if (descending ? s > (has ? cutoff : 0) : !has || s < cutoff) ranked.push_back(s);
    }
    EXPECT_EQ(HitsOf(options ? database.GetScores(query, *options)
                             : database.GetScores(query, begin, end)),
              kept);
    std::sort(ranked.begin(), ranked.end());
    if (descending) std::reverse(ranked.begin(), ranked.end());
    for (const unsigned int limit : {0U, 1U, 2U, 60U, size / 2 + 1, size + 5}) {
      if (options) options->SetLimit(limit);
      const Hits hits = HitsOf(options ? database.GetSortedScores(query, *options)
                                       : database.GetSortedScores(query, limit, begin, end));
      const std::size_t count = std::min<std::size_t>(limit == 0 ? size : limit, ranked.size());
      ASSERT_EQ(hits.size(), count) << limit;
      std::set<std::uint64_t> seen;
      for (std::size_t i = 0; i < count; ++i) {
        const auto index = static_cast<unsigned int>(hits[i].first);
        ASSERT_EQ(hits[i].second, ranked[i]) << limit;
        EXPECT_TRUE(index >= begin && index < stop && seen.insert(index).second);
        EXPECT_EQ(hits[i].second, scores[index]);
      }
    }
  }
}

TEST(FPDatabase, RanksAsBruteForceDoes) {
  // Several compactions with ragged ends, and words beyond a multiple of any step.
  for (const auto& [count, numbits] : {std::pair(1003U, 256U), {333U, 1088U}, {40U, 67U}}) {
    std::vector<ZQFingerPrint> fps = RandomFingerPrints(count, numbits);
    for (ZQFingerPrint& fp : fps) fp.SetSize(numbits);  // clears what is beyond the end
    ZQFPDatabase database(PathTypeOf(numbits));
    const ZQFingerPrint& query = fps[3];
    for (unsigned int measure = 0; measure <= 6; ++measure) {
      // Fingerprints come in between the searches; the first search has an empty database.
      const std::size_t present = measure == 0 ? 0 : count - 6 + measure;
      while (database.NumFingerPrints() < present) {
        const unsigned int index = database.NumFingerPrints();
        EXPECT_EQ(database.AddFP(fps[index]), index);
      }
      for (const bool descending : {true, false}) {
        if (measure != 0) database.SetSimFunc(measure, descending);
        std::vector<float> scores;
        for (std::size_t i = 0; i < present; ++i) {
          scores.push_back(
              ZQGetSimilarity(measure, query, fps[i], 0.95F, std::bit_cast<float>(0x3D4CCCD0)));
          if (measure != ZQSimMeasure::Tanimoto) continue;
          unsigned int either = 0;
          unsigned int both = 0;
          for (unsigned int bit = 0; bit < numbits; ++bit) {
            either += query.IsBitOn(bit) || fps[i].IsBitOn(bit);
            both += query.IsBitOn(bit) && fps[i].IsBitOn(bit);
          }
          ASSERT_EQ(scores.back(), static_cast<float>(both) / static_cast<float>(either));
        }
        database.ClearCutoff();
        ExpectSearches(database, query, scores);
        for (const float cutoff : {0.0F, 0.4F, present == 0 ? 1.0F : scores[present / 2]}) {
          database.SetCutoff(cutoff);
          ExpectSearches(database, query, scores);
        }
      }
    }
    auto stored = database.GetFingerPrints();
    for (const ZQFingerPrint& fp : fps) {
      ASSERT_TRUE(stored && *stored == fp);
      ++stored;
    }
    EXPECT_FALSE(stored);
  }
}

TEST(FPDatabase, OptionsStandForThemselves) {
  const auto fps = RandomFingerPrints(700, 256);
  ZQFPDatabase database(PathTypeOf(256));
  for (const ZQFingerPrint& fp : fps) database.AddFP(fp);
  database.SetSimFunc(ZQSimMeasure::Manhattan, false);
  database.SetCutoff(0.0F);
  std::size_t ofOtherBeta = 0;
  for (unsigned int measure = 1; measure <= 6; ++measure) {
    std::vector<float> scores;
    for (const ZQFingerPrint& fp : fps) {
      scores.push_back(ZQGetSimilarity(measure, fps[0], fp, 0.95F, 0.05F));
      ofOtherBeta += ZQTversky(fps[0], fp, 0.95F, 1 - 0.95F) != scores.back();
    }
    for (const bool descending : {true, false}) {
      ZQFPDatabaseOptions options(9, measure);  // Tversky with a beta of 0.05
      options.SetDescendingOrder(descending);
      ExpectSearches(database, fps[0], scores, options);
      options.SetCutoff(scores[5]);
      ExpectSearches(database, fps[0], scores, options);
    }
  }
  EXPECT_GT(ofOtherBeta, 0U);  // the two values of beta do differ
  EXPECT_TRUE(database.HasCutoff() && !database.GetDescendingOrder());
  database.ClearCutoff();
  database.SetCutoff(0.25F);
  database.ClearCutoff();
  EXPECT_EQ(std::pair(database.HasCutoff(), database.GetCutoff()), std::pair(false, 0.25F));
}

TEST(FPDatabase, EveryKindHasItsDefaultType) {
  CapturedReports reports;
  ZQMol invalid;
  EXPECT_FALSE(ZQSmilesToMol(invalid, "C1CC") || invalid.IsValid());
  const auto version = [](unsigned int kind) { return ZQGetFingerPrintVersion(kind); };
  for (const auto& [kind, type] : std::vector<std::pair<unsigned int, const ZQFPTypeBase*>>{
           {101, ZQGetMACCS166FPType(version(101))},
           {102, ZQGetPathFPType(4096, 0, 5, 191, 3)},
           {103, ZQGetLingoFPType(version(103))},
           {104, ZQGetCircularFPType(4096, 0, 5, 4239, 1)},
           {105, ZQGetTreeFPType(4096, 0, 4, 63, 1)},
           {9000, ZQGetUnhashedPathFPType(version(9000), 0, 5, 191, 3)},
           {9001, ZQGetUnhashedCircularFPType(version(9001), 0, 5, 4239, 1)},
           {9002, ZQGetUnhashedTreeFPType(version(9002), 0, 4, 63, 1)}}) {
    const ZQFPDatabase byNumber(kind);
    EXPECT_EQ(byNumber.GetFPTypeBase(), type) << kind;
    ZQFPDatabase database(type);
    EXPECT_EQ(database.GetFPTypeBase(), type);
    unsigned int added = 0;
    for (const std::string& smiles : SampleSmiles()) {
      EXPECT_EQ(database.AddFP(ReadSmiles(smiles)), added++);
    }
    reports.Take();
    EXPECT_EQ(database.AddFP(invalid), ZQFPDatabase::noIndex);
    EXPECT_EQ(database.NumFingerPrints(), SampleSmiles().size());
    EXPECT_FALSE(database.GetScores(invalid, 0, 0) || database.GetSortedScores(invalid, 0, 0, 0) ||
                 database.GetScores(invalid, ZQFPDatabaseOptions()));
    EXPECT_EQ(reports.Take(), Texts());
    const ZQMol query = ReadSmiles(SampleSmiles()[2]);
    const Hits hits = HitsOf(database.GetSortedScores(query, 3, 0, 0));
    ASSERT_EQ(hits.size(), 3U) << kind;
    EXPECT_EQ(hits[0], std::pair(std::uint64_t{2}, 1.0)) << kind;
    EXPECT_EQ(HitsOf(database.GetScores(query, 2, 3)), Hits({{2, 1.0}}));
    const bool isUnhashed = kind >= 9000;
    EXPECT_EQ(HitsOf(database.GetSortedScores(query, ZQFPDatabaseOptions(3, 1))),
              isUnhashed ? Hits() : hits);
    EXPECT_EQ(reports.Take(),
              isUnhashed ? Texts{"ZQFPDatabase::GetSortedScores() has not been implemented yet!"}
                         : Texts());
  }
}

TEST(FPDatabase, RefusesWhatIsOfAnotherType) {
  CapturedReports reports;
  for (unsigned int none : {1U, 100U, 106U, 9003U}) {
    ZQFPDatabase database(none);
    EXPECT_EQ(reports.Take(), Texts{"ZQFPDatabase::ZQFPDatabase() unknown fingerprint type"});
    EXPECT_FALSE(database.IsValid());
    EXPECT_EQ(database.AddFP("CCO"_mol), ZQFPDatabase::noIndex);
    EXPECT_FALSE(database.GetSortedScores("CCO"_mol, 1, 0, 0) || database.NumFingerPrints() != 0);
    EXPECT_EQ(reports.Take(), Texts(3, "Assertion"));
  }
  const ZQFPDatabase ofNull(static_cast<const ZQFPTypeBase*>(nullptr));
  EXPECT_EQ(reports.Take(), Texts{"Assertion"});
  // No fingerprint can be made of this type; the searches have no message of their own.
  ZQFPDatabase ofWide(ZQGetCircularFPType(4096, 0, 30, 1, 1));
  EXPECT_EQ(ofWide.AddFP("CCO"_mol), ZQFPDatabase::noIndex);
  const Texts made = reports.Take();
  EXPECT_EQ(made.size(), 2U);
  EXPECT_FALSE(ofWide.GetScores("CCO"_mol, 0, 0));
  EXPECT_EQ(reports.Take(), made);

  for (const ZQFPKind& kind : ZQGetFPKinds()) {
    ZQFPDatabase database(kind.number);
    const bool isLingo = kind.number == ZQFPType::Lingo;
    ZQFingerPrint foreign;  // without a type, then of an equal type that is another object
    const ZQFPPathType copy(kind.version, database.GetFPTypeBase()->GetID());
    for (const ZQFPTypeBase* type :
         {static_cast<const ZQFPTypeBase*>(nullptr), static_cast<const ZQFPTypeBase*>(&copy)}) {
      foreign.SetFPTypeBase(type);
      EXPECT_EQ(database.AddFP(foreign), ZQFPDatabase::noIndex);
      EXPECT_EQ(reports.Take(), Texts());
      EXPECT_FALSE(database.GetScores(foreign, 0, 0) || database.GetSortedScores(foreign, 0, 0, 0));
      EXPECT_EQ(reports.Take(),
                (Texts{mismatch, isLingo ? "ZQFPDatabase::GetSortedScores()fingerprint type "
                                           "mismatch!"
                                         : sortedMismatch}));
      const ZQFPDatabaseOptions options;
      EXPECT_FALSE(database.GetScores(foreign, options) ||
                   database.GetSortedScores(foreign, options));
      EXPECT_EQ(reports.Take(),
                kind.IsUnhashed()
                    ? (Texts{"ZQFPDatabase::GetScores() has not been implemented yet!",
                             "ZQFPDatabase::GetSortedScores() has not been implemented yet!"})
                    : (Texts{mismatch, sortedMismatch}));
    }
  }
}

// The ratio of the numbers of bits, and an exception for a fingerprint without bits.
class Ratio : public ZQSimFuncBase {
 public:
  float operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const override {
    if (b.CountBits() == 0) throw std::bad_alloc();
    return static_cast<float>(b.CountBits()) / static_cast<float>(a.CountBits());
  }
  Ratio* CreateCopy() const override { return new Ratio; }
  std::string GetSimTypeString() const override { return "Ratio"; }
};

TEST(FPDatabase, AnyMeasureOfTheCaller) {
  ZQFPDatabase database(ZQFPType::Path);
  const ZQMol ring = "c1ccccc1"_mol;
  const ZQMol rings = "c1ccccc1-c1ccccc1"_mol;
  database.AddFP(rings);
  database.SetSimFunc(Ratio(), true);
  EXPECT_GT(database.GetScores(ring, 0, 0)->GetScore(), 1.0);
  EXPECT_LT(database.GetScores(ring, ZQFPDatabaseOptions())->GetScore(), 1.0);  // Tanimoto
  database.AddFP(ring);
  EXPECT_LT(database.GetScores(rings, 1, 2)->GetScore(), 1.0);
  ZQFingerPrint empty;
  empty.SetSize(4096);
  empty.SetFPTypeBase(database.GetFPTypeBase());
  database.AddFP(empty);
  CapturedReports reports;
  EXPECT_FALSE(database.GetScores(ring, 0, 0) || database.GetSortedScores(ring, 0, 0, 0));
  EXPECT_EQ(reports.Take(), (Texts{"ZQFPDatabase::GetScores() : std::bad_alloc!",
                                   "ZQFPDatabase::GetSortedScores() : std::bad_alloc!"}));
  for (const unsigned int none : {0U, 7U}) {
    database.SetSimFunc(none, false);
    EXPECT_EQ(reports.Take(), Texts{"ZQFPDatabase::SetSimFunc() unknown similarity measure"});
    EXPECT_FALSE(database.GetDescendingOrder());
    EXPECT_EQ(database.GetScores(empty, 2, 3)->GetScore(), 1.0);
  }
}

TEST(FPDatabase, LingoHasFixedWeightsAndOwnMeasures) {
  const auto text = [](const std::string& chars) {
    return FingerPrintOfText(chars + std::string(1, '\0'), ZQFPType::Lingo);
  };
  const Texts texts{"c0ccccc0O", "c0ccccc0", "CCCC", "CCC", ""};
  ZQFPDatabase database(ZQFPType::Lingo);
  for (const std::string& each : texts) database.AddFP(text(each));
  const ZQLingoSim query("c0ccccc0OC", 1);
  const auto expectMeasure = [&](unsigned int measure) {
    std::vector<float> scores;
    for (const std::string& each : texts) {
      scores.push_back(
          ZQGetSimilarity(measure, query, text(each), 0.95F, std::bit_cast<float>(0x3D4CCCD0)));
    }
    ExpectSearches(database, text("c0ccccc0OC"), scores);
    ZQFPDatabaseOptions options(2, ZQSimMeasure::Dice);  // the measure isn't used
    options.SetDescendingOrder(!database.GetDescendingOrder());
    ExpectSearches(database, text("c0ccccc0OC"), scores, options);
  };
  CapturedReports reports;
  for (unsigned int measure = 1; measure <= 6; ++measure) {
    database.SetSimFunc(measure, measure % 2 == 0);
    expectMeasure(measure);
  }
  struct Derived : ZQTverskySim {  // counts as its base
    Derived() : ZQTverskySim(0.5F, 0.5F) {}
  };
  database.SetSimFunc(Derived(), true);
  expectMeasure(ZQSimMeasure::Tversky);
  database.SetSimFunc(ZQTanimotoSim(), true);
  expectMeasure(ZQSimMeasure::Tanimoto);
  EXPECT_EQ(reports.Take(), Texts());
  database.SetSimFunc(ZQDiceSim(), true);
  database.SetSimFunc(ZQTanimotoLingoSim(), true);
  EXPECT_EQ(reports.Take(), Texts(2,
                                  "ZQFPDatabase::SetSimFunc() user defined similarity measure "
                                  "not allowed with Lingo database"));
  database.SetSimFunc(9, true);
  EXPECT_EQ(reports.Take(), Texts{"ZQFPDatabase::SetSimFunc() unknown similarity measure"});
  expectMeasure(ZQSimMeasure::Tanimoto);
  EXPECT_FALSE(database.GetScores(text("CCC"), 0, 0) ||
               database.GetSortedScores(text(""), 0, 0, 0));
  EXPECT_EQ(reports.Take(),
            (Texts{"ZQFPDatabase::GetScores() cannot initialize lingo similarity!",
                   "ZQFPDatabase::GetSortedScores() cannot initialize lingo similarity!"}));
  // All eight bytes are text: there is no NUL.
  EXPECT_EQ(HitsOf(database.GetScores(FingerPrintOfText("c0ccccc0", ZQFPType::Lingo), 1, 2)),
            Hits({{1, 1.0}}));
}

TEST(FPDatabase, UnhashedComparesSetsOfTokens) {
  const auto text = [](const std::string& chars) {
    return FingerPrintOfText(chars + std::string(3, '\0'), ZQFPType::UnhashedPath);
  };
  ZQFPDatabase database(ZQFPType::UnhashedPath);
  for (const char* each : {"a b\tc", "a a a b", "  \n", "x y", "c"}) database.AddFP(text(each));
  const auto scores = [&](const std::string& query) {
    std::vector<double> values;
    for (const auto& hit : HitsOf(database.GetScores(text(query), 0, 0))) {
      values.push_back(hit.second);
    }
    return values;
  };
  const auto third = double{1 / 3.0F};
  const auto half = double{0.5F};
  EXPECT_EQ(scores("b a b new"), (std::vector<double>{half, double{2 / 3.0F}, 0, 0, 0}));
  // The query's own tokens are known now, and those of a later fingerprint.
  database.AddFP(text("new newer"));
  EXPECT_EQ(scores("new b"), (std::vector<double>{0.25, third, 0, 0, 0, third}));
  EXPECT_EQ(scores("newer"), (std::vector<double>{0, 0, 0, 0, 0, half}));
  EXPECT_EQ(HitsOf(database.GetSortedScores(text("c"), 2, 0, 0)), (Hits{{4, 1.0}, {0, third}}));

  // Two without tokens score NaN, which only a search without a cutoff or an order returns.
  EXPECT_TRUE(std::isnan(scores("")[2]));
  for (const bool descending : {true, false}) {
    database.SetDescendingOrder(descending);
    database.ClearCutoff();
    for (const auto& hit : HitsOf(database.GetSortedScores(text(""), 0, 0, 0))) {
      EXPECT_NE(hit.first, 2U);
    }
    database.SetCutoff(descending ? -1.0F : 2.0F);
    EXPECT_EQ(scores("").size(), 5U);
  }
  database.ClearCutoff();
  CapturedReports reports;
  database.SetSimFunc(ZQTanimotoSim(), true);
  database.SetSimFunc(ZQSimMeasure::Tanimoto, true);
  EXPECT_EQ(reports.Take(), Texts());
  database.SetSimFunc(ZQSimMeasure::Cosine, false);
  EXPECT_EQ(reports.Take(), Texts{"ZQFPDatabase::SetSimFunc() unknown similarity measure"});
  EXPECT_FALSE(database.GetDescendingOrder());
  database.SetSimFunc(ZQTanimotoUnhashedSim(), true);
  EXPECT_EQ(reports.Take(), Texts{"ZQFPDatabase::SetSimFunc() user defined similarity measure not "
                                  "allowed with unhashed database"});
  EXPECT_EQ(scores("newer")[5], half);
}

}  // namespace
}  // namespace ZQKorvex
