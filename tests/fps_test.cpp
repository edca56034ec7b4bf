// FPS files: reading, writing, and the program's ways from and to databases.

#include <sys/stat.h>

#include <cmath>
#include <set>
#include <sstream>

#include "contract/bostrel/strings.h"
#include "korvex/korvex.h"
#include "tests/mol_helpers.h"
#include "tests/program_helpers.h"

namespace ZQKorvex {
namespace {

using Words = std::vector<std::uint64_t>;

// What the reader returns, and its messages.
struct Content {
  bool isOpen = false;
  bool isGood = false;
  std::uint64_t skipped = 0;
  ZQFPSHeader header;
  std::vector<Words> words;
  std::vector<std::string> ids;
  std::vector<std::string> messages;
};

template <class... Source>
Content ReadAll(Source&&... source) {
  CapturedReports reports;
  ZQFPSReader reader;
  Content content;
  content.isOpen = reader.Open(source...);
  content.header = reader.GetHeader();
  for (ZQFPSRecord record; reader.Read(record);) {
    content.words.emplace_back(record.words, record.words + (content.header.numBits + 63) / 64);
    content.ids.emplace_back(record.id);
  }
  content.isGood = reader.IsGood();
  content.skipped = reader.NumSkipped();
  content.messages = reports.Take();
  return content;
}

Content ReadText(const std::string& text) {
  std::istringstream in(text);
  return ReadAll(in, "a.fps");
}

// Random bits, and ids of random lengths.
struct Sample {
  Sample(unsigned int bits, std::size_t count) {
    header.numBits = bits;
    std::mt19937_64 random(bits);
    for (std::size_t i = 0; i < count; ++i) {
      Words& fp = words.emplace_back((bits + 63) / 64);
      for (std::uint64_t& word : fp) word = random() & random();
      if (bits % 64 != 0) fp.back() &= (std::uint64_t{1} << bits % 64) - 1;
      ids.push_back("id " + std::string(random() % 40, 'x') + std::to_string(i));
    }
  }
  template <class... Target>
  void Write(Target&&... target) const {
    ZQFPSWriter writer;
    ASSERT_TRUE(writer.Open(target..., header));
    for (std::size_t i = 0; i < words.size(); ++i) writer.Write(words[i].data(), ids[i]);
    EXPECT_TRUE(writer.Close());
    EXPECT_FALSE(writer.Write(words[0].data(), "late"));
  }

