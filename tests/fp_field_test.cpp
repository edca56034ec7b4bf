// Fingerprints as fields of records: bytes and JSON of one and of vectors, records whose values
// change, and bytes and texts that are damaged or lie.

#include "korvex/fp_field.h"

#include <gtest/gtest.h>

#include "contract/lodrine/buffer.h"
#include "contract/lodrine/json.h"
#include "korvex/fpkinds.h"
#include "korvex/fptypes.h"
#include "tests/memory_helpers.h"
#include "tests/mol_helpers.h"

namespace ZQKorvex {
namespace {

using Field = ZQFieldType<ZQFingerPrint>;
using VectorField = ZQVectorFieldType<ZQFingerPrint>;

ZQFingerPrint MakeFP(unsigned int kind, const char* smiles = "CC(=O)Oc1ccccc1C(=O)O") {
  ZQFingerPrint fp;
  EXPECT_TRUE(ZQMakeFP(fp, ReadSmiles(smiles), kind));
  return fp;
}

// Little-endian, as on the wire.
std::string Int(std::uint64_t number) {
  std::string bytes;
  for (int i = 0; i < 8; ++i) bytes += static_cast<char>(number >> (8 * i));
  return bytes;
}
std::string Blob(const std::string& bytes) { return Int(bytes.size()) + bytes; }
const std::string flag(1, '\0');
const std::string noneBlob = Int(~0ULL);

// A fingerprint's type, number of bits and words, for comparison of untyped ones.
std::string Described(const ZQFingerPrint& fp) {
  std::string text;
  fp.ToHexString(text);
  return (fp ? fp.GetFPTypeBase()->GetFPTypeString() : "") + " " + std::to_string(fp.GetSize()) +
         " " + text;
}

TEST(FingerPrintField, EveryKindMakesTheRoundTrip) {
  CapturedReports reports;
  const Field field;
  for (const ZQFPKind& kind : ZQGetFPKinds()) {
    SCOPED_TRACE(kind.name);
    const ZQFingerPrint fp = MakeFP(kind.number);
    EXPECT_TRUE(FPFromJSONStr(FPToJSONStr(fp)) == fp);
    EXPECT_EQ(reports.Take(), Texts{});
    const std::string bytes = Field::ToBytes(fp);
    if (kind.IsUnhashed()) {
      EXPECT_EQ(bytes, "");
      EXPECT_EQ(reports.Take(), Texts{"ToBytes : fingerprints of type " +
                                      fp.GetFPTypeBase()->GetFPTypeString() + " can't be written"});
      continue;
    }
    ZQFingerPrint read = MakeFP(ZQFPType::Tree);
    EXPECT_TRUE(Field::FromBytes(read, bytes) && read == fp);
    EXPECT_EQ(field.JSONToBytes(FPToJSONStr(fp)), bytes);
    EXPECT_EQ(field.BytesToJSON(bytes), ZQQuoteJSON(FPToJSONStr(fp)));
    std::optional<ZQFingerPrint> optional;
    EXPECT_TRUE(Field::FromBytes(optional, Field::ToBytes(std::optional(fp))));
    EXPECT_TRUE(optional && *optional == fp);
    EXPECT_FALSE(Field::FromBytes(optional, Field::ToBytes(std::nullopt)) || optional);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
      EXPECT_FALSE(Field::FromBytes(read, bytes.substr(0, size)) || read) << size;
    }
    EXPECT_FALSE(Field::FromBytes(read, bytes + flag));
    EXPECT_EQ(reports.Take(), Texts(bytes.size(), "FPFromBytes : the bytes are no fingerprint"));
  }
}

TEST(FingerPrintField, HasItsWireForm) {
  ZQFingerPrint fp;
  fp.SetSize(70);
  fp.SetBitOn(0);
  fp.SetBitOn(69);
  const std::string bits = Int(70) + Blob(Int(1) + Int(32));
  EXPECT_EQ(Field::ToBytes(fp), flag + bits);
  EXPECT_EQ(Field().BytesToJSON(flag + bits), "\"\\n\"");
  fp.SetFPTypeBase(ZQGetPathFPType(70, 0, 5, 1, 1));
  const std::string id = Int(70ULL << 44 | 1 << 24 | 1 << 16 | 5);
  EXPECT_EQ(Field::ToBytes(fp), flag + Int(102) + Int(8192) + Blob(id) + bits);
  EXPECT_EQ(FPToJSONStr(fp),
            "Path,ver=2.0.0,size=70,bonds=0-5,atype=AtmNum,btype=Order\n010000000000000020");
}

// Sizes of whole and ragged words; 101 to 105 bits look like a type number, 65280 bits of a path
// like a blob that is as long as its version.
TEST(FingerPrintField, TypedAndUntypedAreToldApartAtEverySize) {
  CapturedReports reports;
  for (const unsigned int numbits : {0, 1, 63, 64, 65, 101, 102, 105, 166, 448, 65217, 65280}) {
    ZQFingerPrint fp;
    fp.SetSize(numbits);
    if (numbits != 0) fp.SetBitOn(numbits - 1);
    for (const bool typed : {false, true}) {
      if (typed) fp.SetFPTypeBase(ZQGetPathFPType(std::max(numbits, 16U), 0, 5, 1, 1));
      ZQFingerPrint read;
      EXPECT_TRUE(FPFromBytes(read, Field::ToBytes(fp)));
      EXPECT_EQ(Described(read), Described(fp));
      EXPECT_TRUE(!typed || numbits < 16 || FPFromJSONStr(FPToJSONStr(fp)) == fp) << numbits;
    }
  }
  EXPECT_EQ(reports.Take(), Texts{});
}

TEST(FingerPrintField, BytesThatLieAreReported) {
  const auto typed = [](std::uint64_t kind, std::uint64_t version, const std::string& record) {
    return flag + Int(kind) + Int(version) + Blob(record);
  };
  const std::string id = Int(ZQGetFPType(102U)->GetID());
  const std::string path = typed(102, 8192, id);
  const std::string word = Blob(Int(3));
  const std::string bits = Int(64) + word;
  const std::string noFingerPrint = "FPFromBytes : the bytes are no fingerprint";
  const std::string tooLarge = "Max size for an ZQBitVector is INT_MAX";
  const std::string unknown = "FPFromBytes : unknown fingerprint type ";
  const struct {
    std::string bytes;
    std::string report;
  } cases[] = {{"\1" + path.substr(1) + bits, noFingerPrint},
               // Bits.
               {path + Int(64) + noneBlob, noFingerPrint},
               {path + Int(65) + word, noFingerPrint},
               {path + Int(0) + word, noFingerPrint},
               {flag + Int(65) + word, noFingerPrint},
               {path + Int(~0ULL) + word, tooLarge},
               {path + Int(1ULL << 31) + word, tooLarge},
               {path + Int((1ULL << 32) + 64) + word, tooLarge},
               {flag + Int(~63ULL) + word, tooLarge},
               // Lengths.
               {path + Int(64) + Int(~0ULL >> 1) + Int(3), noFingerPrint},
               {path + Int(64) + Int(~1ULL) + Int(3), noFingerPrint},
               {path + Int(64) + Int(~7ULL) + Int(3), noFingerPrint},
               {path + Int(64) + Int(9) + Int(3), noFingerPrint},
               // Types.
               {typed(102, 65536, id) + bits, noFingerPrint},
               {typed(102, ~0ULL, id) + bits, noFingerPrint},
               {typed(102, 8192, "1234567") + bits, noFingerPrint},
               {typed(102, 8192, id + "9") + bits, noFingerPrint},
               {typed(101, 8704, id) + bits, noFingerPrint},
               {typed(102, 8192, Int(5)) + bits,
                "FPFromBytes : invalid fingerprint type, size 0 is outside 16 to 65535"},
               {typed(200, 8192, "") + bits, unknown + "200"},
               {typed(2, 0, id) + bits, unknown + "2"},
               {typed(9000, 8192, id) + bits, unknown + "9000"},
               {typed((1ULL << 32) + 102, 8192, id) + bits, unknown + "4294967398"}};
  CapturedReports reports;
  for (const auto& c : cases) {
    const std::ptrdiff_t row = &c - cases;
    ZQFingerPrint fp = MakeFP(ZQFPType::MACCS166);
    EXPECT_FALSE(FPFromBytes(fp, c.bytes)) << row;
    EXPECT_EQ(Described(fp), Described(ZQFingerPrint())) << row;
    EXPECT_EQ(reports.Take(), Texts{c.report}) << row;
  }
  ZQFingerPrint large;
  large.SetSize(1 << 24);
  const std::string largeBytes = Field::ToBytes(large);
  largestRequest = 1 << 20;
  EXPECT_FALSE(FPFromBytes(large, largeBytes));
  largestRequest = std::numeric_limits<std::size_t>::max();
  EXPECT_EQ(Described(large), Described(ZQFingerPrint()));
  EXPECT_EQ(reports.Take(), Texts{"FPFromBytes : out of memory"});
  // After a length that lies no value is read, although there are bytes.
  const std::string lie = Int(~1ULL) + Int(3);
  ZQReadBuffer in(lie);
  EXPECT_TRUE(in.ReadBlob().empty() && !in.IsValid() && in.ReadInt() == 0);
  // A type of an old version is read, and not written; bits beyond the size are dropped.
  ZQFingerPrint old;
  EXPECT_TRUE(FPFromBytes(old, typed(102, 0, id) + Int(1) + word));
  EXPECT_EQ(old.GetFPTypeBase(), ZQGetPathFPType(0, 4096, 0, 5, 191, 3));
  EXPECT_EQ(old.CountBits(), 1U);
  EXPECT_EQ(Field::ToBytes(old), "");
  EXPECT_EQ(reports.Take().size(), 1U);
}

TEST(FingerPrintField, TextsThatAreNoFingerPrintHaveNoType) {
  const std::string maccs = "MACCS166,ver=2.2.0";
  const struct {
    std::string text;
    std::string read;
    std::size_t reports;
  } cases[] = {{"", " 64 0000000000000000", 0},
               {maccs + "00", " 64 0000000000000000", 0},
               {"\n", " 0 ", 0},
               {"\nff00", " 16 ff00", 0},
               {maccs + "\nfg", " 64 0000000000000000", 1},
               {maccs + "\nff\n", " 64 0000000000000000", 1},
               {maccs + "\nff", maccs + " 8 ff", 0},
               {"Path,ver=2.0.0,size=8,bonds=0-5,atype=AtmNum,btype=Order\nff", " 8 ff", 1},
               {"Path,ver=1.0.0,size=64,bonds=0-5,atype=AtmNum,btype=Order\nff", " 8 ff", 2},
               {"\xff\n00", " 8 00", 1}};
  CapturedReports reports;
  for (const auto& c : cases) {
    EXPECT_EQ(Described(FPFromJSONStr(c.text)), c.read) << c.text;
    EXPECT_EQ(reports.Take().size(), c.reports) << c.text;
  }
}

TEST(FingerPrintVectorField, MakesTheRoundTripInBothForms) {
  CapturedReports reports;
  const ZQFingerPrint path = MakeFP(ZQFPType::Path);
  const ZQFingerPrint maccs = MakeFP(ZQFPType::MACCS166, "CCO");
  const VectorField::OptionalValues optional{path, std::nullopt, maccs};
  const std::string bytes = VectorField::ToBytes(optional);
  EXPECT_EQ(bytes, Int(3) + Blob(Field::ToBytes(path)) + noneBlob + Blob(Field::ToBytes(maccs)));
  VectorField::OptionalValues read{maccs};
  EXPECT_TRUE(VectorField::FromBytes(read, bytes));
  read.erase(read.begin());
  EXPECT_EQ(VectorField::ToBytes(read), bytes);
  VectorField::Values plain;
  EXPECT_TRUE(VectorField::FromBytes(plain, bytes));
  ASSERT_EQ(plain.size(), 3U);
  EXPECT_EQ(Described(plain[1]), Described(ZQFingerPrint()));
  EXPECT_TRUE(plain[0] == path && plain[2] == maccs);
  const std::string json = VectorField().BytesToJSON(bytes);
  EXPECT_EQ(json, "[" + ZQQuoteJSON(FPToJSONStr(path)) + ",null," +
                      ZQQuoteJSON(FPToJSONStr(maccs)) + "]");
  EXPECT_EQ(VectorField().JSONToBytes(R"({"a": 1, "value": )" + json + "}"), bytes);
  for (const std::string& none : {std::string(), Int(0), Int(~0ULL), Int(1ULL << 63)}) {
    EXPECT_EQ(VectorField::FromBytes(read, none), !none.empty());
    EXPECT_EQ(read.size(), 3U);
    EXPECT_EQ(VectorField().BytesToJSON(none), "[]");
  }
  EXPECT_EQ(reports.Take(), Texts{});
  EXPECT_EQ(VectorField().PtrToBytes(VectorField::GetCopyForCache(plain).get()),
            VectorField::ToBytes(plain));
  EXPECT_EQ(VectorField::ToBytes(*VectorField::GetCopyForCache(optional)), bytes);
  EXPECT_EQ(VectorField::Format(plain), "[3 fingerprints]");
  EXPECT_EQ(VectorField::Format(VectorField::OptionalValues(1)), "[1 fingerprint]");
  EXPECT_EQ(VectorField::Format(VectorField::Values()), "[0 fingerprints]");
  EXPECT_EQ(Field::Format(path), "<ZQFingerPrint>");
}

TEST(FingerPrintVectorField, BytesThatLieAreReported) {
  const std::string element = Blob(Field::ToBytes(MakeFP(ZQFPType::MACCS166)));
  const std::string three = Int(3) + element + noneBlob + element;
  CapturedReports reports;
  for (std::size_t size = 1; size <= three.size() + 1; ++size) {
    if (size == three.size()) continue;
    VectorField::Values values;
    EXPECT_FALSE(VectorField::FromBytes(values, (three + flag).substr(0, size))) << size;
    EXPECT_EQ(values.size(), (size >= 8 + element.size()) + (size >= 16 + element.size()) +
                                 std::size_t{size >= three.size()});
    EXPECT_EQ(reports.Take(), Texts{"FromBytes : the bytes are no vector of fingerprints"});
  }
  VectorField::OptionalValues values;
  EXPECT_FALSE(VectorField::FromBytes(values, Int(1ULL << 60) + element + noneBlob));
  EXPECT_EQ(values.size(), 2U);
  EXPECT_EQ(reports.Take().size(), 1U);
  // A damaged element stays in its place.
  values.clear();
  EXPECT_TRUE(VectorField::FromBytes(values, Int(3) + Blob("x") + Blob("") + element));
  ASSERT_EQ(values.size(), 3U);
  EXPECT_TRUE(values[0] && !*values[0] && values[1] && !*values[1] && *values[2]);
  EXPECT_EQ(reports.Take(), Texts{"FPFromBytes : the bytes are no fingerprint"});
}

TEST(FingerPrintVectorField, JsonThatIsNoVectorGivesNoBytes) {
  const std::string deep = Repeated("[", 1000000);
  CapturedReports reports;
  const std::string value = "{\"value\": ";
  Texts bad{"",           "7",
            value,        value + "[]}" + flag + "x",
            value + deep, value + deep + Repeated("]", 1000000) + "}"};
  for (const char* list : {"7", "\"\\n\"", "{\"a\": 0}", "[null, 7]", "[[\"\\n\"]]", "[null,]",
                           "[\"\xff\"]", "[\"\\ud800\"]", "[1e999]"}) {
    bad.push_back(value + list + "}");
  }
  for (const std::string& json : bad) {
    EXPECT_EQ(VectorField().JSONToBytes(json), "") << json.substr(0, 40);
    EXPECT_EQ(reports.Take().size(), 1U) << json.substr(0, 40);
  }
  EXPECT_EQ(VectorField().JSONToBytes(R"({"value": []})"), Int(0));
  EXPECT_EQ(ZQQuoteJSON("\xff"), "");
  EXPECT_EQ(ZQQuoteJSON(std::string("a\"\0\n", 4)), R"("a\"\u0000\n")");
}

TEST(Record, KeepsObjectsAndBytesInStep) {
  CapturedReports reports;
  const ZQFingerPrint first = MakeFP(ZQFPType::Path);
  const ZQFingerPrint second = MakeFP(ZQFPType::MACCS166);
  ZQField<ZQFingerPrint> field("fp");
  const ZQField<std::vector<ZQFingerPrint>> vectorField("fp");
  ZQRecord record;
  ZQFingerPrint value;
  EXPECT_EQ(record.CheckField(field), ZQFieldStatus::Missing);
  ZQSetFingerPrintValue(record, field, first);
  EXPECT_EQ(record.CheckField(field), ZQFieldStatus::Present);
  EXPECT_EQ(record.GetBytes(field), Field::ToBytes(first));
  // Set again: the object is the same one, and the bytes follow.
  ZQFingerPrint* cached = record.CheckCache(field);
  ASSERT_NE(cached, nullptr);
  record.MarkCacheDirty(field, false);
  ZQSetFingerPrintValue(record, field, second);
  EXPECT_EQ(record.CheckCache(field), cached);
  EXPECT_EQ(record.GetBytes(field), Field::ToBytes(second));
  EXPECT_TRUE(record.GetValue(field, value) && value == second);
  // Bytes replace the object.
  EXPECT_TRUE(record.SetBytes(field, Field::ToBytes(first)));
  EXPECT_EQ(record.CheckCache(field), nullptr);
  record.MarkCacheDirty(field, true);
  EXPECT_EQ(record.GetBytes(field), Field::ToBytes(first));
  EXPECT_TRUE(record.GetValue(field, value) && value == first);
  EXPECT_EQ(record.ToJSON(), "{\"fp\":" + ZQQuoteJSON(FPToJSONStr(first)) + "}");
  EXPECT_EQ(reports.Take(), Texts{});
  // Another type under the name.
  EXPECT_EQ(record.CheckField(vectorField), ZQFieldStatus::OtherType);
  EXPECT_FALSE(record.SetBytes(vectorField, Int(0)));
  EXPECT_EQ(record.GetBytes(vectorField), "");
  EXPECT_EQ(reports.Take(),
            Texts{"ZQRecord : field fp is of type Chem.FingerPrint, not Chem.FingerPrintVec"});
  EXPECT_TRUE(record.DeleteField(vectorField));
  EXPECT_FALSE(record.DeleteField(field));
  // A vector isn't cacheable: its bytes are there at once.
  EXPECT_TRUE(record.AddToCache(vectorField, std::make_unique<VectorField::Values>(2, first)));
  EXPECT_EQ(record.CheckCache(vectorField), nullptr);
  VectorField::Values values(1);
  EXPECT_TRUE(record.GetValue(vectorField, values) && values == VectorField::Values(2, first));
  ZQSetFingerPrintValue(record, field, second);
  EXPECT_TRUE(record.GetValue(field, value) && value == second);
  EXPECT_TRUE(record.SetBytes(ZQField<ZQFingerPrint>("none"), ""));
  EXPECT_EQ(record.ToJSON(), "{\"fp\":" + ZQQuoteJSON(FPToJSONStr(second)) + ",\"none\":null}");
  EXPECT_TRUE(record.SetBytes(ZQField<ZQFingerPrint>("\xff"), ""));
  EXPECT_EQ(record.GetFields().back().GetName(), "\xff");
  EXPECT_EQ(record.ToJSON(), "");
  EXPECT_EQ(reports.Take(), Texts{"ZQRecord : a field's name isn't UTF-8"});
}

TEST(FieldTypes, AreFoundByName) {
  for (ZQFieldTypeHandler* (*init)() : {&ZQInitFPFieldHandler, &ZQInitFPVecFieldHandler}) {
    ZQFieldTypeHandler* handler = init();
    EXPECT_EQ(ZQFindFieldType(handler->GetName()), nullptr);
    EXPECT_TRUE(ZQRegisterFieldType(std::unique_ptr<ZQFieldTypeHandler>(handler)));
    EXPECT_FALSE(ZQRegisterFieldType(std::unique_ptr<ZQFieldTypeHandler>(init())));
    EXPECT_EQ(ZQFindFieldType(handler->GetName()), handler);
    EXPECT_EQ(handler->PtrToBytes(nullptr), "");
  }
  EXPECT_TRUE(ZQFindFieldType("Chem.FingerPrint") && ZQFindFieldType("Chem.FingerPrintVec"));
}

}  // namespace
}  // namespace ZQKorvex
