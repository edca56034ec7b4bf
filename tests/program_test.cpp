// The program as seen by its users: arguments, exit code, both outputs, and bad files.

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <set>

#include "contract/bostrel/strings.h"
#include "korvex/korvex.h"
#include "tests/mol_helpers.h"
#include "tests/program_helpers.h"

namespace ZQKorvex {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

std::vector<Words> Table(const std::string& text) {
  std::vector<Words> table;
  for (const std::string& line : Lines(text)) {
    table.emplace_back();
    std::istringstream fields(line + "\t");
    for (std::string field; std::getline(fields, field, '\t');) table.back().push_back(field);
  }
  return table;
}

class ProgramTest : public ProgramFixture {
 protected:
  // The sample molecules, "title 1" and so on, and their database.
  void MakeDatabase(const Words& options = {}) const {
    std::string file;
    for (const std::string& smiles : SampleSmiles()) {
      file += smiles + " title " + std::to_string(Lines(file).size() + 1) + "\n";
    }
    WriteFile(folder / "mols.smi", file);
    Words words{"create", "mols.smi", "mols.fpbin"};
    words.insert(words.end(), options.begin(), options.end());
    const RunResult run = Korvex(std::move(words));
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "mols.fpbin: " + std::to_string(SampleSmiles().size()) + " records\n");
  }
};

TEST_F(ProgramTest, UsageAndHelp) {
  ExpectFailure({}, 2, "usage: korvex COMMAND");
  ExpectFailure({"serch"}, 2, "no command 'serch', did you mean search");
  ExpectFailure({"search", "a.fpbin", "C", "-limt", "3"}, 2, "did you mean -limit?");
  ExpectFailure({"search", "a.fpbin"}, 2, "QUERY is missing");
  ExpectFailure({"search", "a.fpbin", "C", "-format", "xml"}, 2, "tsv, json");
  ExpectFailure({"compare", "C", "C", "-type", "Path", "-numbits", "512"}, 2, "no use beside");
  ExpectFailure({"compare", "C", "C", "-type", "Path"}, 2, "'Path' names no fingerprint type");
  ExpectFailure({"compare", "C", "C", "-mindistance", "4", "-maxdistance", "3"}, 2, "(4) > max");
  ExpectFailure({"create", "a.smi", "a.bin"}, 2, ".fpbin");
  ExpectFailure({"create", "a.smi", "a.fpbin", "-fptype", "Lingo"}, 2, "can't hold these");
  ExpectFailure({"create", "a.smi", "a.fpbin", "-type", "Lingo,ver=2.0.0"}, 2, "can't hold these");
  ExpectFailure({"compare", "C", "C", "-fptype", "MACCS166", "-mind", "1"}, 2, "no use for");
  ExpectFailure({"compare", "C", "C", "-fptype", "UHTree", "-numbits", "512"}, 2, "no use for");
  ExpectFailure({"compare", "C", "C", "-fptype", "UHCircular", "-maxd", "10"}, 2,
                "maximum radius 10 is outside 0 to 9");
  // Well-formed types.
  const std::string typing = ",atype=AtmNum,btype=Order";
  for (const auto& [type, fault] :
       {std::pair<std::string, const char*>{"Circular,ver=2.0.0,size=64,radius=0-200",
                                            "maximum radius 200 is above 10"},
        {"Path,ver=2.0.0,size=8,bonds=0-5", "size 8 is outside 16 to 65535"},
        {"Path,ver=2.0.0,size=70000,bonds=0-5", "size 70000 is outside 16 to 65535"},
        {"Tree,ver=2.0.0,size=64,bonds=5-4", "minimum bonds 5 is outside 0 to 4"},
        {"UHTree,ver=2.0.0,numbits=64,bonds=0-4", "numbits 64 is outside 0 to 0"},
        {"UHPath,ver=x,bonds=0-4", "names no fingerprint type"},
        {"Path,ver=1.0.0,size=64,bonds=0-4", "names no fingerprint type"}}) {
    ExpectFailure({"compare", "C", "C", "-type", type + typing}, 2, fault);
  }
  ExpectFailure({"substructure", "C(Q", "C"}, 2, "SMARTS column 3");
  for (const char* command : {"create", "search", "fingerprint", "compare", "substructure", "draw",
                              "info", "histogram", "neighbors", "version", ""}) {
    for (const char* help : {"-h", "--h", "-help", "--help"}) {
      const RunResult run = Korvex(*command ? Words{command, help} : Words{help});
      EXPECT_EQ(run.exitCode, 0) << command << help;
      EXPECT_NE(run.out.find(std::string("usage: korvex ") + command), std::string::npos);
      for (const std::string& line : Lines(run.out)) EXPECT_LE(line.size(), 80U) << line;
    }
  }
  EXPECT_NE(Korvex({"create", "-h"}).out.find("5 for Path, Circular; 4 for Tree"),
            std::string::npos);
}