  ZQFPSHeader header;
  std::vector<Words> words;
  std::vector<std::string> ids;
};

TEST(FPSTest, WhatIsWrittenIsReadAgain) {
  const WorkFolder folder;
  // Each of several buffers of the reader and the writer, with a ragged end. Sizes with and without
  // bits past the size, of less than a block of the conversions and of several and a part.
  for (const auto& [bits, count] : {std::pair{1U, 9U},
                                    {7U, 9U},
                                    {64U, 30000U},
                                    {166U, 20000U},
                                    {881U, 5000U},
                                    {1024U, 5000U},
                                    {4096U, 700U},
                                    {zqFPSMaxBits, 4U}}) {
    Sample sample(bits, count);
    sample.header.type = "Foreign/1 size=7";
    sample.header.software = "b";
    sample.header.sources = {"one file", "two"};
    sample.header.date = "2026-01-01T00:00:00";
    sample.header.others = {{"x", "y=z"}, {"x", "again"}};
    std::ostringstream out;
    sample.Write(out, "stream");
    for (const char* name : {"a.fps", "a.FPS.GZ"}) sample.Write(folder / name);
    EXPECT_TRUE(out.str() == ReadFile(folder / "a.fps"));
    for (const Content& read :
         {ReadText(out.str()), ReadAll(folder / "a.fps"), ReadAll(folder / "a.FPS.GZ")}) {
      EXPECT_EQ(read.messages, std::vector<std::string>()) << bits;
      EXPECT_TRUE(read.isGood && read.words == sample.words && read.ids == sample.ids) << bits;
      EXPECT_EQ(read.header.numBits, bits);
      EXPECT_EQ(read.header.type + read.header.software + read.header.date,
                sample.header.type + sample.header.software + sample.header.date);
      EXPECT_EQ(read.header.sources, sample.header.sources);
      EXPECT_EQ(read.header.others, sample.header.others);
    }
  }
}

TEST(FPSTest, FollowsTheFormat) {
  // Byte 0 first, its lowest bit first; both cases; a third field; no last line feed.
  for (const auto& [start, end] : {std::pair{"", "\n"}, {"\xEF\xBB\xBF", "\r\n"}}) {
    std::string text = start;
    for (const char* line : {"#FPS1", "#num_bits=12", "#type=T", "0108\tone two\tmore", "fF0a\t"}) {
      text.append(line).append(end);
    }
    const Content read = ReadText(text.append("0000\tlast"));
    EXPECT_EQ(read.messages, std::vector<std::string>());
    EXPECT_EQ(read.words, (std::vector<Words>{{0x801}, {0xAFF}, {0}}));
    EXPECT_EQ(read.ids, (std::vector<std::string>{"one two", "", "last"}));
    EXPECT_EQ(read.header.type, "T");
  }
  // Bits of the caller past the size aren't written, nor what would end an id or a value.
  Sample sample(12, 1);
  sample.words = {{~std::uint64_t{0}}};
  sample.ids = {"a\tb\r\nc"};
  sample.header.type = "one\n#date=x";
  sample.header.others = {{"k\n", "v"}};
  std::ostringstream out;
  sample.Write(out, "stream");
  EXPECT_EQ(out.str(), "#FPS1\n#num_bits=12\n#type=one #date=x\n#k =v\nff0f\ta b  c\n");
}

TEST(FPSTest, BadLinesAreReportedByNumberAndLeftOut) {
  const std::string wanted = "6 digits (20 bits)";
  for (const auto& [line, found, expected] : std::vector<std::array<std::string, 3>>{
           {"", "an empty line", wanted},
           {"#type=late", "a header line after the first fingerprint", wanted},
           {"12345\tx", "5 digits", wanted},
           {"1234\tx", "4 digits", wanted},
           {"12345601\tx", "8 digits", wanted},
           {"\tx", "0 digits", wanted},
           {"123456", "the end of the line", "a tab and an id"},
           {"12", "2 digits", wanted},
           {"123456 x", "a blank in column 7", "a tab and an id"},
           {" 123456\tx", "a blank in column 1", "a hexadecimal digit"},
           {"12g456\tx", "'g' in column 3", "a hexadecimal digit"},
           {std::string("12\0\xFF", 4), "byte 0 in column 3", "a hexadecimal digit"},
           {"123450\tx", "a bit beyond the 20 of a fingerprint", "zeros there"},
           {"@23456\tx", "'@' in column 1", "a hexadecimal digit"},
           {"1234:6\tx", "':' in column 5", "a hexadecimal digit"},
           {std::string(3000000, 'a'), "more than 1048576 characters", "a shorter line"},
           {"123406\t" + std::string(1048576, 'x'), "more than 1048576 characters",
            "a shorter line"}}) {
    for (const char* end : {"\n", "\r\n"}) {
      std::string content = "#FPS1\n#num_bits=20\n010000\ta\n";
      content.append(line).append(end).append(line).append(end).append("000002\tb\n").append(line);
      const Content read = ReadText(content);
      std::string text = " of a.fps is left out: found ";
      text.append(found).append(", expected ").append(expected);
      std::vector<std::string> messages;
      for (const int number : {4, 5, 7}) {
        if (number == 7 && line.empty()) continue;
        messages.push_back("line " + std::to_string(number) + text);
      }
      EXPECT_EQ(read.messages, messages) << line.substr(0, 40);
      EXPECT_EQ(read.skipped, messages.size());
      EXPECT_TRUE(read.isGood);
      EXPECT_EQ(read.ids, (std::vector<std::string>{"a", "b"})) << line.substr(0, 40);
      EXPECT_EQ(read.words, (std::vector<Words>{{1}, {0x20000}}));
    }
  }
}

TEST(FPSTest, HeadersMayLackLines) {
  for (const auto& [text, bits, messages] :
       std::vector<std::tuple<std::string, unsigned int, std::vector<std::string>>>{
           {"#FPS1\n00ff\ta\n00\tx\n",
            16,
            {"line 3 of a.fps is left out: found 2 digits, expected 4 digits (16 bits)"}},
           {"#FPS1\n0ff\tx\n00ff\ta\n",
            16,
            {"line 2 of a.fps is left out: found 3 digits, expected an even number of digits"}},
           {"00ff\ta\n", 16, {"line 1 of a.fps: found '00ff?a', expected #FPS1"}},
           {"\xEF\xBB\xBF"
            "00ff\ta\n",
            16,
            {"line 1 of a.fps: found '00ff?a', expected #FPS1"}},
           {"#num_bits=15\n007f\ta\n",
            15,
            {"line 1 of a.fps: found '#num_bits=15', expected #FPS1"}},
           {"#FPS1\n#note\n#=x\n00ff\ta",
            16,
            {"line 2 of a.fps is left out: found '#note', expected #key=value",
             "line 3 of a.fps is left out: found '#=x', expected #key=value"}}}) {
    const Content read = ReadText(text);
    EXPECT_TRUE(read.isOpen && read.isGood) << text;
    EXPECT_EQ(read.messages, messages);
    EXPECT_EQ(read.header.numBits, bits);
    EXPECT_EQ(read.ids, std::vector<std::string>{"a"});
  }
}

TEST(FPSTest, RefusesFilesAsAWhole) {
  const std::string number = ", expected a number from 1 to 1048576";
  for (const auto& [text, cause] : std::vector<std::pair<std::string, std::string>>{
           {"", "it is empty, expected #FPS1 in line 1"},
           {"#FPS1", "no line of it is a fingerprint"},
           {"#FPS1\n#num_bits=8\n", "no line of it is a fingerprint"},
           {"#FPS1\n#num_bits=8\nxx\ty\n", "no line of it is a fingerprint"},
           {"#FPS2\n00\ta\n", "found '#FPS2' in line 1, expected #FPS1"},
           {"CCO ethanol\n", "found 'CCO ethanol' in line 1, expected #FPS1"},
           {std::string("\x7f"
                        "ELF\0\1\n00\ta\n",
                        12),
            "found '?ELF?\?' in line 1, expected #FPS1"},
           {std::string(5000000, '\0'), "line 1 has more than 1048576 characters"},
           {"#FPS1\n#num_bits=0\n00\ta\n", "found '0' as num_bits in line 2" + number},
           {"#FPS1\n#num_bits=8x\n00\ta\n", "found '8x' as num_bits in line 2" + number},
           {"#FPS1\n#num_bits=1048577\n00\ta\n", "found '1048577' as num_bits in line 2" + number},
           {"#FPS1\n#num_bits=8\n#num_bits=8\n00\ta\n",
            "line 3 is a second #num_bits, expected one"}}) {
    const Content read = ReadText(text);
    EXPECT_FALSE(read.isOpen || read.isGood) << cause;
    EXPECT_TRUE(read.ids.empty());
    EXPECT_EQ(read.messages.back(), "Can't read fingerprints from a.fps: " + cause);
  }
  const WorkFolder folder;
  EXPECT_FALSE(ReadAll(folder / "none.fps").isOpen);
  EXPECT_FALSE(ReadAll(folder.GetPath()).isOpen);
}

TEST(FPSTest, PackedFilesCutShortAreRefused) {
  const WorkFolder folder;
  const Sample sample(512, 8000);
  sample.Write(folder / "a.fps.gz");
  const std::string packed = ReadFile(folder / "a.fps.gz");
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{9}, packed.size() / 2, packed.size() - 9, packed.size() - 1}) {
    WriteFile(folder / "cut.fps.gz", packed.substr(0, size));
    const Content read = ReadAll(folder / "cut.fps.gz");
    EXPECT_FALSE(read.isGood) << size;
    ASSERT_FALSE(read.messages.empty());
    EXPECT_TRUE(read.messages.back().ends_with("cut.fps.gz: The gzip data is cut short")) << size;
  }
  WriteFile(folder / "bad.fps.gz", "#FPS1\n00\ta\n");
  EXPECT_FALSE(ReadAll(folder / "bad.fps.gz").isOpen);
  // Two members are one text; the second header's lines are left out.
  WriteFile(folder / "two.fps.gz", packed + packed);
  const Content read = ReadAll(folder / "two.fps.gz");
  EXPECT_EQ(read.ids.size(), 16000U);
  EXPECT_EQ(read.skipped, 2U);
  EXPECT_TRUE(read.isGood);
  EXPECT_EQ(ReadText(packed + packed).ids, read.ids);  // a stream, by its content
}

