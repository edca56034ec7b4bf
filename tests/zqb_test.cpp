// The binary container, and fingerprints in it: round trips, records of old releases, files with
// records of others, and damaged ones.

#include "contract/bostrel/zqb.h"

#include <gtest/gtest.h>

#include <map>

#include "korvex/fpkinds.h"
#include "korvex/fptypes.h"
#include "korvex/fpzqb.h"
#include "tests/memory_helpers.h"
#include "tests/mol_helpers.h"

namespace ZQKorvex {
namespace {

// Numbers as they are stored.
std::string Little(std::uint64_t number, std::size_t size) {
  std::string bytes;
  for (; size != 0; --size, number >>= 8) bytes += static_cast<char>(number & 255);
  return bytes;
}
std::string Framed(const std::string& tag, const std::string& data) {
  return Little(tag.size(), 4) + tag + Little(data.size(), 8) + data;
}
std::string Record(const std::string& data) { return Framed("ZQFingerPrint", data); }
std::string Stored(const ZQFingerPrint& fp) {
  zqosstream out;
  EXPECT_TRUE(ZQBinaryWrite(out, fp, ZQBinaryIOHandler()));
  return out.str();
}
// The status of reading the only record.
unsigned int Read(const std::string& bytes, ZQFingerPrint& fp) {
  zqisstream in(bytes);
  return ZQBinaryRead(in, fp, ZQBinaryIOHandler());
}
std::string WordsOf(const ZQFingerPrint& fp) {
  return {reinterpret_cast<const char*>(fp.Words()), 8 * std::size_t{fp.NumWords()}};
}
// The data of a record.
std::string Data(unsigned int kind, const std::string& type, std::uint64_t numbits,
                 const std::string& words) {
  return Little(kind, 4) + type + Little(numbits, 4) + words;
}

TEST(ZQB, RecordsOfEveryKind) {
  const std::map<unsigned int, std::size_t> sizes = {{ZQFPType::Path, 4 + 2 + 8 + 4 + 512},
                                                     {ZQFPType::Circular, 4 + 2 + 8 + 4 + 512},
                                                     {ZQFPType::Tree, 4 + 2 + 8 + 4 + 512},
                                                     {ZQFPType::MACCS166, 4 + 2 + 4 + 24},
                                                     {ZQFPType::Lingo, 4 + 2 + 4 + 24}};
  CapturedReports reports;
  std::string file;
  std::vector<ZQFingerPrint> all;
  for (const ZQFPKind& kind : ZQGetFPKinds()) {
    ZQFingerPrint fp;
    ASSERT_TRUE(ZQMakeFP(fp, "CC(=O)Oc1ccccc1C(=O)O"_mol, kind.number));
    const std::string bytes = Stored(fp);
    file += bytes;
    ZQFingerPrint read;
    if (kind.IsUnhashed()) {
      EXPECT_EQ(bytes, Record(Data(kind.number, "", fp.GetSize(), WordsOf(fp))));
      EXPECT_EQ(Read(bytes, read), ZQBStatus::Ok);
      EXPECT_FALSE(read);
      EXPECT_TRUE(static_cast<ZQBitVector&>(read) == fp);
      EXPECT_EQ(reports.Take(), (Texts{"fingerprint with unknown type cannot be written to an ZQB",
                                       "unknown fingerprint type was read from the ZQB"}));
      continue;
    }
    std::string type = Little(kind.version, 2);
    if (kind.HasParams()) type += Little(fp.GetFPTypeBase()->GetID(), 8);
    EXPECT_EQ(bytes, Record(Data(kind.number, type, fp.GetSize(), WordsOf(fp))));
    EXPECT_EQ(bytes.size(), 4 + 13 + 8 + sizes.at(kind.number)) << kind.name;
    EXPECT_EQ(Read(bytes, read), ZQBStatus::Ok);
    EXPECT_TRUE(read == fp && read.GetFPTypeBase() == fp.GetFPTypeBase()) << kind.name;
    EXPECT_EQ(Read(bytes, read), ZQBStatus::BadFrame) << "an object with a type";
    EXPECT_EQ(reports.Take(), Texts{"Assertion"});
    EXPECT_TRUE(read == fp);
    all.push_back(fp);
  }
  // Cut at every byte, the whole records before the cut are there.
  const ZQBinaryIOHandler handler;
  for (std::size_t size = 0; size < file.size(); ++size) {
    zqisstream in(file.substr(0, size));
    unsigned int status = ZQBStatus::Ok;
    std::size_t count = 0;
    std::size_t end = 0;
    while (status == ZQBStatus::Ok) {
      ZQFingerPrint fp;
      status = ZQBinaryRead(in, fp, handler);
      if (status != ZQBStatus::Ok) {
        EXPECT_FALSE(fp);
        break;
      }
      end = static_cast<std::size_t>(in.tellg());
      EXPECT_TRUE(!fp || (count < all.size() && fp == all[count++]));
    }
    EXPECT_LE(end, size);
    const bool isWithinTag = size - end < 17;
    EXPECT_EQ(status, isWithinTag ? ZQBStatus::NoTag : ZQBStatus::ShortRead) << size;
  }
}

TEST(ZQB, RecordsOfOldReleasesAndOfNoKind) {
  const ZQFPTypeBase* path = ZQGetFPType(ZQFPType::Path);
  const std::string id = Little(path->GetID(), 8);
  const std::string words = Little(5, 8);
  const Texts old{"fingerprint type with old version was read from the ZQB"};
  const Texts unknown{"unknown fingerprint type was read from the ZQB"};
  const struct {
    std::string data;
    const ZQFPTypeBase* type;
    Texts reports;
  } cases[] = {
      {Data(1, "", 64, words), maccs166TypeFactory.GetFPType(0), old},
      {Data(2, id, 64, words), pathTypeFactory.GetFPType(0, path->GetID()), old},
      {Data(3, "", 64, words), lingoTypeFactory.GetFPType(0), old},
      {Data(102, Little(8192, 2) + id, 64, words), path, {}},
      {Data(102, Little(7, 2) + Little(~0ULL, 8), 64, words),
       pathTypeFactory.GetFPType(7, ~0ULL),
       {}},
      {Data(0, "", 64, words), nullptr, unknown},
      {Data(200, "", 64, words), nullptr, unknown},
      {Data(9000, "", 64, words), nullptr, unknown},
  };
  CapturedReports reports;
  for (const auto& c : cases) {
    ZQFingerPrint fp;
    EXPECT_EQ(Read(Record(c.data), fp), ZQBStatus::Ok);
    EXPECT_EQ(fp.GetFPTypeBase(), c.type);
    EXPECT_EQ(fp.CountBits(), 2U);
    EXPECT_EQ(reports.Take(), c.reports);
  }
  EXPECT_NE(pathTypeFactory.GetFPType(0, path->GetID()), path);
  // What was read of an old release can't be written as of today, nor as what it was.
  ZQFingerPrint past;
  past.SetFPTypeBase(pathTypeFactory.GetFPType(0, path->GetID()));
  EXPECT_EQ(Stored(past), Record(Data(102, Little(0, 2), 64, Little(0, 8))));
  EXPECT_EQ(reports.Take(), Texts{"Assertion"});
  // Bits beyond the size are dropped, a size of 0 is legal.
  ZQFingerPrint fp;
  EXPECT_EQ(Read(Record(Data(101, Little(8192, 2), 3, Little(~0ULL, 8))), fp), 0U);
  EXPECT_EQ(fp.CountBits(), 3U);
  EXPECT_EQ(Read(Record(""), fp), ZQBStatus::Ok);
  EXPECT_EQ(fp.CountBits(), 3U);
  ZQFingerPrint none;
  EXPECT_EQ(Read(Record(Data(101, Little(8192, 2), 0, "")), none), ZQBStatus::Ok);
  EXPECT_EQ(none.GetSize(), 0U);
}

// Bytes without positions.
struct PipeBuffer : std::streambuf {
  explicit PipeBuffer(std::string& bytes) {
    setg(bytes.data(), bytes.data(), bytes.data() + bytes.size());
  }
};

// Each damaged record is followed by a good one.
TEST(ZQB, LyingLengths) {
  const std::string maccs = Little(8192, 2);
  ZQFingerPrint good;
  ASSERT_TRUE(ZQMakeFP(good, "CCO"_mol, ZQFPType::MACCS166));
  const std::string next = Stored(good);
  const std::string frame = Little(13, 4) + "ZQFingerPrint";
  const auto keys = [&](std::uint64_t numbits, std::size_t size = 8) {
    return Record(Data(101, maccs, numbits, Little(1, size)));
  };
  const Texts tooLarge{"Max size for an ZQBitVector is INT_MAX"};
  using namespace ZQBStatus;
  const struct {
    std::string bytes;
    unsigned int status;
    bool isNextRead;
    Texts reports;
  } cases[] = {
      {keys(0xffffffff), ShortRead, true, tooLarge},
      {keys(0x80000000), ShortRead, true, tooLarge},
      {keys(0x7fffffff), ShortRead, true, {}},
      {keys(65), ShortRead, true, {}},
      {keys(64, 9), BadFrame, true, {}},
      {Record(Little(101, 4)), ShortRead, true, {}},
      {Record(Little(102, 4) + maccs + "1234567"), ShortRead, true, {}},
      {Record("abc"), ShortRead, true, {}},
      {frame + Little(~0ULL, 8), ShortRead, false, {"Assertion"}},
      {frame + Little(~0ULL - 1, 8), ShortRead, false, {"ZQFingerPrintReadFxn : out of memory"}},
      {frame + Little(~0ULL - 16, 8), ShortRead, false, {}},
      {frame + Little(1ULL << 62, 8), ShortRead, false, {}},
      {frame + Little(next.size() + 1, 8), ShortRead, false, {}},
      {Little(256, 4) + std::string(256, 'x') + Little(0, 8), NoTag, false, {}},
      {Little(~0U, 4) + "x", NoTag, false, {}},
  };
  CapturedReports reports;
  const ZQBinaryIOHandler handler;
  zqisstream large(Little(1 << 24, 4) + std::string(1 << 21, 'x'));
  ZQFingerPrint small;
  largestRequest = 1 << 20;
  EXPECT_FALSE(ZQReadBitVector(large, small));
  EXPECT_EQ(small.GetSize(), 64U);
  EXPECT_EQ(reports.Take(), Texts{"ZQReadBitVector : out of memory"});
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    std::string bytes = cases[i].bytes + next;
    PipeBuffer buffer(bytes);
    zqistream pipe(&buffer);
    zqisstream file(bytes);
    for (zqistream* in : {&pipe, static_cast<zqistream*>(&file)}) {
      ZQFingerPrint fp;
      EXPECT_EQ(ZQBinaryRead(*in, fp, handler), cases[i].status) << i;
      EXPECT_FALSE(fp) << i;
      EXPECT_EQ(reports.Take(), cases[i].reports) << i;
      if (!cases[i].isNextRead) continue;
      EXPECT_EQ(ZQBinaryRead(*in, fp, handler), Ok) << i;
      EXPECT_TRUE(fp == good) << i;
    }
  }
  largestRequest = std::numeric_limits<std::size_t>::max();
}

TEST(ZQB, RecordsOfOthersAreKept) {
  ZQFingerPrint fp;
  ASSERT_TRUE(ZQMakeFP(fp, "CCO"_mol, ZQFPType::Tree));
  std::string large(200'001, 'a');  // several pieces with a ragged end
  large[70'000] = '\0';
  const std::string file = Framed("", "") + Stored(fp) + Framed("Other", large) + Stored(fp) +
                           Framed(std::string(255, 't'), "\xff");
  zqisstream in(file);
  zqosstream out;
  const ZQBinaryIOHandler handler;
  unsigned int numFingerPrints = 0;
  while (true) {
    ZQFingerPrint read;
    ZQUnknownZQBData other;
    const unsigned int status = ZQBinaryRead(in, read, handler, &other);
    if (status == ZQBStatus::NoTag) break;
    if (status == ZQBStatus::Ok) {
      ++numFingerPrints;
      EXPECT_TRUE(ZQBinaryWrite(out, read, handler));
    } else {
      ASSERT_EQ(status, ZQBStatus::NoHandler);
      EXPECT_TRUE(ZQBWriteRecord(out, other));
    }
  }
  EXPECT_EQ(numFingerPrints, 2U);
  EXPECT_TRUE(out.str() == file);
  EXPECT_FALSE(ZQBWriteTag(out, std::string(256, 't')));
  out.setstate(std::ios::badbit);
  EXPECT_FALSE(ZQBinaryWrite(out, fp, handler));
}

TEST(ZQB, GenericDataOfAnObject) {
  ZQMol mol = "CCO"_mol;
  ZQFingerPrint path;
  ZQFingerPrint keys;
  ASSERT_TRUE(ZQMakeFP(path, mol, ZQFPType::Path) && ZQMakeFP(keys, mol, ZQFPType::MACCS166));
  const unsigned int tag = ZQGetTag("a tag");
  EXPECT_EQ(ZQGetTagName(tag), "a tag");
  EXPECT_EQ(ZQGetTagName(7) + ZQGetTagName(tag + 1000), "");
  mol.AddData(tag, path);
  mol.AddData(tag, 3);
  mol.AddData(7, keys);
  mol.AddData(tag, keys);
  zqosstream out;
  zqmolstreambase stream;
  ASSERT_TRUE(ZQInitFingerPrintHandlers(stream));  // again, which changes nothing
  ASSERT_TRUE(ZQBWriteGenericData(out, mol, stream.GetBinaryIOHandler()));
  const std::string bytes = out.str();
  EXPECT_EQ(bytes.substr(0, 4 + 19), Little(19, 4) + "ZQBaseZQFingerPrint");

  ZQMol other;
  zqisstream in(bytes);
  const auto read = [&] { return ZQBinaryRead<ZQBase>(in, other, stream.GetBinaryIOHandler()); };
  EXPECT_EQ(read() + read() + read(), ZQBStatus::Ok);
  EXPECT_EQ(read(), ZQBStatus::NoTag);
  std::vector<std::pair<unsigned int, bool>> found;
  for (auto datum = other.GetDataIter(); datum; ++datum) {
    const auto* fp = std::any_cast<ZQFingerPrint>(&datum->value);
    found.emplace_back(datum->tag, fp && *fp == (found.empty() ? path : keys));
  }
  EXPECT_EQ(found,
            (std::vector<std::pair<unsigned int, bool>>{{tag, true}, {7, true}, {tag, true}}));

  // Cut within, or with another record in place of the fingerprint's.
  const std::string data = bytes.substr(4 + 19 + 8);
  for (const std::string& bad :
       {std::string(), data.substr(0, 5), data.substr(0, 12),
        Little(1, 4) + "n" + Framed("Other", ""), Little(1, 4) + "n" + Record("") + "x",
        Little(0, 4) + Little(70000, 4) + Record("")}) {
    zqisstream damaged(Framed("ZQBaseZQFingerPrint", bad) + Framed("x", ""));
    EXPECT_NE(ZQBinaryRead<ZQBase>(damaged, mol, ZQBinaryIOHandler()), ZQBStatus::Ok);
    EXPECT_EQ(ZQBinaryRead<ZQBase>(damaged, mol, ZQBinaryIOHandler()), ZQBStatus::NoHandler);
  }
}

}  // namespace
}  // namespace ZQKorvex
