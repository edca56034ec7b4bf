// Stored fingerprints as the program writes, ranks and compares them.

#include "contract/bostrel/strings.h"
#include "korvex/korvex.h"
#include "tests/mol_helpers.h"
#include "tests/program_helpers.h"

namespace ZQKorvex {
namespace {

class StoredProgramTest : public ProgramFixture {
 protected:
  RunResult Run(const std::string& words) const { return Korvex(ZQStringTokenize(words, ' ')); }
};

TEST_F(StoredProgramTest, AreRankedLikeTheMoleculesTheyAreMadeOf) {
  // Several batches with a ragged end; every 50th record can't be read.
  Texts small;
  std::ranges::copy_if(SampleSmiles(), std::back_inserter(small),
                       [](const std::string& smiles) { return smiles.size() < 25; });
  std::string file;
  std::string good;
  for (unsigned int i = 0; i < 4200; ++i) {
    const std::string line = small[i % small.size()] + " title " + std::to_string(i) + "\n";
    file += i % 50 == 7 ? "C1CC bad\n" : line;
    if (i % 50 != 7) good += line;
  }
  WriteFile(folder / "all.smi", file);
  WriteFile(folder / "good.smi", good);
  WriteFile(folder / "few.smi", SampleSmiles()[3] + " a\n" + SampleSmiles()[8] + " b\n");
  const std::string number = std::to_string(4200 - 84);
  for (const ZQFPKind& kind : ZQGetFPKinds()) {
    const std::string type = std::string(" -fptype ") + kind.name;
    if (kind.IsUnhashed()) {
      ExpectFailure({"fingerprint", "few.smi", "-zqb", "q.zqb", "-fptype", kind.name}, 2,
                    "can't be stored");
      continue;
    }
    EXPECT_EQ(Output(ZQStringTokenize("create all.smi all.zqb -threads 3" + type, ' ')),
              "all.zqb: " + number + " fingerprints\n");
    EXPECT_EQ(Output(ZQStringTokenize("fingerprint good.smi -zqb one.zqb" + type, ' ')),
              "one.zqb: " + number + " fingerprints\n");
    EXPECT_TRUE(ReadFile(folder / "all.zqb") == ReadFile(folder / "one.zqb")) << kind.name;
    Output(ZQStringTokenize("create few.smi few.zqb" + type, ' '));
    // Titles, scores and order are those of the molecule file; there is no SMILES.
    std::string expected;
    for (const std::string& line :
         Lines(Output(ZQStringTokenize("search good.smi few.smi" + type, ' ')))) {
      expected += line.substr(0, line.rfind('\t') + 1) + "\n";
    }
    EXPECT_NE(expected.find("\ttitle "), std::string::npos);
    for (const char* words : {"search all.zqb few.smi", "search all.zqb few.zqb"}) {
      EXPECT_EQ(Output(ZQStringTokenize(words, ' ')), expected) << words << type;
    }
    EXPECT_EQ(Output({"search", "good.smi", "few.zqb"}),
              Output(ZQStringTokenize("search good.smi few.smi" + type, ' ')));
    EXPECT_EQ(Output({"compare", "few.zqb", SampleSmiles()[0]}),
              Output(ZQStringTokenize("compare few.smi " + SampleSmiles()[0] + type, ' ')));
    EXPECT_EQ(Lines(Output({"compare", "few.zqb", "few.zqb"}))[0], "Tanimoto\t1.000000");
  }
  Output({"create", "good.smi", "good.fpbin"});
  Output({"create", "few.smi", "path.zqb"});
  EXPECT_EQ(Output({"search", "good.fpbin", "path.zqb"}),
            Output({"search", "good.fpbin", "few.smi"}));
  ExpectFailure({"search", "good.fpbin", "few.zqb"}, 1, "the queries are of type Lingo");
  ExpectFailure({"search", "path.zqb", "few.zqb"}, 1, "path.zqb is of type Path");
  ExpectFailure({"compare", "path.zqb", "few.zqb"}, 1, "few.zqb is of type Lingo");
}

TEST_F(StoredProgramTest, DamagedFilesAndBadUsage) {
  WriteFile(folder / "two.smi", "CCO one\nCCCO two\n");
  Output({"create", "two.smi", "two.zqb", "-fptype", "MACCS166"});
  Output({"create", "two.smi", "other.zqb", "-numbits", "100"});
  const std::string two = ReadFile(folder / "two.zqb");
  const std::string other = ReadFile(folder / "other.zqb");
  // Another type in between, a record of an unknown tag, a damaged one, and a cut at the end.
  const std::string unknown = std::string("\3\0\0\0abc\1\0\0\0\0\0\0\0x", 16);
  std::string damaged = two;
  damaged[4 + 7 + 8 + 3 + 4 + 13 + 8] = 7;  // the kind of the first fingerprint
  WriteFile(folder / "mixed.zqb", two + other + unknown + damaged + two.substr(0, two.size() - 1));
  const RunResult run = Run("search mixed.zqb CCO");
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(Lines(run.out).size(), 4U) << run.out;
  for (const char* message :
       {"fingerprint 3 of mixed.zqb is left out: its type isn't that of the first",
        "fingerprint 4 of mixed.zqb is left out", "unknown fingerprint type was read",
        "the record at byte 362", "the record at byte 605"}) {
    EXPECT_NE(run.err.find(message), std::string::npos) << message << "\n" << run.err;
  }
  // Parameters out of range, and a size that isn't the type's. Those that are left out count.
  const std::size_t id = 4 + 7 + 8 + 3 + 4 + 13 + 8 + 4 + 2;
  std::string illegal = other;
  illegal.replace(id, 8, 8, '\0');
  std::string resized = other;
  --resized[id + 8];
  for (const auto& [bad, fault] : {std::pair(illegal, "size 0 is outside 16 to 65535"),
                                   std::pair(resized, "99 bits, but its type has 100")}) {
    WriteFile(folder / "bad.zqb", bad + other);
    const RunResult hits = Run("search bad.zqb CCO -limit 1");
    EXPECT_EQ(hits.out, "1\t1\t1.000000\t2\tone\t\n");
    EXPECT_EQ(hits.err,
              std::string("korvex: fingerprint 1 of bad.zqb is left out: ") + fault + "\n");
    EXPECT_EQ(Run("search two.smi bad.zqb -limit 1").out,
              "2\t1\t1.000000\t1\ttwo\tCCCO\n3\t1\t1.000000\t0\tone\tCCO\n"
              "4\t1\t1.000000\t1\ttwo\tCCCO\n");
    EXPECT_EQ(Lines(Run("compare bad.zqb CCCO").out)[0], "Tanimoto\t1.000000");
  }
  std::filesystem::create_directory(folder / "folder.zqb");
  WriteFile(folder / "empty.zqb", "");
  WriteFile(folder / "text.zqb", "no records at all");
  for (const auto& [words, exitCode, message] :
       std::vector<std::tuple<std::string, int, std::string>>{
           {"search empty.zqb C", 1, "empty.zqb holds no fingerprints"},
           {"search text.zqb C", 1, "the record at byte 0 is damaged"},
           {"search none.zqb C", 1, "cannot read none.zqb: No such file"},
           {"search two.smi none.zqb", 1, "cannot read none.zqb"},
           {"compare two.smi empty.zqb", 1, "empty.zqb holds no fingerprints"},
           {"search two.zqb C -numbits 512", 2, "no use with stored fingerprints"},
           {"search two.zqb C -molecules two.smi", 2, "no use with stored fingerprints"},
           {"search two.zqb C -html a.html", 2, "no use with stored fingerprints"},
           {"search two.smi two.zqb -html a.html", 2, "no use with stored queries"},
           {"search two.smi two.zqb -fptype Tree", 2, "no use with stored fingerprints"},
           {"compare C two.zqb -fptype Tree", 2, "no use with stored fingerprints"},
           {"create two.smi a.zqb -fptype UHPath", 2, "one of"},
           {"create two.smi a.zqb -type UHPath,ver=2.0.0,bonds=0-5,atype=AtmNum,btype=Order", 2,
            "can't be stored"},
           {"create two.smi a.fpbin -fptype Lingo", 2, "can't hold these"},
           {"fingerprint two.smi -zqb a.bin", 2, "ends in .zqb"},
           {"fingerprint two.smi -zqb folder.zqb", 1, "folder.zqb can't be written"},
           {"create two.smi none/a.zqb", 1, "cannot write none/a.zqb"}}) {
    ExpectFailure(ZQStringTokenize(words, ' '), exitCode, message);
  }
}

}  // namespace
}  // namespace ZQKorvex