// Each pair computed separately, bit by bit.
double PlainScore(const Sample& sample, unsigned int measure, std::size_t query,
                  std::size_t record) {
  double q = 0;
  double r = 0;
  double c = 0;
  const double bits = sample.header.numBits;
  for (unsigned int bit = 0; bit < sample.header.numBits; ++bit) {
    const bool ofQuery = (sample.words[query][bit / 64] >> (bit % 64) & 1) != 0;
    const bool ofRecord = (sample.words[record][bit / 64] >> (bit % 64) & 1) != 0;
    q += ofQuery;
    r += ofRecord;
    c += ofQuery && ofRecord;
  }
  switch (measure) {
    case ZQSimMeasure::Tanimoto:
      return c / (q + r - c);
    case ZQSimMeasure::Cosine:
      return c / std::sqrt(q * r);
    case ZQSimMeasure::Dice:
      return 2 * c / (q + r);
    case ZQSimMeasure::Euclid:
      return std::sqrt((bits - q - r + 2 * c) / bits);
    case ZQSimMeasure::Tversky:
      return c / (0.95 * (q - c) + 0.05 * (r - c) + c);
    default:
      return (q + r - 2 * c) / bits;
  }
}

TEST(FPSTest, ScoresAreThoseOfThePlainFormulae) {
  const WorkFolder folder;
  constexpr std::size_t count = 150;  // two blocks of a scan, and a part
  for (const unsigned int bits : {8U, 166U, 881U, 1024U, 2048U}) {
    const Sample sample(bits, count);
    sample.Write(folder / "a.fps");
    const ZQFPSDatabase database(folder / "a.fps");
    ASSERT_TRUE(database.IsValid());
    EXPECT_EQ(database.NumFingerPrints(), count);
    EXPECT_EQ(database.NumBits(), bits);
    EXPECT_EQ(database.GetFPTypeBase(), nullptr);
    std::vector<ZQFingerPrint> queries(count);
    for (std::size_t i = 0; i < count; ++i) {
      EXPECT_TRUE(database.GetFingerPrint(queries[i], i));
      EXPECT_EQ(queries[i].GetSize(), bits);
      EXPECT_EQ(Words(queries[i].Words(), queries[i].Words() + queries[i].NumWords()),
                sample.words[i]);
      EXPECT_EQ(database.GetId(i), sample.ids[i]);
      EXPECT_EQ(database.FindId(sample.ids[i]), i);
    }
    EXPECT_EQ(database.FindId("id"), count);
    for (unsigned int measure = 1; measure <= 6; ++measure) {
      if (bits == 8 && measure != ZQSimMeasure::Euclid && measure != ZQSimMeasure::Manhattan) {
        continue;  // a fingerprint without bits has no plain score
      }
      ZQFPDatabaseOptions options(0, measure);
      options.SetCutoff(-1.0F);
      options.SetNumProcessors(2);
      auto all = database.GetSortedScores(queries, options);
      ZQFPHistogram expected(10, 0.0, 1.0);
      for (std::size_t q = 0; q < count; ++q) {
        auto one = database.GetSortedScores(queries[q], options);
        double last = 1.0;
        std::set<std::uint64_t> seen;
        for (auto& hit = all[q]; hit; ++hit, ++one) {
          EXPECT_NEAR(hit->GetScore(), PlainScore(sample, measure, q, hit->GetIdx()), 1e-7);
          EXPECT_LE(hit->GetScore(), last);
          last = hit->GetScore();
          seen.insert(hit->GetIdx());
          ASSERT_TRUE(one);
          EXPECT_EQ(one->GetScore(), last);
          const bool isCounted = measure == ZQSimMeasure::Tversky || hit->GetIdx() > q;
          if (isCounted) expected.AddSample(last);
        }
        EXPECT_EQ(seen.size(), count);
      }
      const ZQFPHistogram histogram = database.GetHistogram(options, 10);
      auto density = histogram.GetDensity();
      for (auto of = expected.GetDensity(); of; ++of, ++density) EXPECT_EQ(*density, *of);
      EXPECT_EQ(histogram.NumSamples(), expected.NumSamples());
      options.SetLimit(3);
      std::size_t pairs = 0;
      for (auto pair = database.GetSparseMatrix(options); pair; ++pair, ++pairs) {
        EXPECT_EQ(pair->GetIdx1(), pairs / 3);
        EXPECT_NEAR(pair->GetScore(), PlainScore(sample, measure, pairs / 3, pair->GetIdx2()),
                    1e-6);
      }
      EXPECT_EQ(pairs, 3 * count);
    }
  }
}

