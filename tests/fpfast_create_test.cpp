#include "korvex/fpfast_create.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>

#include "korvex/fpfast_database.h"
#include "korvex/path.h"
#include "tests/mol_helpers.h"
#include "tests/program_helpers.h"

namespace ZQKorvex {

namespace {

class CreateTest : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return folder_ / name; }
  // A file of `count` lines; those in `bad` have a text that isn't a SMILES.
  std::string Molecules(const std::string& name, unsigned int count,
                        const std::vector<unsigned int>& bad = {}) const {
    std::ofstream file(Path(name));
    for (unsigned int i = 0; i < count; ++i) {
      const bool broken = std::find(bad.begin(), bad.end(), i) != bad.end();
      file << (broken ? "C1CC(" : Smiles(i)) << " mol" << i << "\n";
    }
    return Path(name);
  }
  static const std::string& Smiles(unsigned int i) {
    return SampleSmiles()[i % SampleSmiles().size()];
  }

  WorkFolder folder_;
};

bool Create(const std::string& out, const std::string& in, const ZQFPTypeBase* type,
            unsigned int threads) {
  ZQCreateFastFPDatabaseOptions options(type);
  options.SetNumProcessors(threads);
  return ZQCreateFastFPDatabaseFile(out, in, options);
}

const ZQFPTypeBase* SmallType() { return ZQGetPathFPType(256, 0, 4, 191, 3); }

}  // namespace

TEST_F(CreateTest, EveryRecordStandsAtItsIndexForAnyNumberOfThreads) {
  constexpr unsigned int count = 333;
  const std::vector<unsigned int> bad{0, 17, 332};
  const std::string in = Molecules("mols.smi", count, bad);
  CapturedReports reports;
  ASSERT_TRUE(Create(Path("1.fpbin"), in, SmallType(), 1));
  for (const unsigned int i : bad) {
    const std::string text =
        "ZQCreateFastFPDatabaseFile() cannot access molecule with index " + std::to_string(i);
    EXPECT_TRUE(std::any_of(reports.Reports().begin(), reports.Reports().end(),
                            [&](const auto& report) { return report.text == text; }));
  }
  const std::string bytes = ReadFile(Path("1.fpbin"));
  ASSERT_EQ(bytes.size(), 800 + count * 48U);
  for (unsigned int i = 0; i < count; ++i) {
    std::uint64_t record[6];
    std::memcpy(record, bytes.data() + 800 + i * sizeof record, sizeof record);
    EXPECT_EQ(record[0], i);
    ZQFingerPrint fp;
    fp.SetSize(256);
    if (std::find(bad.begin(), bad.end(), i) == bad.end()) {
      const ZQMol mol = ReadSmiles(Smiles(i));
      ASSERT_TRUE(ZQMakeFP(fp, mol, SmallType()));
    }
    EXPECT_EQ(record[1], fp.CountBits());
    EXPECT_TRUE(std::equal(record + 2, record + 6, fp.Words())) << i;
  }
  for (const unsigned int threads : {2U, 4U}) {
    ASSERT_TRUE(Create(Path("n.fpbin"), in, SmallType(), threads));
    EXPECT_EQ(ReadFile(Path("n.fpbin")), bytes) << threads;
  }
  // A second run starts over, even if the file was longer.
  ASSERT_TRUE(ZQCreateFastFPDatabaseFile(Path("1.fpbin"), Molecules("two.smi", 2), SmallType()));
  EXPECT_EQ(ReadFile(Path("1.fpbin")).size(), 896U);
}

