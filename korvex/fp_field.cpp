#include "korvex/fp_field.h"

#include <algorithm>
#include <climits>

#include "contract/lodrine/buffer.h"
#include "contract/lodrine/json.h"
#include "korvex/fingerprint_params.h"
#include "korvex/fptype_records_local.h"
#include "korvex/fptypes.h"
#include "korvex/memory_local.h"

namespace ZQKorvex {

namespace {

using FieldType = ZQFieldType<ZQFingerPrint>;
using VectorFieldType = ZQVectorFieldType<ZQFingerPrint>;

bool HasTypeRecord(std::int64_t kind) {
  return kind >= 0 && kind <= UINT_MAX && ZQHasFPTypeRecord(static_cast<unsigned int>(kind));
}

std::uint64_t BlobSize(std::int64_t numbits) {
  return (static_cast<std::uint64_t>(numbits) + 63) / 64 * 8;
}

bool Refuse() {
  ZQThrow.Error("FPFromBytes : the bytes are no fingerprint");
  return false;
}

// Whether bits alone follow. The bytes of a type are never as few as the bits that its kind, taken
// for their number, would announce.
bool IsUntyped(ZQReadBuffer in) {
  const std::int64_t numbits = in.ReadInt();
  const std::string_view bits = in.ReadBlob();
  return in.IsValid() && in.IsAtEnd() &&
         (!HasTypeRecord(numbits) || bits.size() == BlobSize(numbits));
}

bool ReadType(ZQReadBuffer& in, ZQFingerPrint& fp) {
  const std::int64_t number = in.ReadInt();
  const std::int64_t version = in.ReadInt();
  zqisstream record{std::string(in.ReadBlob())};
  if (!in.IsValid() || version < 0 || version > USHRT_MAX) return Refuse();
  if (!HasTypeRecord(number)) {
    ZQThrow.Error("FPFromBytes : unknown fingerprint type %s", std::to_string(number).c_str());
    return false;
  }
  const ZQFPKind& kind = *ZQFindFPKind(static_cast<unsigned int>(number));
  if (!ZQReadFPTypeRecord(record, static_cast<unsigned short>(version), fp, kind.number) ||
      record.peek() != zqistream::traits_type::eof()) {
    return Refuse();
  }
  const std::string fault = ZQFindFPTypeFault(kind, ZQDecodeFPTypeID(fp.GetFPTypeBase()->GetID()));
  if (fault.empty()) return true;
  // Not even its type string could be written.
  ZQThrow.Error("FPFromBytes : invalid fingerprint type, %s", fault.c_str());
  return false;
}

bool ReadBits(ZQReadBuffer& in, ZQFingerPrint& fp) {
  const std::int64_t numbits = in.ReadInt();
  const std::string_view bits = in.ReadBlob();
  if (!in.IsValid() || !in.IsAtEnd()) return Refuse();
  if (numbits < 0 || numbits > INT_MAX) {
    ZQThrow.Error("Max size for an ZQBitVector is INT_MAX");
    return false;
  }
  if (bits.size() != BlobSize(numbits)) return Refuse();
  fp.SetSize(static_cast<unsigned int>(numbits));
  std::copy(bits.begin(), bits.end(), reinterpret_cast<char*>(fp.Words()));
  fp.SetSize(static_cast<unsigned int>(numbits));  // turns off bits beyond it
  return true;
}

// Whether the type's writer takes it; the check is the writer's assertion.
bool CanWrite(const ZQFPTypeBase& type) {
  if (!ZQHasFPTypeRecord(type.GetFPType())) return false;
  const ZQFPKind& kind = *ZQFindFPKind(type.GetFPType());
  return !kind.HasParams() || type.GetVersion() == kind.version;
}

// Vectors of fingerprints or of optional ones.

void WriteElement(ZQWriteBuffer& out, const ZQFingerPrint& fp) {
  out.WriteBlob(FieldType::ToBytes(fp));
}

void WriteElement(ZQWriteBuffer& out, const std::optional<ZQFingerPrint>& fp) {
  if (fp) {
    WriteElement(out, *fp);
  } else {
    out.WriteNoneBlob();
  }
}

template <class Values>
std::string WriteVector(const Values& values) {
  ZQWriteBuffer out;
  out.WriteInt(static_cast<std::int64_t>(values.size()));
  for (const auto& value : values) WriteElement(out, value);
  return out.Get();
}

template <class Values>
bool ReadVector(Values& values, std::string_view bytes) {
  if (bytes.empty()) return false;
  ZQReadBuffer in(bytes);
  const std::int64_t count = in.ReadInt();
  if (in.IsValid() && count < 1) return true;
  for (std::int64_t i = 0; i < count; ++i) {
    bool isNone = false;
    const std::string_view blob = in.ReadBlob(&isNone);
    if (!in.IsValid()) break;
    auto& value = values.emplace_back();
    if (isNone) continue;
    ZQFingerPrint fp;
    FPFromBytes(fp, blob);
    value = std::move(fp);
  }
  if (in.IsValid() && in.IsAtEnd()) return true;
  ZQThrow.Error("FromBytes : the bytes are no vector of fingerprints");
  return false;
}

std::string FormatCount(std::size_t count) {
  return "[" + std::to_string(count) + (count == 1 ? " fingerprint]" : " fingerprints]");
}

}  // namespace

bool FPFromBytes(ZQFingerPrint& fp, std::string_view bytes) {
  fp = ZQFingerPrint();
  if (bytes.empty()) return false;
  ZQReadBuffer in(bytes);
  if (in.ReadBool()) return Refuse();
  ZQFingerPrint read;
  return ZQGuardMemory("FPFromBytes", [&] {
    if ((!IsUntyped(in) && !ReadType(in, read)) || !ReadBits(in, read)) return false;
    fp = std::move(read);
    return true;
  });
}

std::string FPToJSONStr(const ZQFingerPrint& fp) {
  if (!fp) return "\n";
  std::string bits;
  fp.ToHexString(bits);
  return fp.GetFPTypeBase()->GetFPTypeString() + "\n" + bits;
}

ZQFingerPrint FPFromJSONStr(const std::string& text) {
  ZQFingerPrint fp;
  const std::size_t end = text.find('\n');
  if (end == std::string::npos) return fp;
  if (!fp.FromHexString(text.substr(end + 1))) {
    ZQThrow.Warning("FPFromJSONStr : the bits aren't pairs of hexadecimal digits");
    return fp;
  }
  if (end == 0) return fp;
  const std::string typeString = text.substr(0, end);
  std::string fault;
  const ZQFPTypeBase* type = ZQReadFPType(typeString, &fault);
  if (!type) {
    if (!fault.empty()) fault.insert(0, ", ");
    ZQThrow.Warning("FPFromJSONStr : invalid fingerprint type `%s`%s", typeString.c_str(),
                    fault.c_str());
    return fp;
  }
  fp.SetFPTypeBase(type);
  // The digits are of whole bytes.
  const unsigned int numbits = ZQGetFingerPrintSize(type);
  if (numbits != 0 && (numbits + 7) / 8 * 8 == fp.GetSize()) fp.SetSize(numbits);
  return fp;
}

ZQFieldTypeHandler* ZQInitFPFieldHandler() { return new FieldType; }

ZQFieldTypeHandler* ZQInitFPVecFieldHandler() { return new VectorFieldType; }

void ZQSetFingerPrintValue(ZQRecord& record, ZQField<ZQFingerPrint>& field,
                           const ZQFingerPrint& fp) {
  if (record.CheckField(field) == ZQFieldStatus::OtherType) record.DeleteField(field);
  if (ZQFingerPrint* cached = record.CheckCache(field)) {
    *cached = fp;
    record.MarkCacheDirty(field, true);
  } else {
    record.AddToCache(field, std::make_unique<ZQFingerPrint>(fp));
  }
}

}  // namespace ZQKorvex