TEST(FPSTest, DatabasesCheckTheirArguments) {
  const WorkFolder folder;
  const Sample sample(166, 3);
  sample.Write(folder / "a.fps");
  CapturedReports reports;
  const ZQFPSDatabase database(folder / "a.fps");
  ZQFingerPrint small;
  ZQFingerPrint good;
  EXPECT_TRUE(database.GetFingerPrint(good, 2));
  small.SetSize(192);
  EXPECT_FALSE(database.GetSortedScores(small, ZQFPDatabaseOptions()));
  auto both = database.GetSortedScores({small, good}, ZQFPDatabaseOptions());
  EXPECT_FALSE(both[0]);
  ASSERT_TRUE(both[1]);
  EXPECT_EQ(both[1]->GetIdx(), 2U);
  EXPECT_FALSE(database.GetFingerPrint(small, 3));
  EXPECT_EQ(database.GetId(3), "");
  EXPECT_FALSE(database.GetSparseMatrix({4, ZQSimMeasure::Tanimoto}));
  const std::string sorted = "ZQFPSDatabase::GetSortedScores() : ";
  EXPECT_EQ(
      reports.Take(),
      (std::vector<std::string>{
          sorted + "a query of 192 bits, expected 166!",
          sorted + "a query of 192 bits, expected 166!",
          "ZQFPSDatabase::GetFingerPrint() : fingerprint index out of range!",
          "ZQFPSDatabase::GetSparseMatrix() : set to retrieve more nearest neighbors (4) than "
          "there are fingerprints (3)."}));
  const ZQFPSDatabase none(folder / "none.fps");
  EXPECT_FALSE(none.IsValid());
  EXPECT_EQ(none.NumFingerPrints(), 0U);
  EXPECT_FALSE(none.GetSortedScores(good, ZQFPDatabaseOptions()));
  EXPECT_EQ(none.GetHistogram(ZQFPDatabaseOptions(), 4).NumSamples(), 0U);
  EXPECT_EQ(reports.Take().size(), 3U);
}

