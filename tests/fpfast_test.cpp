#include "korvex/fpfast.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstring>
#include <filesystem>

#include "fp_helpers.h"
#include "korvex/fpfast_local.h"
#include "korvex/mmapfile.h"
#include "mol_helpers.h"

using namespace ZQKorvex;

namespace {

constexpr const char* typeText = "Path,ver=2.0.0,size=256,bonds=0-5,atype=AtmNum,btype=Order";

/// A header of four lines with W and N filled in, truncated or padded to `size` bytes.
std::string Header(const std::string& lines, std::uint64_t numWords, std::uint64_t count,
                   std::size_t size = 800) {
  std::string header = lines;
  header.resize(784);
  header += ZQConvert(numWords) + ZQConvert(count);
  header.resize(size);
  return header;
}

}  // namespace

TEST(Format, WorkedExample) {
  const ZQFPTypeBase* type = PathTypeOf(256);
  auto fps = RandomFingerPrints(2, 256);
  fps[0].ClearBits();
  fps[0].SetBitOn(0);
  fps[0].SetBitOn(65);
  std::string bytes = DatabaseBytes(fps, type);
  EXPECT_EQ(bytes.size(), 896U);
  EXPECT_EQ(ZQGetFPDatabaseFileSize(2, type), 896U);
  EXPECT_EQ(ZQGetFPDatabaseFileSize(0, type), 800U);
  EXPECT_EQ(ZQGetFPDatabaseFileSize(1UL << 60, type), ~0UL);  // too long for any file
  EXPECT_EQ(ZQGetFPDatabaseFileSize(~0UL / 48, type), ~0UL);
  const std::string lines = "LE\nmols.smi\n" + type->GetFPTypeString() + "\n2\n";
  EXPECT_EQ(bytes.substr(0, lines.size()), lines);
  EXPECT_EQ(bytes.substr(lines.size(), 784 - lines.size()), std::string(784 - lines.size(), '\0'));
  using namespace std::string_literals;
  EXPECT_EQ(bytes.substr(784, 16), "\4\0\0\0\0\0\0\0\2\0\0\0\0\0\0\0"s);
  EXPECT_EQ(bytes.substr(800, 25), "\0\0\0\0\0\0\0\0\2\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\2"s);
  EXPECT_EQ(bytes.substr(848, 8), "\1\0\0\0\0\0\0\0"s);

  const TempFile file("example.fpbin");
  file.Write(bytes);
  const ZQFastFPDatabaseParams params(file.Name());
  ASSERT_TRUE(params.IsValid());
  EXPECT_TRUE(params.IsLittleEndian());
  EXPECT_EQ(params.GetMoleculeFile(), "mols.smi");
  EXPECT_EQ(params.GetFPTypeBase(), type);
  EXPECT_EQ(params.NumFingerPrints(), 2U);
  EXPECT_EQ(params.NumWords(), 4U);
  EXPECT_EQ(params.GetFileSize(), 896U);
  EXPECT_TRUE(params.IsConsistent());
}

TEST(Format, Conversions) {
  EXPECT_EQ(ZQConvert(std::uint64_t{0x0807060504030201}), "\1\2\3\4\5\6\7\10");
  EXPECT_EQ(ZQConvert(std::string("\1\2\3\4\5\6\7\10")), 0x0807060504030201U);
  std::vector<std::uint64_t> words;
  EXPECT_EQ(ZQConvertHeader(words, std::string(790, 'A') + "B"), 100U);
  EXPECT_EQ(words[97], 0x4141414141414141U);
  EXPECT_EQ(words[98], 0x0042414141414141U);
  EXPECT_EQ(words[99], 0U);
  std::string header = "x";
  ZQConvertHeader(header, words);
  EXPECT_EQ(header.substr(0, 3), "xAA");
  EXPECT_EQ(header.size(), 801U);

  const ZQFingerPrint fp = RandomFingerPrints(1, 256)[0];
  EXPECT_EQ(ZQConvertFP(words, fp, ZQPopCountPOPCNT), fp.CountBits());
  ZQFingerPrint back;
  EXPECT_TRUE(ZQConvertFP(back, fp.GetFPTypeBase(), words));
  EXPECT_EQ(back, fp);
  // The count is in bytes for words, too.
  EXPECT_TRUE(ZQConvertFP(back, fp.GetFPTypeBase(), words.data(), 12));
  EXPECT_EQ(back.GetSize(), 96U);
  EXPECT_EQ(back.Words()[1], words[1] & 0xFFFFFFFF);
  EXPECT_TRUE(ZQConvertFP(back, fp.GetFPTypeBase(), std::vector<std::uint64_t>()));
  EXPECT_EQ(back.GetSize(), 0U);

  CapturedReports reports;
  EXPECT_EQ(ZQConvert(std::string("1234567")), 0U);
  EXPECT_FALSE(ZQConvertFP(back, nullptr, words));
  EXPECT_FALSE(ZQConvertFP(back, fp.GetFPTypeBase(), static_cast<unsigned char*>(nullptr), 8));
  EXPECT_EQ(reports.Take(), Texts(3, "Assertion"));
  EXPECT_EQ(ZQWriteFastFingerPrintBlob(0, ZQFingerPrint()), "");
  EXPECT_EQ(reports.Take(), Texts{"ZQWriteFastFingerPrintBlob() : uninitialized fingerprint!"});
  EXPECT_EQ(ZQWriteFastFPDatabaseHeaderBlob({}), "");
  EXPECT_EQ(reports.Take(), Texts{"Assertion"});
}