// Omitted parameters have the kind's default, as in the library.
TEST_F(ProgramTest, EveryKindOfFingerprint) {
  WriteFile(folder / "mols.smi", "CC(=O)Oc1ccccc1C(=O)O\nC\n");
  std::vector<std::pair<Words, const ZQFPTypeBase*>> cases{
      {{"-maxd", "3", "-b", "None"}, ZQGetTreeFPType(4096, 0, 3, 63, 0)},
      {{"-mind", "1"}, ZQGetUnhashedCircularFPType(ZQGetFingerPrintVersion(9001), 1, 5, 4239, 1)}};
  for (const ZQFPKind& kind : ZQGetFPKinds()) cases.push_back({{}, ZQGetFPType(kind.number)});
  for (const auto& [options, type] : cases) {
    const std::string name = type->GetFPTypeString().substr(0, type->GetFPTypeString().find(','));
    const auto run = [&, &given = options](Words words) {
      words.insert(words.end(), {"-fptype", name});
      words.insert(words.end(), given.begin(), given.end());
      return Korvex(words);
    };
    const bool unhashed = type->GetFPType() >= ZQFPType::UnhashedPath;
    std::string expected;
    for (const ZQMol& mol : {"CC(=O)Oc1ccccc1C(=O)O"_mol, "C"_mol}) {
      ZQFingerPrint fp;
      ASSERT_TRUE(ZQMakeFP(fp, mol, type));
      std::string content;
      fp.ToHexString(content);
      if (unhashed || name == "Lingo") content = reinterpret_cast<const char*>(fp.Words());
      expected += "\t" + content.substr(0, content.find_last_not_of(' ') + 1) + "\n";
    }
    EXPECT_EQ(run({"fingerprint", "mols.smi"}).out, expected) << name;
    EXPECT_EQ(Lines(run({"compare", "CCO", "CCC"}).out).size(), unhashed ? 1U : 6U) << name;
    if (unhashed || name == "MACCS166" || name == "Lingo") continue;
    ASSERT_EQ(run({"create", "mols.smi", "mols.fpbin"}).exitCode, 0) << name;
    EXPECT_EQ(ZQFastFPDatabaseParams(folder / "mols.fpbin").GetFPTypeBase(), type);
  }
}

TEST_F(ProgramTest, ARangeThatNothingFitsGivesEmptyFingerprints) {
  for (const char* kind : {"UHPath,ver=2.0.0,bonds=5-2", "UHCircular,ver=2.0.0,radius=5-2",
                           "UHTree,ver=2.0.0,bonds=5-2"}) {
    WriteFile(folder / "mols.smi", "CC(=O)Oc1ccccc1C(=O)O aspirin\n");
    const std::string type = std::string(kind) + ",atype=AtmNum,btype=Order";
    const RunResult run = Korvex({"fingerprint", "mols.smi", "-type", type});
    EXPECT_EQ(std::tie(run.exitCode, run.out, run.err),
              std::make_tuple(0, std::string("aspirin\t\n"), std::string()));
  }
}