class FPSProgramTest : public ProgramFixture {
 protected:
  // A good run, with the words of a line.
  std::string Good(const std::string& words) const { return Output(ZQStringTokenize(words, ' ')); }
  RunResult Shell(const std::string& line) const {
    return folder.Run({"bash", "-c", "korvex() { " KORVEX_PROGRAM " \"$@\"; }; " + line});
  }
};

TEST_F(FPSProgramTest, ConvertsDatabasesBothWays) {
  WriteFile(folder / "two.smi", "CCO one\nCCCO\n");
  Good("create two.smi a.fpbin -numbits 1024");
  for (const std::string out : {"a.fps", "a.fps.gz"}) {
    EXPECT_EQ(Good("convert a.fpbin " + out), out + ": 2 records\n");
    EXPECT_EQ(Good("convert " + out + " b.fpbin"), "b.fpbin: 2 records\n");
    EXPECT_TRUE(ReadFile(folder / "a.fpbin") == ReadFile(folder / "b.fpbin"));
  }
  const Content read = ReadAll(folder / "a.fps");
  EXPECT_EQ(read.ids, (std::vector<std::string>{"one", "1"}));
  EXPECT_EQ(read.header.type,
            ZQFastFPDatabase(folder / "a.fpbin").GetFPTypeBase()->GetFPTypeString());
  EXPECT_EQ(read.header.software, "korvex/" + ZQKorvexGetNonDebugRelease());
  EXPECT_EQ(read.header.sources, std::vector<std::string>{"two.smi"});
  EXPECT_EQ(read.header.date.size(), std::string("2026-01-01T00:00:00").size());
  // Without the molecule file, and with another.
  std::filesystem::rename(folder / "two.smi", folder / "moved.smi");
  Good("convert a.fpbin b.fps");
  EXPECT_EQ(ReadAll(folder / "b.fps").ids, (std::vector<std::string>{"0", "1"}));
  Good("convert a.fpbin b.fps -molecules moved.smi");
  EXPECT_EQ(ReadAll(folder / "b.fps").ids, read.ids);
  // Bad lines are left out and counted.
  WriteFile(folder / "c.fps", ReadFile(folder / "a.fps") + "00\tshort\n");
  EXPECT_EQ(Good("convert c.fps c.fpbin"), "c.fpbin: 2 records, 1 lines left out\n");
  EXPECT_TRUE(ReadFile(folder / "a.fpbin") == ReadFile(folder / "c.fpbin"));
  EXPECT_EQ(
      Shell("korvex convert c.fpbin - -mol - < moved.smi | gzip | korvex convert - d.fpbin").out,
      "d.fpbin: 2 records\n");
  EXPECT_TRUE(ReadFile(folder / "a.fpbin") == ReadFile(folder / "d.fpbin"));
}