TEST_F(CreateTest, BadInputIsRefusedBeforeAFileComesIntoBeing) {
  const std::string mols = Molecules("mols.smi", 3);
  const std::string in = "ZQCreateFastFPDatabaseFile() ";
  const std::string name = in + "fingerprint database file should have '.fpbin' file extension!";
  const std::string kinds = in + "invalid fingerprint type (only path, circular or tree allowed)!";
  const struct {
    std::string out, mols;
    const ZQFPTypeBase* type;
    std::string report;  // the last
  } cases[] = {
      {"out.bin", mols, SmallType(), name},
      {"out", mols, SmallType(), name},
      {"out.FPBIN", mols, SmallType(), name},
      {"out.fpbin", Path("none.smi"), SmallType(),
       in + "cannot open molecule file " + Path("none.smi") + "!"},
      {"out.fpbin", Molecules("empty.smi", 0), SmallType(), in + "empty molecule database!"},
      {"out.fpbin", mols, nullptr, in + "invalid fingerprint pointer!"},
      {"out.fpbin", mols, ZQGetFPType(101U), kinds},
      {"out.fpbin", mols, ZQGetFPType(103U), kinds},
      {"out.fpbin", mols, ZQGetFPType(9000U), in + "invalid fingerprint type!"},
      {"out.fpbin", mols, ZQGetPathFPType(4000, 0, 5, 191, 3),
       in + "invalid fingerprint size (has to be multiple of 256)!"},
      {"no/such/folder.fpbin", mols, SmallType(),
       in + ": unable to open fingerprint database file: " + Path("no/such/folder.fpbin")}};
  CapturedReports reports;
  for (const auto& c : cases) {
    EXPECT_FALSE(Create(Path(c.out), c.mols, c.type, 1)) << c.report;
    const Texts texts = reports.Take();
    ASSERT_FALSE(texts.empty()) << c.report;
    EXPECT_EQ(texts.back(), c.report);
    EXPECT_FALSE(std::filesystem::exists(Path(c.out)));
  }
}

TEST_F(CreateTest, OptionsHoldTheirOwnTracer) {
  ZQCreateFastFPDatabaseOptions options(SmallType());
  const ZQDots tracer(11, "molecules");
  options.SetTracer(tracer);
  testing::internal::CaptureStderr();
  EXPECT_TRUE(ZQCreateFastFPDatabaseFile(Path("out.fpbin"), Molecules("mols.smi", 11), options));
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_NE(said.find("11 molecules"), std::string::npos) << said;
  EXPECT_EQ(tracer.GetCount(), 0U);
}

TEST_F(CreateTest, CompatibilityIsJudgedByNumberAndFirstRecord) {
  CapturedReports reports;
  ASSERT_TRUE(Create(Path("a.fpbin"), Molecules("a.smi", 7), SmallType(), 1));
  ASSERT_TRUE(Create(Path("bad.fpbin"), Molecules("bad.smi", 7, {0}), SmallType(), 1));
  reports.Take();
  const std::string in = "ZQAreCompatibleDatabases() ";
  const struct {
    std::string mols, database, report;
  } cases[] = {{Path("a.smi"), "a.fpbin", ""},
               {Path("bad.smi"), "bad.fpbin", ""},
               {Path("a.smi"), "bad.fpbin", in + "fingerprint mismatch!"},
               {Path("bad.smi"), "a.fpbin", in + "cannot access molecule data!"},
               {Molecules("more.smi", 8), "a.fpbin", in + "different number of entries!"},
               {Molecules("empty.smi", 0), "a.fpbin", in + "empty molecule database!"},
               {Path("a.smi"), "none.fpbin", in + "invalid fingerprint database!"}};
  for (const auto& c : cases) {
    ZQMolDatabase molecules;
    molecules.Open(c.mols);
    const ZQFastFPDatabase database(Path(c.database));
    reports.Take();
    EXPECT_EQ(ZQAreCompatibleDatabases(molecules, database), c.report.empty()) << c.report;
    const Texts texts = reports.Take();
    if (!c.report.empty()) {
      ASSERT_FALSE(texts.empty()) << c.report;
      EXPECT_EQ(texts.back(), c.report);
    }
  }
  // The same molecules under another type, which is substituted after the header.
  ASSERT_TRUE(Create(Path("b.fpbin"), Path("a.smi"), ZQGetPathFPType(256, 0, 4, 1, 1), 1));
  const std::string bytes =
      ReadFile(Path("a.fpbin")).substr(0, 800) + ReadFile(Path("b.fpbin")).substr(800);
  WriteFile(Path("b.fpbin"), bytes);
  ZQMolDatabase molecules;
  ASSERT_TRUE(molecules.Open(Path("a.smi")));
  reports.Take();
  EXPECT_FALSE(ZQAreCompatibleDatabases(molecules, ZQFastFPDatabase(Path("b.fpbin"))));
  EXPECT_EQ(reports.Take(), Texts{in + "fingerprint mismatch!"});
}

}  // namespace ZQKorvex