TEST(Format, TypesThatMayBeStored) {
  CapturedReports reports;
  EXPECT_TRUE(CheckFingerPrintType(PathTypeOf(4096), "me()"));
  EXPECT_TRUE(reports.Take().empty());
  for (const auto& [type, text] : {
           std::pair(static_cast<const ZQFPTypeBase*>(nullptr),
                     "me() invalid fingerprint pointer!"),
           std::pair(ZQGetFPType(ZQFPType::MACCS166),
                     "me() invalid fingerprint type (only path, circular or tree allowed)!"),
           std::pair(PathTypeOf(4000),
                     "me() invalid fingerprint size (has to be multiple of 256)!"),
       }) {
    reports.Take();
    EXPECT_FALSE(CheckFingerPrintType(type, "me()"));
    EXPECT_EQ(reports.Take(), Texts{text});
  }
}

TEST(HeaderReader, WhatItRefuses) {
  const TempFile file("bad.fpbin");
  const std::string type = std::string(typeText) + "\n";
  const std::string before = "ZQFastFPDatabaseParams() ";
  const std::string after = file.Name() + " header";
  const std::string junk(1400, 'x');
  for (const auto& [content, text] : std::vector<std::pair<std::string, std::string>>{
           {"", "invalid fingerprint database file " + file.Name()},
           {Header("LE\nm\n" + type + "0\n", 4, 0, 100),
            "invalid fingerprint database file " + file.Name()},
           {std::string(900, 'x'), "cannot read molecule filename from " + after},
           {"LE\n" + junk, "cannot read molecule filename from " + after},
           {"LE\nm\n" + junk, "cannot read fingerprint type from " + after},
           {Header("LE\nm\nPath\n0\n", 4, 0), "invalid fingerprint type in " + after},
           {"LE\n" + std::string(100, 'm') + "\n" + type + "12",
            "cannot read number of fingerprints from " + after},
           {Header("LE\nm\n" + type + "-1\n", 4, 0), "invalid number of fingerprints in " + after},
           {Header("LE\nm\n" + type + "2 \n", 4, 2), "invalid number of fingerprints in " + after},
           {Header("LE\nm\n" + type + "99999999999999999999\n", 4, 0),
            "invalid number of fingerprints in " + after},
           {Header("LE\nm\n" + type + "3\n", 4, 2),
            "inconsistent number of fingerprints in " + after},
           {Header("LE\n" + std::string(50, 'm') + "\n" + type + "2\n", 4, 2, 150),
            "inconsistent number of fingerprints in " + after},
       }) {
    file.Write(content);
    CapturedReports reports;
    EXPECT_FALSE(ZQFastFPDatabaseParams(file.Name()).IsValid());
    EXPECT_EQ(reports.Count(ZQErrorLevel::Fatal), 0U) << content.substr(0, 80);
    const Texts texts = reports.Take();
    ASSERT_FALSE(texts.empty()) << text;
    EXPECT_EQ(texts.back(), before + text);
  }
  CapturedReports reports;
  const Texts report{before + "invalid fingerprint type in " + after};
  for (const char* illegal :
       {"Path,ver=2.0.0,size=0008,bonds=0-5", "Tree,ver=2.0.0,size=256,bonds=0-20",
        "Path,ver=2.0.0,size=65536,bonds=0-5", "UHPath,ver=2.0.0,bonds=0-256",
        "Circular,ver=2.0.0,size=256,radius=3-2", "UHTree,ver=2.0.0,numbits=256,bonds=0-5"}) {
    const std::string illegalType = std::string(illegal) + ",atype=AtmNum,btype=Order\n";
    file.Write(Header("LE\nm\n" + illegalType + "2\n", 4, 2));
    EXPECT_FALSE(ZQFastFPDatabaseParams(file.Name()).IsValid());
    EXPECT_EQ(reports.Take(), report) << illegal;
  }
  for (const std::string& name : {std::string("/no/such/file"), ::testing::TempDir()}) {
    EXPECT_FALSE(ZQFastFPDatabaseParams(name).IsValid());
    EXPECT_EQ(reports.Take(),
              Texts{"ZQFastFPDatabaseParams() cannot open fingerprint database file " + name});
  }
}