TEST_F(FPSProgramTest, InfoPrintsTheHeader) {
  WriteFile(folder / "a.fps",
            "#FPS1\n#num_bits=12\n#x=y\tz\n#source=one\n#source=two\n0f00\ta\n\nff00\t\n");
  EXPECT_EQ(Good("info a.fps"),
            "file\ta.fps\nbytes\t64\ntype\t\nbits\t12\nfingerprints\t2\nlines left out\t1\n"
            "software\t\nsource\tone\nsource\ttwo\ndate\t\nx\ty z\n");
  WriteFile(folder / "cut.fps.gz", "\x1f");
  ExpectFailure({"info", "cut.fps.gz"}, 1, "cut short");
}

TEST_F(FPSProgramTest, RefusesWhatCannotBeConverted) {
  WriteFile(folder / "two.smi", "CCO one\nCCCO two\n");
  Good("create two.smi a.fpbin -numbits 256");
  Good("convert a.fpbin a.fps");
  const std::string text = ReadFile(folder / "a.fps");
  const auto with = [&](const std::string& from, const std::string& to) {
    std::string changed = text;
    return changed.replace(changed.find(from), from.size(), to);
  };
  const std::string zeros = std::string(64, '0') + "\tx\n";
  WriteFile(folder / "none.fps", "#FPS1\n" + zeros);
  WriteFile(folder / "other.fps", "#FPS1\n#type=Foreign-FP/2 size=256\n" + zeros);
  WriteFile(folder / "old.fps", with("ver=2.0.0,size=256", "ver=2.0.0,size=7"));
  WriteFile(folder / "size.fps", with("size=256", "size=512"));
  WriteFile(folder / "keys.fps",
            "#FPS1\n#num_bits=166\n#type=" + ZQGetFPType(ZQFPType::MACCS166)->GetFPTypeString() +
                "\n" + std::string(42, '0') + "\tx\n");
  WriteFile(folder / "long.fps", with("#source=", "#source=" + std::string(800, 'x')));
  WriteFile(folder / "out.fpbin", "earlier");
  Good("convert a.fpbin a.fps.gz");
  ASSERT_EQ(mkfifo((folder / "pipe.fps").c_str(), 0600), 0);
  const std::string packed = ReadFile(folder / "a.fps.gz");
  WriteFile(folder / "cut.fps.gz", packed.substr(0, packed.size() - 5));
  const std::string asItIs = "; it can be searched as it is";
  for (const auto& [words, exitCode, message] :
       std::vector<std::tuple<std::string, int, std::string>>{
           {"none.fps out.fpbin", 1, "it has no #type" + asItIs},
           {"other.fps out.fpbin", 1,
            "its #type 'Foreign-FP/2 size=256' is none of korvex" + asItIs},
           {"old.fps out.fpbin", 1, "can't be used: size 7 is outside 16 to 65535" + asItIs},
           {"size.fps out.fpbin", 1,
            "its #type has 512 bits, but its fingerprints have 256" + asItIs},
           {"keys.fps out.fpbin", 1, "a multiple of 256 bits" + asItIs},
           {"long.fps out.fpbin", 1, "the #source of long.fps is too long"},
           {"cut.fps.gz out.fpbin", 1, "The gzip data is cut short"},
           {"two.smi out.fpbin", 2, "one must end in .fpbin, the other in .fps"},
           {"a.fpbin b.fpbin", 2, "one must end in .fpbin, the other in .fps"},
           {"a.fps out.fpbin -molecules two.smi", 2, "of no use with an FPS file"},
           {"- out.fpbin -smiles-column x", 2, "of no use with an FPS file"},
           {"- out.fpbin -input-format smi", 2, "one must end in .fpbin"},
           {"- a.fps", 2, "one must end in .fpbin"},
           {"- -", 2, "one must end in .fpbin"},
           {"a.fpbin pipe.fps", 1, "pipe.fps can't be written: it is write-protected, or no"},
           {"a.fpbin none/a.fps", 1, "No such file"},
           {"a.fps none/a.fpbin", 1, "cannot write none/"},
           {"missing.fps out.fpbin", 1, "No such file"},
           {"a.fpbin b.fps -molecules missing.smi", 1, "missing.smi"}}) {
    ExpectFailure(ZQStringTokenize("convert " + words, ' '), exitCode, message);
  }
  EXPECT_EQ(ReadFile(folder / "out.fpbin"), "earlier");
  EXPECT_TRUE(std::filesystem::is_fifo(folder / "pipe.fps"));
  for (const auto& [line, message] :
       {std::pair{"korvex convert a.fpbin - > /dev/full", "standard output: No space left"},
        {"korvex convert - out.fpbin < .", "standard input: Is a directory"},
        {"korvex convert - out.fpbin <&-", "standard input: Bad file descriptor"}}) {
    const RunResult run = Shell(line);
    EXPECT_EQ(run.exitCode, 1) << line;
    EXPECT_NE(run.err.find(message), std::string::npos) << run.err;
  }
  // A full disk leaves nothing behind.
  for (const std::string out : {"b.fps", "b.fps.gz", "b.fpbin"}) {
    const RunResult run =
        folder.Run({KORVEX_PROGRAM, "convert", out == "b.fpbin" ? "a.fps" : "a.fpbin", out}, 100);
    EXPECT_EQ(run.exitCode, 1) << out;
    EXPECT_NE(run.err.find("File too large"), std::string::npos) << run.err;
    EXPECT_FALSE(std::filesystem::exists(folder / out));
  }
}