TEST_F(ProgramTest, Substructure) {
  WriteFile(folder / "some.smi", "OCCO a b\nC1CC b\nC[13CH3] c\nCN(C)C d\n");
  const RunResult run = Korvex({"substructure", "[CX4]~[!#6]", "some.smi"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.out, "1\ta b\t2,1 3,4\n4\td\t1,2 3,2 4,2\n");
  EXPECT_NE(run.err.find("ecord 2 of some.smi"), std::string::npos) << run.err;
  const auto output = [&](const Words& words) { return Korvex(words).out; };
  EXPECT_EQ(output({"substructure", "C~*", "some.smi", "-max", "1"}),
            "1\ta b\t2,1\n3\tc\t1,2\n"
            "4\td\t1,2\n");
  EXPECT_EQ(output({"substructure", "CN", "some.smi", "-count"}), "4\td\t3\n");
  EXPECT_EQ(output({"substructure", "c:c", "C1=CC=CC=C1", "-count", "true"}), "1\t\t6\n");
  ExpectFailure({"substructure", "C", "gone.smi"}, 1, "gone.smi");
}

TEST_F(ProgramTest, Draw) {
  WriteFile(folder / "some.smi", "CCO a <b>\nC(Q\nc1ccccc1 c\n");
  const RunResult first = Korvex({"draw", "some.smi"});
  EXPECT_EQ(first.exitCode, 0) << first.err;
  EXPECT_NE(first.err.find("some.smi has 3 records; this is the first"), std::string::npos);
  EXPECT_TRUE(first.out.starts_with("<svg xmlns=")) << first.out;
  EXPECT_NE(first.out.find("<title>a &lt;b&gt;</title>"), std::string::npos);
  EXPECT_EQ(Korvex({"draw", "some.smi", "-record", "1"}).err, "");
  const RunResult small = Korvex(
      {"draw", "some.smi", "-record", "3", "-width", "60", "-height", "50", "-svg", "c.svg"});
  EXPECT_EQ(small.exitCode, 0) << small.err;
  const std::string svg = ReadFile(folder / "c.svg");
  EXPECT_NE(svg.find("data-bond=\"5\""), std::string::npos);
  EXPECT_LE(std::stod(svg.substr(svg.find("height=\"") + 8)), 50);
  EXPECT_EQ(Korvex({"draw", "CCO", "-svg", "/dev/stdout"}).out, Korvex({"draw", "CCO"}).out);

  ExpectFailure({"draw", "some.smi", "-record", "2"}, 1, "record 2 of some.smi");
  ExpectFailure({"draw", "some.smi", "-record", "4"}, 1, "no record 4 in some.smi, which has 3");
  ExpectFailure({"draw", "gone.smi"}, 1, "gone.smi");
  ExpectFailure({"draw", Repeated("C", 1000)}, 1, "too many to lay out");
  ExpectFailure({"draw", "CCO", "-svg", "gone/a.svg"}, 1, "cannot write gone/a.svg");
  ExpectFailure({"draw", "CCO", "-svg", "/dev/full"}, 1, "cannot write /dev/full");
  // A failure leaves the earlier drawing and no other file; success keeps the mode.
  fs::permissions(folder / "c.svg", fs::perms::owner_read | fs::perms::owner_write);
  const RunResult full =
      folder.Run({KORVEX_PROGRAM, "draw", Repeated("C", 99), "-svg", "c.svg"}, 500);
  EXPECT_EQ(full.exitCode, 1) << full.err;
  EXPECT_EQ(ReadFile(folder / "c.svg"), svg);
  EXPECT_EQ(Korvex({"draw", "CCO", "-svg", "c.svg"}).exitCode, 0);
  EXPECT_EQ(fs::status(folder / "c.svg").permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
  for (const auto& entry : fs::directory_iterator(folder / "")) {
    EXPECT_EQ(entry.path().filename().string().find(".part"), std::string::npos) << entry.path();
  }
}

TEST_F(ProgramTest, SearchEqualsABruteForceRanking) {
  MakeDatabase({"-numbits", "1024"});
  const ZQFPTypeBase* type = ZQFastFPDatabaseParams(folder / "mols.fpbin").GetFPTypeBase();
  std::vector<ZQFingerPrint> fps(SampleSmiles().size());
  for (std::size_t i = 0; i < fps.size(); ++i) {
    ZQMol mol;
    ASSERT_TRUE(ZQSmilesToMol(mol, SampleSmiles()[i]) && ZQMakeFP(fps[i], mol, type));
  }
  for (const char* memory : {"memory-mapped", "in-memory", "CUDA"}) {
    const RunResult run = Korvex({"search", "mols.fpbin", "mols.smi", "-limit", "0", "-cutoff",
                                  "0.1", "-memtype", memory, "-threads", "2"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    std::set<std::pair<std::string, std::string>> seen;
    std::string query;
    unsigned int rank = 0;
    double before = 0;
    for (const Words& hit : Table(run.out)) {
      ASSERT_EQ(hit.size(), 6U);
      rank = hit[0] == query ? rank + 1 : 1;
      query = hit[0];
      EXPECT_EQ(hit[1], std::to_string(rank));
      const double score = std::stod(hit[2]);
      EXPECT_TRUE(rank == 1 || score <= before);
      before = score;
      const std::size_t index = std::stoul(hit[3]);
      EXPECT_NEAR(score, ZQTanimoto(fps[std::stoul(query) - 1], fps[index]), 1e-6);
      EXPECT_EQ(hit[4], "title " + std::to_string(index + 1));
      EXPECT_EQ(hit[5], SampleSmiles()[index]);
      EXPECT_TRUE(seen.emplace(hit[0], hit[3]).second);
    }
    std::size_t expected = 0;
    for (const auto& a : fps) {
      for (const auto& b : fps) expected += ZQTanimoto(a, b) > 0.1F;
    }
    EXPECT_EQ(seen.size(), expected);
  }
}

TEST_F(ProgramTest, SearchOptionsReachTheSearch) {
  MakeDatabase();
  const std::string query = SampleSmiles()[0];
  const auto first = [&](Words options) {
    options.insert(options.begin(), {"search", "mols.fpbin", query, "-limit", "2"});
    const std::vector<Words> table = Table(Korvex(options).out);
    return table.empty() ? "none" : table[0][2] + " " + table[0][4] + " " + table[1][2];
  };
  EXPECT_EQ(first({}).find("1.000000 title 1 0."), 0U);
  EXPECT_EQ(first({"-simfunc", "Manhattan", "-descending", "false"}).find("0.000000 title 1 "), 0U);
  EXPECT_EQ(first({"-cutoff", "1"}), "none");
  EXPECT_EQ(first({"-descending", "false", "-cutoff", "0"}), "none");
  EXPECT_EQ(first({"-simfunc", "Tversky", "-alpha", "1", "-beta", "1"}), first({}));
  EXPECT_NE(first({"-simfunc", "Tversky", "-alpha", "0", "-beta", "1"}),
            first({"-simfunc", "Tversky", "-alpha", "1", "-beta", "0"}));
}

TEST_F(ProgramTest, AMoleculeFileIsRankedInMemory) {
  MakeDatabase();
  // Bad records between the good ones; the index counts them all.
  std::string file = "C1CC bad\n";
  std::vector<std::size_t> records;
  for (std::size_t i = 0; i < SampleSmiles().size(); ++i) {
    if (i == 7) file += "C(C also bad\n";
    records.push_back(Lines(file).size());
    file += SampleSmiles()[i] + " title " + std::to_string(i + 1) + "\n";
  }
  WriteFile(folder / "bad.smi", file);
  for (const ZQFPKind& kind : ZQGetFPKinds()) {
    const ZQFPTypeBase* type = ZQGetFPType(kind.number);
    ZQFPDatabase database(type);
    for (const std::string& smiles : SampleSmiles()) database.AddFP(ReadSmiles(smiles));
    std::vector<std::pair<std::size_t, double>> expected;
    for (auto hit = database.GetSortedScores("c1ccccc1CC(=O)NC"_mol, 0, 0, 0); hit; ++hit) {
      expected.emplace_back(records[hit->GetIdx()], hit->GetScore());
    }
    ASSERT_FALSE(expected.empty()) << kind.name;
    std::string before;
    for (const char* threads : {"1", "2"}) {
      const Words options{"-limit", "0", "-threads", threads};
      Words words{"search", "bad.smi", "c1ccccc1CC(=O)NC", "-type", type->GetFPTypeString()};
      words.insert(words.end(), options.begin(), options.end());
      const RunResult run = Korvex(words);
      ASSERT_EQ(run.exitCode, 0) << run.err;
      EXPECT_EQ(Lines(run.err).size(), 2U) << run.err;
      const std::vector<Words> hits = Table(run.out);
      ASSERT_EQ(hits.size(), expected.size());
      for (std::size_t i = 0; i < hits.size(); ++i) {
        EXPECT_EQ(hits[i][3], std::to_string(expected[i].first)) << kind.name;
        EXPECT_NEAR(std::stod(hits[i][2]), expected[i].second, 1e-6);
        EXPECT_EQ(hits[i][5] + " " + hits[i][4], Lines(file)[expected[i].first]);
      }
      EXPECT_TRUE(before.empty() || before == run.out);
      before = run.out;
    }
  }
  // The same hits as with a database, whose scores are doubles, for each option.
  for (const Words& options : {Words{},
                               {"-cutoff", "0.2", "-simfunc", "Dice"},
                               {"-simfunc", "Manhattan", "-descending", "false", "-limit", "3"},
                               {"-simfunc", "Tversky"},
                               {"-simfunc", "Tversky", "-alpha", "0.5", "-beta", "0.2"}}) {
    std::vector<std::vector<Words>> tables;
    for (const char* source : {"mols.smi", "mols.fpbin"}) {
      Words words{"search", source, "mols.smi"};
      words.insert(words.end(), options.begin(), options.end());
      tables.push_back(Table(Korvex(words).out));
    }
    ASSERT_EQ(tables[0].size(), tables[1].size());
    EXPECT_GT(tables[0].size(), 30U);
    for (std::size_t i = 0; i < tables[0].size(); ++i) {
      EXPECT_NEAR(std::stod(tables[0][i][2]), std::stod(tables[1][i][2]), 2e-6);
      tables[0][i][2] = tables[1][i][2];
      EXPECT_EQ(tables[0][i], tables[1][i]);
    }
  }
  const RunResult json = Korvex({"search", "mols.smi", "CCO", "-format", "json", "-limit", "2"});
  rapidjson::Document document;
  ASSERT_FALSE(document.Parse(json.out.c_str()).HasParseError()) << json.out;
  EXPECT_EQ(document.Size(), 2U);
  // A query without Lingo substrings costs that query.
  WriteFile(folder / "short.smi", "CC a\nc1ccccc1O b\n");
  const RunResult lingo = Korvex({"search", "mols.smi", "short.smi", "-fptype", "Lingo"});
  EXPECT_EQ(lingo.exitCode, 0);
  EXPECT_EQ(Table(lingo.out).at(0).at(0), "2");
  EXPECT_NE(lingo.err.find("query 1: a Lingo text of fewer than four"), std::string::npos);

  WriteFile(folder / "none.smi", "C1CC\nC(C\n");
  ExpectFailure({"search", "none.smi", "C"}, 1, "none.smi: no record has a fingerprint");
  ExpectFailure({"search", "gone.smi", "C"}, 1, "gone.smi");
  for (const auto& [words, message] : std::vector<std::pair<Words, const char*>>{
           {{"mols.fpbin", "-fptype", "Path"}, "option -fptype is of no use with a database"},
           {{"mols.fpbin", "-type", "Lingo,ver=2.0.0"}, "option -type is of no use"},
           {{"mols.smi", "-memtype", "in-memory"}, "option -memtype is of no use with a mol"},
           {{"mols.smi", "-molecules", "mols.smi"}, "option -molecules is of no use"},
           {{"mols.smi", "-fptype", "Lingo", "-beta", "1"}, "-beta is of no use for fingerprints"},
           {{"mols.smi", "-fptype", "UHPath", "-alpha", "1"}, "-alpha is of no use"},
           {{"mols.smi", "-fptype", "UHTree", "-simfunc", "Dice"}, "no measure but Tanimoto"}}) {
    Words all{"search", words[0], "C"};
    all.insert(all.end(), words.begin() + 1, words.end());
    ExpectFailure(all, 2, message);
  }
}

TEST_F(ProgramTest, JsonIsValidForAnyTitle) {
  const std::string title = "a\"b\\c\x01\xff\xc3\" \xe2\x82\xac";
  WriteFile(folder / "odd.smi", "CCO " + title + "\nCCN\t\n");
  ASSERT_EQ(Korvex({"create", "odd.smi", "odd.fpbin"}).exitCode, 0);
  const RunResult run = Korvex({"search", "odd.fpbin", "CCO", "-format", "json"});
  rapidjson::Document json;
  ASSERT_FALSE(json.Parse<rapidjson::kParseValidateEncodingFlag>(run.out.c_str()).HasParseError())
      << run.out;
  ASSERT_EQ(json.Size(), 2U);
  EXPECT_STREQ(json[0]["title"].GetString(), "a\"b\\c\x01\xef\xbf\xbd\xef\xbf\xbd\" \xe2\x82\xac");
  EXPECT_STREQ(json[0]["smiles"].GetString(), "CCO");
  EXPECT_EQ(json[0]["score"].GetDouble(), 1.0);
  EXPECT_EQ(json[1]["query"].GetUint(), 1U);
  EXPECT_EQ(json[1]["rank"].GetUint(), 2U);
  EXPECT_EQ(json[1]["index"].GetUint64(), 1U);
  const RunResult none = Korvex({"search", "odd.fpbin", "CCO", "-format", "json", "-cutoff", "1"});
  ASSERT_FALSE(json.Parse(none.out.c_str()).HasParseError()) << none.out;
  EXPECT_EQ(json.Size(), 0U);
}

TEST_F(ProgramTest, TitlesComeFromWhereverTheMoleculesAre) {
  MakeDatabase();
  const auto title = [&](const Words& options) {
    Words words{"search", "sub/mols.fpbin", SampleSmiles()[2]};
    words.insert(words.end(), options.begin(), options.end());
    const RunResult run = Korvex(words);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return Table(run.out).at(0).at(4);
  };
  fs::create_directory(folder / "sub");
  fs::rename(folder / "mols.fpbin", folder / "sub/mols.fpbin");
  EXPECT_EQ(title({}), "title 3");
  fs::rename(folder / "mols.smi", folder / "sub/mols.smi");
  EXPECT_EQ(title({}), "title 3");
  fs::rename(folder / "sub/mols.smi", folder / "else.smi");
  EXPECT_EQ(title({}), "");
  EXPECT_EQ(title({"-molecules", "else.smi"}), "title 3");
  WriteFile(folder / "short.smi", "C one\nCC two\nCCC three\n");
  EXPECT_EQ(title({"-molecules", "short.smi"}), "");
  ExpectFailure({"search", "sub/mols.fpbin", "C", "-molecules", "gone.smi"}, 1, "gone.smi");
}

TEST_F(ProgramTest, OneBadRecordCostsThatRecord) {
  WriteFile(folder / "some.smi", "CCO a\nC1CC b\nCCN c\n* d\nCCC e");
  const RunResult created = Korvex({"create", "some.smi", "some.fpbin"});
  EXPECT_EQ(created.exitCode, 0);
  EXPECT_EQ(created.out,
            "some.fpbin: 5 records, 2 of them without a bit (unreadable, or nothing to make bits "
            "from)\n");
  EXPECT_NE(created.err.find("ecord 2 of some.smi"), std::string::npos) << created.err;

  const RunResult printed =
      Korvex({"fingerprint", "some.smi", "-fptype", "UHPath", "-maxd", "0", "-a", "AtmNum"});
  EXPECT_EQ(printed.exitCode, 0);
  EXPECT_EQ(printed.out, "a\t[#6] [#8]\nb\t\nc\t[#6] [#7]\nd\t\ne\t[#6]\n");

  const RunResult found = Korvex({"search", "some.fpbin", "some.smi", "-limit", "1"});
  EXPECT_EQ(found.exitCode, 0);
  std::string queries;
  for (const Words& hit : Table(found.out)) queries += hit[0];
  EXPECT_EQ(queries, "135");
}

TEST_F(ProgramTest, CompareInfoHistogramNeighbors) {
  MakeDatabase();
  const std::vector<Words> measures =
      Table(Korvex({"compare", "CCO", "mols.smi", "-alpha", "1", "-beta", "1"}).out);
  EXPECT_EQ(measures.at(4).at(1), measures.at(0).at(1));  // Tversky, Tanimoto

  const RunResult info = Korvex({"info", "mols.fpbin"});
  for (const std::string& part :
       {std::string("molecule file\tmols.smi\n"), std::string("words\t64\n"),
        "fingerprints\t" + std::to_string(SampleSmiles().size()) + "\n",
        "type\t" + ZQGetFPType(ZQFPType::Path)->GetFPTypeString() + "\n",
        "processor\t" + ZQKorvexGetProcessor() + "\n"}) {
    EXPECT_NE(info.out.find(part), std::string::npos) << info.out;
  }

  const std::uint64_t records = SampleSmiles().size();
  std::uint64_t pairs = 0;
  const std::vector<Words> bins = Table(Korvex({"histogram", "mols.fpbin", "-bins", "7"}).out);
  ASSERT_EQ(bins.size(), 10U);
  for (std::size_t i = 3; i < 10; ++i) pairs += std::stoul(bins[i].at(2));
  EXPECT_EQ(pairs, records * (records - 1) / 2);
  EXPECT_EQ(bins[0][0], "# pairs " + std::to_string(pairs));

  // Each row's best others, as found by a search for its record, after the record itself.
  const std::vector<Words> near = Table(Korvex({"neighbors", "mols.fpbin", "-limit", "2"}).out);
  ASSERT_EQ(near.size(), 2 * records);
  const std::vector<Words> hits =
      Table(Korvex({"search", "mols.fpbin", "mols.smi", "-limit", "3"}).out);
  ASSERT_EQ(hits.size(), 3 * records);
  for (std::size_t i = 0; i < near.size(); ++i) {
    EXPECT_EQ(near[i][0], std::to_string(i / 2));
    EXPECT_NE(near[i][1], near[i][0]);
    EXPECT_NEAR(std::stod(near[i][2]), std::stod(hits[i / 2 * 3 + i % 2 + 1][2]), 2e-6);
  }
  // A score equal to the cutoff reaches it, record 0 included.
  WriteFile(folder / "same.smi", "CCO\nCCO\nCCO\nC\n");
  ASSERT_EQ(Korvex({"create", "same.smi", "same.fpbin"}).exitCode, 0);
  EXPECT_EQ(Table(Korvex({"neighbors", "same.fpbin", "-limit", "0", "-cutoff", "1"}).out).size(),
            6U);
  EXPECT_EQ(Table(Korvex({"neighbors", "mols.fpbin", "-limit", "0"}).out).size(),
            records * (records - 1));
}

TEST_F(ProgramTest, AGpuPrintsTheSame) {
  MakeDatabase({"-numbits", "1024"});
  const auto onGpu = [&](std::vector<std::string> words) {
    words.insert(words.begin(), {"env", "LD_LIBRARY_PATH=" KORVEX_EMULATED_GPU, KORVEX_PROGRAM});
    return folder.Run(std::move(words));
  };
  if (onGpu({"info", "mols.fpbin"}).out.find("\nGPU\tEmulated GPU, 1.0 GiB, ") ==
      std::string::npos) {
    GTEST_SKIP() << "this build has no kernels";
  }
  for (Words words : {Words{"search", "mols.fpbin", "mols.smi", "-limit", "5"},
                      Words{"search", "mols.fpbin", "CCO", "-html", "report.html"},
                      Words{"histogram", "mols.fpbin", "-bins", "9", "-simfunc", "Tversky"},
                      Words{"neighbors", "mols.fpbin", "-limit", "3", "-cutoff", "0.3"}}) {
    std::filesystem::remove(folder / "report.html");
    const std::string expected = Output(words);
    const std::string report = ReadFile(folder / "report.html");
    std::filesystem::remove(folder / "report.html");
    words.insert(words.end(), {"-memtype", "CUDA"});
    const RunResult run = onGpu(words);
    EXPECT_EQ(run.out, expected) << words[0];
    EXPECT_TRUE(ReadFile(folder / "report.html") == report) << words[0];
    EXPECT_EQ(run.err.find("falling back"), std::string::npos) << run.err;
  }
}

TEST_F(ProgramTest, BadMoleculeFilesGiveAMessage) {
  std::mt19937 random(7);
  std::string junk(100000, '\0');
  for (char& c : junk) {
    const auto byte = static_cast<unsigned int>(random());
    c = byte % 100 < 2 ? "\n"[byte % 2] : static_cast<char>(byte >> 8 | 0x80);
  }
  const std::string nested = "C" + Repeated("(C", 1000) + Repeated(")", 1000);
  const std::pair<const char*, std::string> files[] = {
      {"empty.smi", ""},
      {"junk.smi", junk},
      {"junk.sdf", junk},
      {"junk.smi.gz", junk},
      {"long.smi", Repeated("q", 10000000)},
      {"ring.smi", "C1CC\n"},
      {"element.smi", "[Xx]\n"},
      {"cut.sdf", "title\n\n\n  2  1  0  0  0  0  0  0  0  0999 V2000\n    0.0000    0.0"},
  };
  for (const auto& [name, content] : files) {
    WriteFile(folder / name, content);
    const RunResult run = Korvex({"fingerprint", name});
    EXPECT_EQ(run.exitCode, 1) << name;
    EXPECT_NE(run.err.find(name), std::string::npos) << name << "\n" << run.err;
  }
  fs::create_directory(folder / "folder.smi");
  for (const char* name : {"missing.smi", "folder.smi", "empty.smi", "junk.smi.gz"}) {
    ExpectFailure({"create", name, "out.fpbin"}, 1, name);
    ExpectFailure({"fingerprint", name}, 1, name);
  }
  EXPECT_FALSE(fs::exists(folder / "out.fpbin"));
  WriteFile(folder / "good.smi", nested + " nested");  // legal, without a final line feed
  EXPECT_EQ(Korvex({"fingerprint", "good.smi"}).exitCode, 0);

  WriteFile(folder / "good.fpbin", "");
  ASSERT_EQ(Korvex({"create", "good.smi", "good.fpbin"}).exitCode, 0);
  ExpectFailure({"search", "good.fpbin", "gone.smi"}, 1, "neither a molecule file");
  ExpectFailure({"search", "good.fpbin", "ring.smi"}, 1, "ring.smi");
  ExpectFailure({"compare", "C", "[Xx]"}, 1, "nor a SMILES");
  ExpectFailure({"compare", "C", ""}, 1, "nor a SMILES");
}

TEST_F(ProgramTest, StandardInputIsAMoleculeFile) {
  WriteFile(folder / "mols.csv",
            "key,Structure,Label\na,CCO |c:1|,\"ethanol,\npure\"\nb,CCN,amine");
  const auto run = [&](Words words, const std::string& redirection) {
    words.insert(words.begin(), KORVEX_PROGRAM);
    words.insert(words.end(), {"-smiles-column", "Structure", "-title-column", "Label"});
    std::string line;
    for (const std::string& word : words) line += "'" + word + "' ";
    return folder.Run({"bash", "-c", "gzip -kf mols.csv; " + line + redirection});
  };
  ASSERT_EQ(run({"create", "mols.csv", "mols.fpbin"}, "").exitCode, 0);
  for (const Words& words : std::vector<Words>{{"fingerprint", "mols.csv"},
                                               {"search", "mols.csv", "CCO"},
                                               {"search", "mols.fpbin", "mols.csv"},
                                               {"search", "mols.fpbin", "C", "-mol", "mols.csv"},
                                               {"compare", "mols.csv", "CCO"},
                                               {"explain", "CCO", "mols.csv"},
                                               {"draw", "mols.csv", "-record", "2"},
                                               {"substructure", "CO", "mols.csv"},
                                               {"vsepr", "mols.csv"},
                                               {"vsepr", "mols.csv", "-query", "CCO"},
                                               {"vsepr", "mols.csv.gz", "-query", "mols.csv"}}) {
    const RunResult expected = run(words, "");
    ASSERT_EQ(expected.exitCode, 0) << expected.err;
    EXPECT_EQ(expected.err, "") << words[0];
    Words piped = words;
    std::replace(piped.begin(), piped.end(), std::string("mols.csv"), std::string("-"));
    piped.insert(piped.end(), {"-input-format", "csv"});
    EXPECT_EQ(run(piped, "< mols.csv").out, expected.out) << words[0];
    EXPECT_EQ(run(piped, "< mols.csv.gz").out, expected.out) << words[0];
  }
  EXPECT_EQ(run({"search", "mols.fpbin", "CCN", "-limit", "1"}, "").out,
            "1\t1\t1.000000\t1\tamine\tCCN\n");
  // Such a database names no file, not even one of this name.
  ASSERT_EQ(run({"create", "-", "piped.fpbin", "-input-format", "csv"}, "< mols.csv").exitCode, 0);
  WriteFile(folder / "-", "C\nC\n");
  const RunResult unnamed = folder.Run(
      {"bash", "-c", "echo CCO | '" + std::string(KORVEX_PROGRAM) + "' search piped.fpbin -"});
  EXPECT_EQ(Table(unnamed.out)[0], (Words{"1", "1", "1.000000", "0", "", ""}));
  EXPECT_NE(unnamed.err.find("piped.fpbin was made from standard input"), std::string::npos);
  EXPECT_EQ(Output({"fingerprint", "CCO |c:1| a b\nC", "-fptype", "Lingo"}), "a b\tCCO\n");

  for (const auto& [line, exitCode, message] : std::vector<std::tuple<Words, int, std::string>>{
           {{"compare", "-", "-"}, 2, "standard input (-) can be read only once"},
           {{"search", "mols.csv", "-", "-mol", "-"}, 2, "can be read only once"},
           {{"fingerprint", "CCO", "-input-format", "smi"}, 2, "without standard input (-)"},
           {{"fingerprint", "a.smi", "-title-column", "x"}, 2, "without a .csv or .tsv file"},
           {{"fingerprint", "-", "-title-column", "x"}, 2, "without a .csv or .tsv file"},
           {{"fingerprint", "-", "-input-format", "xml"}, 2, "smi, sdf"},
           {{"fingerprint", "mols.csv"}, 1, "are \"key\", \"Structure\", \"Label\""},
           {{"fingerprint", "mols.csv", "-smiles-column", "key", "-title-column", "x"},
            1,
            "named x"},
           {{"fingerprint", "-"}, 1, "standard input: Is a directory"}}) {
    Words words{"bash", "-c", "\"$@\" < .", "", KORVEX_PROGRAM};
    words.insert(words.end(), line.begin(), line.end());
    const RunResult failed = folder.Run(words);
    EXPECT_EQ(std::tie(failed.exitCode, failed.out), std::make_tuple(exitCode, std::string()));
    EXPECT_NE(failed.err.find(message), std::string::npos) << failed.err;
  }
  const RunResult empty = run({"vsepr", "-", "-input-format", "tsv"}, "< /dev/null");
  EXPECT_EQ(empty.exitCode, 1);
  EXPECT_NE(empty.err.find("from standard input: There is no header line"), std::string::npos);
}

TEST_F(ProgramTest, AFailedCreationLosesNothing) {
  MakeDatabase();
  const std::string before = ReadFile(folder / "mols.fpbin");
  const RunResult full = folder.Run({KORVEX_PROGRAM, "create", "mols.smi", "mols.fpbin"}, 4096);
  EXPECT_EQ(full.exitCode, 1) << full.err;
  EXPECT_NE(full.err.find("mols.fpbin wasn't made"), std::string::npos) << full.err;
  ExpectFailure({"create", "gone.smi", "mols.fpbin"}, 1, "gone.smi");
  ExpectFailure({"create", "gone.smi", "mols.fpbin", "-numbits", "1000"}, 2, "multiple of 256");
  EXPECT_EQ(ReadFile(folder / "mols.fpbin"), before);
  WriteFile(folder / "bad.smi", "Q\nCC(C\n");
  ExpectFailure({"create", "bad.smi", "mols.fpbin"}, 1, "bad.smi holds no molecule that could be");
  fs::create_symlink("mols.smi", folder / "two\nlines.smi");
  ExpectFailure({"create", "two\nlines.smi", "mols.fpbin"}, 1, "line feed");
  EXPECT_EQ(ReadFile(folder / "mols.fpbin"), before);
  fs::remove(folder / "two\nlines.smi");
  fs::remove(folder / "bad.smi");
  ExpectFailure({"create", "mols.smi", "none/mols.fpbin"}, 1, "none/mols.fpbin");
  fs::create_directory(folder / "dir.fpbin");
  ExpectFailure({"create", "mols.smi", "dir.fpbin"}, 1, "dir.fpbin");
  std::set<std::string> left;
  for (const auto& entry : fs::directory_iterator(folder.GetPath())) {
    left.insert(entry.path().filename());
  }
  EXPECT_EQ(left,
            (std::set<std::string>{".stderr", ".stdout", "dir.fpbin", "mols.fpbin", "mols.smi"}));
}

TEST_F(ProgramTest, ANewDatabaseTakesThePlaceAndTheModeOfTheOldOne) {
  fs::create_directory(folder / "sub");
  WriteFile(folder / "sub/mols.smi", "CCO ethanol\n");
  ASSERT_EQ(Korvex({"create", "sub/mols.smi", "sub/own.fpbin"}).exitCode, 0);
  fs::permissions(folder / "sub/own.fpbin", fs::perms::owner_read | fs::perms::owner_write);
  fs::create_symlink("sub/own.fpbin", folder / "link.fpbin");
  ASSERT_EQ(Korvex({"create", "sub/mols.smi", "link.fpbin", "-numbits", "512"}).exitCode, 0);
  EXPECT_TRUE(fs::is_symlink(folder / "link.fpbin"));
  fs::create_symlink("nowhere.fpbin", folder / "dangling.fpbin");
  EXPECT_EQ(Korvex({"create", "sub/mols.smi", "dangling.fpbin"}).exitCode, 0);
  EXPECT_EQ(fs::status(folder / "sub/own.fpbin").permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(ZQFastFPDatabaseParams(folder / "sub/own.fpbin").NumWords(), 8U);
  // The molecules are found next to it, regardless of the header's folder.
  const RunResult run = folder.Run(
      {"bash", "-c", "cd sub && " + std::string(KORVEX_PROGRAM) + " search own.fpbin CCO"});
  EXPECT_EQ(run.out, "1\t1\t1.000000\t0\tethanol\tCCO\n") << run.err;
}

TEST_F(ProgramTest, DamagedDatabasesAreRefused) {
  MakeDatabase({"-numbits", "256"});
  const std::string good = ReadFile(folder / "mols.fpbin");
  const auto refused = [&](const std::string& content, const std::string& what) {
    WriteFile(folder / "bad.fpbin", content);
    for (const Words& words : {Words{"info", "bad.fpbin"}, Words{"search", "bad.fpbin", "C"},
                               Words{"search", "bad.fpbin", "C", "-memtype", "in-memory"},
                               Words{"histogram", "bad.fpbin"}, Words{"neighbors", "bad.fpbin"}}) {
      const RunResult run = Korvex(words);
      EXPECT_EQ(run.exitCode, 1) << words[0] << ": " << what;
      EXPECT_EQ(run.out, "") << words[0] << ": " << what;
      EXPECT_NE(run.err.find("bad.fpbin"), std::string::npos) << words[0] << ": " << what;
      EXPECT_EQ(run.err.find("defect of korvex"), std::string::npos) << words[0] << ": " << what;
    }
  };
  // Truncated at the edges of every part of the file, and at some bytes between.
  const std::size_t records = SampleSmiles().size();
  const std::string count = "\n" + std::to_string(records) + "\n";
  const std::size_t text = good.find(count);
  for (const std::size_t size :
       std::initializer_list<std::size_t>{0, 2, 3, 100, 101, text, text + 1, text + 3, 784, 792,
                                          799, 800, 801, good.size() - 48, good.size() - 1}) {
    refused(good.substr(0, size), "cut at " + std::to_string(size));
  }
  refused(good + std::string(48, '\0'), "a record too many");
  const auto changed = [&](const std::string& from, const std::string& to) {
    std::string lie = good;
    lie.replace(lie.find(from), from.size(), to);
    lie.erase(lie.find('\0'), lie.size() - good.size());
    return lie;
  };
  refused(changed("size=256", "size=512"), "another type");
  refused(changed("size=256", "size=99999999"), "an impossible type");
  refused(changed("size=256", "size=0008"), "a type of too few bits");
  refused(changed("size=256", "size=123"), "an odd type");
  refused(changed("Path,", "Lingo,"), "a type without a size");
  refused(changed("ver=2.0.0", "ver=1.0.0"), "an old type");
  refused(changed(count, "\n-1\n"), "a lying count");
  refused(std::string(5000, '\xff'), "no database");
}

TEST_F(ProgramTest, OutputErrorsAreTold) {
  MakeDatabase();
  const std::string command = std::string(KORVEX_PROGRAM) + " fingerprint mols.smi -numbits 65000 ";
  const RunResult full = folder.Run({"bash", "-c", command + "> /dev/full"});
  EXPECT_EQ(full.exitCode, 1);
  EXPECT_NE(full.err.find("standard output"), std::string::npos);
  const RunResult closed = folder.Run({"bash", "-c", command + "| true"});
  EXPECT_EQ(closed.err, "");
}

}  // namespace
}  // namespace ZQKorvex
