#include "contract/quarnel/moldatabase.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>

#include "tests/mol_helpers.h"
#include "tests/program_helpers.h"

namespace Quarnel {

namespace {

// "CCO ethanol\nC1CC " and "ring\nO\n", packed separately.
const std::string packedFirst(
    "\x1f\x8b\x08\x00\x00\x00\x00\x00\x02\x03\x73\x76\xf6\x57\x48\x2d\xc9\x48\xcc\xcb\xcf\xe1"
    "\x72\x36\x74\x76\x56\x00\x00\x14\xd9\xf5\xc6\x11\x00\x00\x00",
    37);
const std::string packedSecond(
    "\x1f\x8b\x08\x00\x00\x00\x00\x00\x02\x03\x2b\xca\xcc\x4b\xe7\xf2\xe7\x02\x00\x7a\x79\x30"
    "\xd3\x07\x00\x00\x00",
    27);

class MolDatabase : public ::testing::Test {
 protected:
  std::string Path(const std::string& name) const { return folder_ / name; }
  std::string Write(const std::string& name, const std::string& text) const {
    WriteFile(folder_ / name, text);
    return Path(name);
  }
  WorkFolder folder_;
};

std::string Molfile(const std::string& title, const std::string& symbol) {
  return title + "\n\n\n  1  0  0  0  0  0  0  0  0  0  0 V2000\n    0.0000    0.0000    0.0000 " +
         symbol + "\nM  END\n";
}

struct Record {
  const char *title, *smiles;  // without SMILES: unreadable
};

void ExpectRecords(const std::string& file, const std::vector<Record>& records,
                   const ZQMolFileOptions& options = {}) {
  CapturedReports reports;
  ZQMolDatabase db;
  ASSERT_TRUE(db.Open(file, options));
  ASSERT_EQ(db.GetMaxMolIdx(), records.size()) << file;
  for (unsigned int i = 0; i < records.size(); ++i) {
    ZQMol mol;
    const bool readable = records[i].smiles != nullptr;
    EXPECT_EQ(db.GetMolecule(mol, i), readable);
    EXPECT_EQ(reports.Take().size(), readable ? 0U : 1U);
    EXPECT_EQ(mol.IsValid(), readable);
    EXPECT_EQ(db.GetTitle(i), records[i].title);
    EXPECT_EQ(db.GetSmiles(i), readable ? records[i].smiles : "");
    if (readable) {
      EXPECT_EQ(mol.GetTitle(), records[i].title);
    }
    reports.Take();
  }
}

}  // namespace

TEST_F(MolDatabase, SmilesLinesAreRecords) {
  ExpectRecords(Write("a.smi",
                      "CCO ethanol\n\n  \nC1CC open\r\n OCC\tethyl alcohol \tC2H6O\r\n\t\nC\n"
                      "c1ccccc1 \t benzene"),
                {{"ethanol", "CCO"},
                 {"open", nullptr},
                 {"ethyl alcohol", "OCC"},
                 {"", "C"},
                 {"benzene", "c1ccccc1"}});
  ExpectRecords(Write("b.ISM",
                      "\xef\xbb\xbf"
                      "C\n"),
                {{"", "C"}});
  ExpectRecords(Write("empty.can", ""), {});
  ExpectRecords(Write("blank.smiles", "\n \r\n\t"), {});
  ExpectRecords(Write("packed.smi.gz", packedFirst + packedSecond),
                {{"ethanol", "CCO"}, {"ring", nullptr}, {"", "O"}});
}

TEST_F(MolDatabase, ABlockInBarsIsNotATitle) {
  ExpectRecords(Write("a.smi",
                      "CCO |$;;R$| name\nCCO\t|c:1|\tname\tmore\nCCO |c:1|\nC |c:1|\r\n"
                      "C |a b| two words \tmore\nC || n\nC |a|b| n\nC |a| |b|\nC |open name\n"
                      "C |\nC a |b| c\nC |a|b\nC |a\tb| n"),
                {{"name", "CCO"},
                 {"name", "CCO"},
                 {"", "CCO"},
                 {"", "C"},
                 {"two words", "C"},
                 {"n", "C"},
                 {"n", "C"},
                 {"|b|", "C"},
                 {"|open name", "C"},
                 {"|", "C"},
                 {"a |b| c", "C"},
                 {"|a|b", "C"},
                 {"|a", "C"}});
}

TEST_F(MolDatabase, LinesOfATableAreRecords) {
  const std::string commas =
      "\n\xef,Canonical_SMILES, Id ,NAME\r\n,CCO,1,ethanol\r\n\r\n"
      "x,\"C\",,\" a \"\"b\"\"\nc, d\" \r\n \n,,,\nx,OCC |c:1|,1,5\" n\",,\r\nx,C\n\"\",O";
  const std::vector<Record> expected{{"ethanol", "CCO"}, {"a \"b\"\nc, d", "C"},
                                     {"", nullptr},      {"5\" n\"", "OCC"},
                                     {"", "C"},          {"", "O"}};
  ExpectRecords(Write("a.csv", commas), expected);
  ExpectRecords(Write("mark.csv", "\xef\xbb\xbf" + commas), expected);
  std::string tabs = commas;
  std::replace(tabs.begin(), tabs.end(), ',', '\t');
  std::vector<Record> ofTabs = expected;
  ofTabs[1].title = "a \"b\"\nc\t d";
  ofTabs.erase(ofTabs.begin() + 2);  // the line of blanks
  ExpectRecords(Write("a.TSV", tabs), ofTabs);
  ExpectRecords(Write("one.csv", "\xef\xbb\xbfSmiles"), {});
  // The first of the names that a column has, exactly if one has.
  const std::string names =
      Write("names.csv", "id,title,smiles,CANONICAL_SMILES,Smiles\n1,t,C,N,O");
  ExpectRecords(names, {{"t", "C"}});
  ExpectRecords(names, {{"1", "O"}}, {"", "Smiles", "ID"});
  ExpectRecords(Write("none.csv", "key,SMILES\n1,C |c:1| c\n"), {{"c", "C"}});
  ExpectRecords(Write("table.txt", commas), expected, {"csv", "", ""});
}

TEST_F(MolDatabase, ReportsTheLineOfATable) {
  std::string text = "\"two\nlines\",smiles,name\n";
  unsigned int line = 3;
  std::vector<unsigned int> lines;
  for (unsigned int i = 0; i < 5000; ++i) {
    if (i % 11 == 3) text += "\r\n";
    line += i % 11 == 3;
    lines.push_back(line);
    text += (i % 7 == 0 ? "\"a\n\nb\"," : "a,") + std::string(i % 1000 == 999 ? "C(" : "C") + ",m" +
            std::to_string(i) + (i == 4999 ? "" : "\n");
    line += i % 7 == 0 ? 3 : 1;
  }
  const std::string file = Write("a.csv", text);
  CapturedReports reports;
  ZQMolDatabase db;
  ASSERT_TRUE(db.Open(file));
  ASSERT_EQ(db.GetMaxMolIdx(), lines.size());
  for (unsigned int i = 0; i < lines.size(); ++i) {
    const std::string where =
        "record " + std::to_string(i + 1) + " of " + file + ", line " + std::to_string(lines[i]);
    ASSERT_EQ(db.GetWhere(i), where);
    ASSERT_EQ(db.GetTitle(i), "m" + std::to_string(i));
    ZQMol mol;
    ASSERT_EQ(db.GetMolecule(mol, i), i % 1000 != 999);
    const bool isHere = mol.IsValid() || reports.Take()[0].starts_with(where + ": SMILES column 3");
    EXPECT_TRUE(isHere) << where;
  }
  const std::string none = "2: found the end, expected a SMILES";
  const std::string unclosed = "3: found the end, expected a closing quote";
  for (const auto& [record, fault] : std::vector<std::pair<std::string, std::string>>{
           {"x", none},
           {"x,,n", none},
           {"x,\"\"", none},
           {"x,C,\"n\nx,C,n\n", unclosed},
           {"x,C,\"n\"\"", unclosed},
           {"x,C,\"", unclosed},
           {"x,\"C\"C,n",
            "2: found \"C\", expected a comma or the end of the line behind a closing quote"},
           {"x,C,n,,more", "5: found \"more\", expected one of 3 columns"}}) {
    const std::string bad = Write("bad.csv", text.substr(0, text.find('\n', 9) + 1) + record);
    ZQMol mol;
    ASSERT_TRUE(db.Open(bad));
    ASSERT_EQ(db.GetMaxMolIdx(), 1U) << record;
    EXPECT_FALSE(db.GetMolecule(mol, 0));
    std::string expected = "record 1 of ";
    EXPECT_EQ(reports.Take(), Texts{expected.append(bad).append(", line 3: field ").append(fault)});
  }
}

TEST_F(MolDatabase, ContentIsReadLikeAFile) {
  ZQMolDatabase db;
  for (const std::string& content : {packedFirst + packedSecond, std::string("C\nC\nO")}) {
    ASSERT_TRUE(db.OpenContent(content, "it", {"smi", "", ""}));
    EXPECT_EQ(db.GetMaxMolIdx(), 3U);
    EXPECT_EQ(db.GetSmiles(2), "O");
    EXPECT_EQ(db.GetWhere(2), "record 3 of it");
  }
  ASSERT_TRUE(db.OpenContent("smiles\nN", "a.csv", {}));
  EXPECT_EQ(db.GetSmiles(0), "N");
}

TEST_F(MolDatabase, SdfRecordsEndAtTheirDelimiter) {
  const std::vector<Record> three{{"first", "C"}, {"second", nullptr}, {"", "N"}};
  const std::string text = Molfile("first", "C") + "> <NOTE>\n a $$$$\n\n$$$$\n" +
                           Molfile("second", "Xx") + "$$$$\n" + Molfile("", "N");
  ExpectRecords(Write("a.sdf", text), three);
  ExpectRecords(Write("b.sd", text + "$$$$"), three);
  ExpectRecords(Write("c.sdf", text + "$$$$\n\n \n"), three);
  std::string withReturns;
  for (const char c : text) withReturns += c == '\n' ? "\r\n" : std::string(1, c);
  ExpectRecords(Write("d.sdf", withReturns), three);
  ExpectRecords(Write("e.mol", Molfile("one", "O")), {{"one", "O"}});
  ExpectRecords(Write("empty.sdf", ""), {});
}

TEST_F(MolDatabase, ReportsTheRecordThatCannotBeRead) {
  CapturedReports reports;
  ZQMolDatabase db;
  ZQMol mol;
  const std::string smi = Write("a.smi", "C\nC[] bad\n");
  ASSERT_TRUE(db.Open(smi));
  EXPECT_FALSE(db.GetMolecule(mol, 1));
  EXPECT_FALSE(db.GetMolecule(mol, 2));
  const std::string sdf = Write("a.sdf", Molfile("a", "C") + "$$$$\n" + Molfile("b", "Xx"));
  ASSERT_TRUE(db.Open(sdf));
  EXPECT_FALSE(db.GetMolecule(mol, 1));
  EXPECT_EQ(
      reports.Take(),
      (Texts{"record 2 of " + smi + ": SMILES column 3: found \"]\", expected an element symbol",
             "There is no molecule of index 2 among 2",
             "record 2 of " + sdf + ": molfile line 5: found \"Xx\", expected an element symbol"}));
  EXPECT_EQ(db.GetTitle(2), "");
}

TEST_F(MolDatabase, RefusesWhatItCannotOpen) {
  std::filesystem::create_directory(Path("folder.smi"));
  ASSERT_EQ(mkfifo(Path("pipe.smi").c_str(), 0600), 0);
  std::string damaged = packedFirst;
  damaged[damaged.size() - 8] ^= 1;  // the checksum
  const std::string unknown =
      "Not one of " + ZQGetMolFileExtensions() + ", each also with .gz behind it";
  const char* noHeader = "The gzip data is damaged: incorrect header check";
  const char* cut = "The gzip data is cut short";
  std::vector<std::pair<std::string, std::string>> cases{
      {Path("none.smi"), "No such file or directory"},
      {Path("folder.smi"), "Is a directory"},
      {Path("pipe.smi"), "Not a regular file"},
      {Write("a.xyz", "C"), unknown},
      {Write("smi", "C"), unknown},
      {Write("plain.smi.gz", "CCO"), noHeader},
      {Write("tail.smi.gz", packedFirst + "junk"), noHeader},
      {Write("sum.smi.gz", damaged), "The gzip data is damaged: incorrect data check"},
      {Write("empty.csv", "\xef\xbb\xbf \n"), "There is no header line"},
      {Write("none.csv", "SMILE,\"a\"\"\",,\x01" + std::string(61, 'x')),
       "No column is named SMILES or canonical_smiles, but there are \"SMILE\", \"a\"\", \"\", "
       "\"\\x01" +
           std::string(59, 'x') + "...\""},
      {Write("many.csv", Repeated("a,", 30) + "b,c"),
       "No column is named SMILES or canonical_smiles, but there are " + Repeated("\"a\", ", 29) +
           "\"a\" and 2 more"},
      {Write("open.tsv", "smiles\t\"a\nC\tb"),
       "The header line, field 2: found the end, expected a closing quote"},
  };
  for (std::size_t length = 0; length < packedFirst.size(); ++length) {
    const std::string name = "cut" + std::to_string(length) + ".smi.gz";
    cases.emplace_back(Write(name, packedFirst.substr(0, length)), cut);
  }
  CapturedReports reports;
  for (const auto& [file, cause] : cases) {
    ZQMolDatabase db;
    ASSERT_TRUE(db.Open(Write("good.smi", "C")));
    EXPECT_FALSE(db.Open(file));
    EXPECT_EQ(db.GetMaxMolIdx(), 0U);
    std::string expected = "Can't read molecules from ";
    expected.append(file).append(": ").append(cause);
    EXPECT_EQ(reports.Take(), Texts{expected});
  }
}

TEST_F(MolDatabase, ManyThreadsReadOneDatabase) {
  std::string text;
  std::vector<std::string> expected;
  for (unsigned int i = 0; i < 3000; ++i) {
    const std::string& smiles = SampleSmiles()[i % SampleSmiles().size()];
    text += smiles + " m" + std::to_string(i) + '\n';
    const ZQMol mol = ReadSmiles(smiles);
    expected.push_back(ZQMolToSmiles(mol));
  }
  ZQMolDatabase db;
  ASSERT_TRUE(db.Open(Write("a.smi", text)));
  ASSERT_EQ(db.GetMaxMolIdx(), expected.size());
  std::atomic<unsigned int> wrong{0};
  OnThreads(4, [&](unsigned int t) {
    ZQMol mol;
    for (unsigned int i = t % 2; i < expected.size(); ++i) {
      wrong += !db.GetMolecule(mol, i) || mol.GetTitle() != "m" + std::to_string(i) ||
               ZQMolToSmiles(mol) != expected[i];
    }
  });
  EXPECT_EQ(wrong, 0U);
}

}  // namespace Quarnel