TEST_F(FPSProgramTest, SearchesFilesAsTheyAre) {
  std::string mols;
  for (std::size_t i = 0; i < 70; ++i) {
    mols += SampleSmiles()[i % SampleSmiles().size()] + " id" + std::to_string(i) + "\n";
  }
  WriteFile(folder / "mols.smi", mols);
  WriteFile(folder / "few.smi", Lines(mols)[3] + "\n" + Lines(mols)[5] + "\n");
  for (const std::string name : {"mols", "few"}) {
    std::string create = "create ";
    Good(create.append(name).append(".smi ").append(name).append(".fpbin -numbits 512"));
    std::string convert = "convert ";
    Good(convert.append(name).append(".fpbin ").append(name).append(".fps"));
  }
  // With a type of korvex as the database, but without SMILES.
  std::string expected;
  for (const std::string& line : Lines(Good("search mols.fpbin few.smi"))) {
    expected += line.substr(0, line.rfind('\t') + 1) + "\n";
  }
  EXPECT_EQ(Lines(expected).size(), 20U);
  for (const char* query : {"few.smi", "few.fps"}) {
    EXPECT_EQ(Good(std::string("search mols.fps ") + query), expected);
  }
  for (const char* file : {"mols.fpbin", "mols.smi"}) {
    EXPECT_EQ(Lines(Good(std::string("search ") + file + " few.fps")).size(), 20U);
  }
  EXPECT_EQ(Good("search mols.fps id3"), Good("search mols.fps " + SampleSmiles()[3]));
  EXPECT_EQ(Shell("korvex search mols.fps - -input-format fps < few.fps").out, expected);
  EXPECT_EQ(Shell("korvex search - few.fps -input-format fps < mols.fps").out, expected);
  EXPECT_EQ(Lines(Good("search mols.fps id3 -f json")).size(),
            Lines(Good("search mols.fpbin " + SampleSmiles()[3] + " -f json")).size());
  for (const std::string words : {"histogram %", "neighbors % -limit 3 -simfunc Euclid"}) {
    const auto with = [&](const std::string& name) {
      std::string text = words;
      return text.replace(text.find('%'), 1, name);
    };
    EXPECT_EQ(Good(with("mols.fps")), Good(with("mols.fpbin")));
  }
  // Of another program, with a bad line.
  WriteFile(folder / "other.fps",
            "#FPS1\n#num_bits=10\n#type=Foreign/1\n0700\tone\n07\tcut\n0301\tt w o\n");
  WriteFile(folder / "query.fps", "#FPS1\n#num_bits=10\n0700\t\n0300\t\n");
  const RunResult run = Korvex({"search", "other.fps", "query.fps"});
  EXPECT_EQ(run.out,
            "1\t1\t1.000000\t0\tone\t\n1\t2\t0.500000\t1\tt w o\t\n"
            "2\t1\t0.666667\t0\tone\t\n2\t2\t0.666667\t1\tt w o\t\n");
  EXPECT_NE(run.err.find("line 5 of other.fps is left out: found 2 digits"), std::string::npos);
  EXPECT_NE(run.err.find("the queries are of type '', but other.fps is of type 'Foreign/1'"),
            std::string::npos);
  EXPECT_EQ(Output({"search", "other.fps", "t w o", "-simfunc", "Manhattan", "-limit", "1"}),
            "1\t1\t0.200000\t0\tone\t\n");
  for (const auto& [words, exitCode, message] :
       std::vector<std::tuple<std::string, int, std::string>>{
           {"search other.fps CCO", 1,
            "'CCO' is neither an FPS file nor an id of other.fps, and can't be a molecule: its "
            "#type 'Foreign/1' is none of korvex"},
           {"search other.fps few.smi", 1, "its #type 'Foreign/1' is none of korvex"},
           {"search other.fps few.fps", 1,
            "the queries of few.fps have 512 bits, but other.fps has fingerprints of 10"},
           {"search mols.fpbin query.fps", 1,
            "query.fps can be compared with FPS files only: it has no #type"},
           {"search missing.fps CCO", 1, "No such file"},
           {"search mols.fps missing.fps", 1, "No such file"},
           {"search mols.fps CCO -html a.html", 2, "with FPS files"},
           {"search mols.fps CCO -molecules few.smi", 2, "with FPS files"},
           {"search mols.fps CCO -memtype CUDA", 2, "with FPS files"},
           {"search mols.fps CCO -numbits 512", 2, "with FPS files"},
           {"search mols.smi few.fps -html a.html", 2, "with stored queries"},
           {"histogram mols.fps -memtype CUDA", 2, "with FPS files"},
           {"neighbors missing.fps", 1, "No such file"}}) {
    ExpectFailure(ZQStringTokenize(words, ' '), exitCode, message);
  }
}

}  // namespace
}  // namespace ZQKorvex
