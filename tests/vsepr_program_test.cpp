// VSEPR fingerprints, types and rankings, as the program prints them.

#include "contract/bostrel/strings.h"
#include "korvex/korvex.h"
#include "tests/mol_helpers.h"
#include "tests/molfile_helpers.h"
#include "tests/program_helpers.h"

namespace ZQKorvex {
namespace {

using Texts = std::vector<std::string>;

class VseprProgramTest : public ProgramFixture {
 protected:
  // The output of `korvex vsepr` for a file of this content.
  std::string Vsepr(const std::string& content, const std::string& options,
                    const std::string& name = "some.smi") const {
    WriteFile(folder / name, content);
    return Output(ZQStringTokenize("vsepr " + name + " " + options, ' '));
  }
};

// A line of the output; keys lack their leading zeros.
std::string Line(const std::string& title, const std::string& volume, const std::string& pairs) {
  std::string line = title + "\t" + volume + "\t";
  for (const std::string& pair : ZQStringTokenize(pairs, ' ')) {
    line += (line.back() == '\t' ? "" : " ") + std::string(16 - pair.find(':'), '0') + pair;
  }
  return line + "\n";
}

// Ethane is CH3:PrimarySp3 (6) twice, benzene CH1:SecondaryAro (150, 0x96) six times. A path of n
// atoms weighs exp((9 - n) / 2): 54.598150033144236, 33.11545195869231 and so on.
TEST_F(VseprProgramTest, Fingerprints) {
  const std::string ethane =
      Line("e", "175.4272039836731", "06:109.19630006628847 0606:66.23090391738462");
  const std::string right = Line("", "5", "06:1 09:1 12:1 3e:1 a5:1");
  for (const Texts& row :
       {Texts{"CC e\n[H]C([H])([H])C e\nC1CC a\x01z\n[H][H] h2\n", "",
              ethane + ethane + "a z\t\t\nh2\t0\t\n"},
        {"c1ccccc1 b", "",
         Line("b", "1112.1906943098668",
              "96:327.5889001988654 9696:397.38542350430765 969696:241.02644307825207 "
              "96969696:146.18992752844167")},
        {"c1ccccc1", "-weightbylength false -forcepathsout false -minpathlength 4",
         Line("", "24", "9696969696:12 969696969696:12")},
        {"N[C@@H](C)CO\n[H][C@](N)(C)CO\nN[C@H](C)CO", "-weightbylength false -maxpathlength 1",
         right + right + Line("", "5", "06:1 09:1 12:1 3e:1 a6:1")},
        {"N[C@@H](C)CO", "-weightbylength false -maxpathlength 1 -stereoaware false",
         Line("", "5", "06:1 09:1 0c:1 12:1 3e:1")}}) {
    EXPECT_EQ(Vsepr(row[0], row[1]), row[2]);
  }
  const std::string ofEight = Vsepr("CCCCCCCCCC\nCCCCCCCCCO\n", "");
  const RunResult longer = Korvex({"vsepr", "some.smi", "-maxpathlength", "20"});
  EXPECT_EQ(longer.out, ofEight);
  EXPECT_EQ(Lines(longer.err).size(), 1U) << longer.err;

  // An index is that of the record's atom; equal neighbours make no configuration.
  EXPECT_EQ(Vsepr("[H][C@](F)(F)C a\x01z\nC(C b\n[Na+] c\n", "-types"),
            "a z\t1\tC\t12\tCH1:TertiarySp3\t12\tCH1:TertiarySp3\n"
            "a z\t2\tF\t143\tF:PrimarySp3\t143\tF:PrimarySp3\n"
            "a z\t3\tF\t143\tF:PrimarySp3\t143\tF:PrimarySp3\n"
            "a z\t4\tC\t6\tCH3:PrimarySp3\t6\tCH3:PrimarySp3\n"
            "b\t\t\t\t\t\t\nc\t0\tNa\t165\tINVALID\t201\tINVALID\n");
}

// Without stereo, as molfiles without coordinates have none.
TEST_F(VseprProgramTest, TheSameFromSmilesAndSdfWithHydrogens) {
  std::string smi;
  std::string sdf;
  for (const std::string& smiles : SampleSmiles()) {
    smi += smiles + " title\n";
    sdf += ToMolfile(WithHydrogens(ReadSmiles(smiles)), true) + "$$$$\n";
  }
  EXPECT_EQ(Vsepr(smi, "-stereoaware false"), Vsepr(sdf, "-stereoaware false", "some.sdf"));
}

// Lists that overflow with ties, in three passes. Each record's best hits are its own molecule's.
TEST_F(VseprProgramTest, TiesAreListedInOrderForAnyNumberOfThreads) {
  const Texts kinds{"OCC", "C1CC", "CCN", "CC(C)O", "CCCO"};
  std::string file;
  std::string expected;
  for (std::size_t i = 0; i < 1000; ++i) {
    file += kinds[i % 5] + " t\n";
    for (std::size_t rank = 1; i % 5 != 1 && rank <= 70; ++rank) {
      expected += std::to_string(i + 1) + "\t" + std::to_string(rank) + "\t1.000000\t" +
                  std::to_string(i % 5 + 5 * (rank - 1)) + "\tt\t" + kinds[i % 5] + "\n";
    }
  }
  WriteFile(folder / "many.smi", file);
  for (const std::string threads : {"1", "4"}) {
    const RunResult run =
        Korvex({"vsepr", "many.smi", "-query", "many.smi", "-limit", "70", "-threads", threads});
    EXPECT_TRUE(run.exitCode == 0 && run.out == expected) << threads << run.out.substr(0, 9999);
    EXPECT_EQ(Lines(run.err).size(), 400U);  // each bad record once, as a query and as a record
  }
}

// Ethane and propane share two paths of one atom, 2 exp(4), of their volumes 2 exp(4) + 2 exp(3.5)
// and 3 exp(4) + 4 exp(3.5) + 2 exp(3).
TEST_F(VseprProgramTest, HitsAndPairs) {
  WriteFile(folder / "some.smi", "CCC a\nF b\nCC c\n[H][H] d\nF.F.F.F.F.F.F\n");
  WriteFile(folder / "few.smi", "[H][H]\nC\n");
  const std::string best = "1\t1\t1.000000\t2\tc\tCC\n";
  for (const Texts& row :
       {Texts{"vsepr some.smi -query CC", best + "1\t2\t0.271189\t0\ta\tCCC\n"},
        {"vsepr some.smi -query CC -cutoff 1", ""},
        {"vsepr some.smi -query F.F.F.F.F.F.F.F.F.F -weightbylength false -cutoff 0.7", ""},
        {"vsepr some.smi -query CC -simfunc Tversky -beta 0.25 -alpha 0.5 -cutoff -1 -limit 3",
         best + "1\t2\t0.548396\t0\ta\tCCC\n1\t3\t0.000000\t1\tb\tF\n"},
        {"vsepr some.smi -query CC -limit 1 -format json",
         "[\n{\"query\":1,\"rank\":1,\"score\":1.000000,\"index\":2,\"title\":\"c\",\"smiles\":"
         "\"CC\"}\n]\n"},
        {"vsepr few.smi -query [H][H] -simfunc Tversky -cutoff -1", "1\t1\t0.000000\t1\t\tC\n"},
        {"compare -fptype VSEPR CC CCC", "Tanimoto\t0.271189\nTversky\t0.595149\n"},
        {"compare -fptype VSEPR [H][H] few.smi", "Tanimoto\t0.000000\nTversky\tnan\n"}}) {
    EXPECT_EQ(Output(ZQStringTokenize(row[0], ' ')), row[1]) << row[0];
  }
}

TEST_F(VseprProgramTest, BadInputAndBadUsage) {
  WriteFile(folder / "good.smi", "CCO\n");
  WriteFile(folder / "none.smi", "C1CC\nC(C\n");
  WriteFile(folder / "void.sdf", "\n\n\n  0  0  0  0  0  0            999 V2000\nM  END\n");
  EXPECT_EQ(Korvex({"vsepr", "none.smi"}).exitCode, 1);
  const auto fails = [&](const char* words, int exitCode, const char* message) {
    ExpectFailure(ZQStringTokenize(words, ' '), exitCode, message);
  };
  fails("vsepr none.smi -query CC", 1, "record 2 of none.smi");
  fails("vsepr good.smi -query void.sdf", 1, "query 1: a molecule without atoms");
  fails("compare C none.smi -fptype VSEPR", 1, "record 1 of none.smi");
  fails("compare C void.sdf -fptype VSEPR", 1, "void.sdf: a molecule without atoms");
  fails("vsepr good.smi -types -stereoaware", 2, "-stereoaware is of no use with -types");
  fails("vsepr good.smi -types -query C", 2, "-query is of no use with -types");
  fails("vsepr good.smi -limit 3", 2, "-limit is of no use without -query");
  fails("vsepr good.smi -query C -beta 0", 2, "-beta is of no use without -simfunc Tversky");
  fails("compare C C -fptype VSEPR -numbits 512", 2, "of no use for fingerprints of kind VSEPR");
  fails("compare C C -forcepathsout", 2, "-forcepathsout is of no use without -fptype VSEPR");
}

}  // namespace
}  // namespace ZQKorvex