namespace Lodrine {

using ZQKorvex::FPFromBytes;
using ZQKorvex::FPFromJSONStr;
using ZQKorvex::FPToJSONStr;
using ZQKorvex::ZQFingerPrint;
using FieldType = ZQFieldType<ZQFingerPrint>;
using VectorFieldType = ZQVectorFieldType<ZQFingerPrint>;

std::string FieldType::BytesToJSON(std::string_view bytes) const {
  ZQFingerPrint fp;
  FPFromBytes(fp, bytes);
  return ZQQuoteJSON(FPToJSONStr(fp));
}

std::string FieldType::JSONToBytes(std::string_view json) const {
  return ToBytes(FPFromJSONStr(std::string(json)));
}

std::string FieldType::PtrToBytes(const void* pointer) const {
  return pointer ? ToBytes(*static_cast<const ZQFingerPrint*>(pointer)) : std::string();
}

std::string FieldType::ToBytes(const ZQFingerPrint& value) {
  ZQWriteBuffer out;
  out.WriteBool(false);
  if (const ZQKorvex::ZQFPTypeBase* type = value.GetFPTypeBase()) {
    ZQKorvex::zqosstream record;
    if (!ZQKorvex::CanWrite(*type) ||
        !ZQKorvex::ZQWriteFPTypeRecord(record, value, type->GetFPType())) {
      ZQKorvex::ZQThrow.Error("ToBytes : fingerprints of type %s can't be written",
                              type->GetFPTypeString().c_str());
      return {};
    }
    out.WriteInt(type->GetFPType());
    out.WriteInt(type->GetVersion());
    out.WriteBlob(std::move(record).str());
  }
  out.WriteInt(value.GetSize());
  out.WriteBlob({reinterpret_cast<const char*>(value.Words()),
                 static_cast<std::size_t>(ZQKorvex::BlobSize(value.GetSize()))});
  return out.Get();
}

std::string FieldType::ToBytes(const std::optional<ZQFingerPrint>& value) {
  return value ? ToBytes(*value) : std::string();
}

bool FieldType::FromBytes(ZQFingerPrint& value, std::string_view bytes) {
  return FPFromBytes(value, bytes);
}

bool FieldType::FromBytes(std::optional<ZQFingerPrint>& value, std::string_view bytes) {
  value.reset();
  return !bytes.empty() && FPFromBytes(value.emplace(), bytes);
}

std::string FieldType::Format(const ZQFingerPrint& /*value*/) { return "<ZQFingerPrint>"; }

std::string VectorFieldType::BytesToJSON(std::string_view bytes) const {
  OptionalValues values;
  FromBytes(values, bytes);
  std::string json;
  for (const std::optional<ZQFingerPrint>& value : values) {
    json.append(json.empty() ? "[" : ",");
    json.append(value ? ZQQuoteJSON(FPToJSONStr(*value)) : "null");
  }
  return json.empty() ? "[]" : json + "]";
}

std::string VectorFieldType::JSONToBytes(std::string_view json) const {
  std::vector<std::optional<std::string>> texts;
  if (!GetJSONArrayAttr(JSONParseHelper(json), "value", texts)) return {};
  OptionalValues values;
  for (const std::optional<std::string>& text : texts) {
    auto& value = values.emplace_back();
    if (text) value = FPFromJSONStr(*text);
  }
  return ToBytes(values);
}

std::string VectorFieldType::PtrToBytes(const void* pointer) const {
  return pointer ? ToBytes(*static_cast<const Values*>(pointer)) : std::string();
}

std::string VectorFieldType::ToBytes(const Values& values) { return ZQKorvex::WriteVector(values); }

std::string VectorFieldType::ToBytes(const OptionalValues& values) {
  return ZQKorvex::WriteVector(values);
}

bool VectorFieldType::FromBytes(Values& values, std::string_view bytes) {
  return ZQKorvex::ReadVector(values, bytes);
}

bool VectorFieldType::FromBytes(OptionalValues& values, std::string_view bytes) {
  return ZQKorvex::ReadVector(values, bytes);
}

std::string VectorFieldType::Format(const Values& values) {
  return ZQKorvex::FormatCount(values.size());
}

std::string VectorFieldType::Format(const OptionalValues& values) {
  return ZQKorvex::FormatCount(values.size());
}

std::unique_ptr<VectorFieldType::Values> VectorFieldType::GetCopyForCache(const Values& values) {
  return std::make_unique<Values>(values);
}

std::unique_ptr<VectorFieldType::OptionalValues> VectorFieldType::GetCopyForCache(
    const OptionalValues& values) {
  return std::make_unique<OptionalValues>(values);
}

}  // namespace Lodrine