TEST(HeaderReader, WhatItTakes) {
  const TempFile file("odd.fpbin");
  const std::string lines = std::string("\nm\n") + typeText + "\n2\n";
  for (const std::string& start :
       {std::string("BE"), std::string("  what"), std::string("LE and more")}) {
    file.Write(Header(start + lines, 4, 2));
    const ZQFastFPDatabaseParams params(file.Name());
    EXPECT_TRUE(params.IsValid()) << start;
    EXPECT_EQ(params.IsLittleEndian(), start.starts_with("LE"));
    EXPECT_EQ(params.GetMoleculeFile(), "m");
    EXPECT_FALSE(params.IsConsistent());  // no records follow
  }
  // A truncated file is read as if zero bytes followed.
  file.Write(Header("LE\n" + std::string(100, 'm') + "\n" + typeText + "\n0\n", 0, 0, 200));
  EXPECT_TRUE(ZQFastFPDatabaseParams(file.Name()).IsValid());
}

TEST(HeaderReader, ConsistencyIsOfSizeAndWords) {
  const TempFile file("lie.fpbin");
  const std::string lines = std::string("LE\nm\n") + typeText + "\n";
  struct Case {
    std::uint64_t numWords, count;
    std::size_t size;
    bool consistent;
  };
  for (const Case& c : {Case{4, 2, 896, true}, Case{4, 0, 800, true}, Case{4, 2, 895, false},
                        Case{4, 2, 897, false}, Case{8, 2, 960, false}, Case{4, 3, 896, false},
                        Case{(1UL << 58) + 4, 0, 800, false}, Case{4, (1UL << 60) + 2, 896, false},
                        Case{~0UL - 1, 5, 800, false}}) {
    file.Write(Header(lines + std::to_string(c.count) + "\n", c.numWords, c.count, c.size));
    const ZQFastFPDatabaseParams params(file.Name());
    ASSERT_TRUE(params.IsValid());
    EXPECT_EQ(params.IsConsistent(), c.consistent) << c.numWords << " " << c.count;
  }
}

TEST(MappedFiles, WriteAndRead) {
  const TempFile file("mapped");
  file.Write("an older and longer content of the file");
  ZQFastFPDatabaseParams params;
  params.SetMoleculeFile("m");
  params.SetFPTypeBase(PathTypeOf(256));
  params.SetNumFingerPrints(1);
  {
    MMapOutputFile out;
    EXPECT_FALSE(ZQWriteFastFPDatabaseParams(out, params));  // not mapped
    ASSERT_TRUE(out.Open(file.Name(), 848));
    EXPECT_FALSE(ZQWriteFastFPDatabaseParams(out, {}));  // no type
    EXPECT_TRUE(ZQWriteFastFPDatabaseParams(out, params));
  }
  EXPECT_EQ(file.Read(), ZQWriteFastFPDatabaseHeaderBlob(params) + std::string(48, '\0'));
  MMapInputFile in;
  ASSERT_TRUE(in.Open(file.Name(), 848));
  in.PageIn();
  EXPECT_EQ(std::memcmp(in.GetBase(), "LE\nm\n", 5), 0);
  in.Close();
  EXPECT_EQ(in.GetBase(), nullptr);
  in.Close();
  // An open stream refers to its own file even if the name is reused.
  zqifstream stream(file.Name());
  std::filesystem::remove(file.Name());
  file.Write("another file");
  ASSERT_TRUE(in.Open(stream, file.Name(), 848));
  stream.Close();
  EXPECT_EQ(std::memcmp(in.GetBase(), "LE\nm\n", 5), 0);
  CapturedReports reports;
  EXPECT_FALSE(in.Open(stream, file.Name(), 12));
  EXPECT_EQ(reports.Take(), Texts{"Error opening file for reading: " + file.Name()});
}

TEST(MappedFiles, TheUmaskSaysWhoMayRead) {
  const TempFile file("masked");
  for (const mode_t mask : {0022, 0077, 0002}) {
    std::filesystem::remove(file.Name());
    const mode_t before = umask(mask);
    MMapOutputFile().Open(file.Name(), 10);
    umask(before);
    EXPECT_EQ(static_cast<mode_t>(std::filesystem::status(file.Name()).permissions()),
              0666 & ~mask);
  }
}

TEST(MappedFiles, Failures) {
  CapturedReports reports;
  MMapInputFile in;
  MMapOutputFile out;
  EXPECT_FALSE(in.Open("/no/such/file", 10));
  EXPECT_FALSE(out.Open("/no/such/file", 10));
  const TempFile file("failing");
  file.Write("12345");
  EXPECT_FALSE(in.Open(file.Name(), 0));
  EXPECT_FALSE(out.Open(file.Name(), std::uint64_t{1} << 63));
  EXPECT_FALSE(out.Open(file.Name(), std::uint64_t{1} << 55));  // too large for any disk
  EXPECT_EQ(reports.Take(), (Texts{"Error opening file for reading: /no/such/file",
                                   "Error opening file for writing: /no/such/file",
                                   "Error mmapping the file: " + file.Name(),
                                   "Error calling lseek() to 'stretch' the file",
                                   "Error calling lseek() to 'stretch' the file"}));
  EXPECT_EQ(in.GetBase(), nullptr);
  EXPECT_EQ(file.Read(), "");
}
