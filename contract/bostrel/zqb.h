#pragma once

/// ZQB, a binary container: a sequence of records, each a tag, the length of its data, and the
/// data. A program that doesn't know a tag keeps the record and can write it again unchanged.
///
/// All numbers are little-endian. A tag is its length (4 bytes) and its characters, at most 255;
/// the data's length has 8 bytes. There is no header: files can be joined, and a record added at
/// the end.
///
/// Functions that read and write one kind of data are registered with a handler. A new handler has
/// all that the libraries of the process have registered (`ZQRegisterZQBInitializer`). A handler is
/// for one thread while functions are added; then any number of threads may use it on distinct
/// streams and objects.

#include <any>
#include <cstdint>
#include <memory>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "contract/bostrel/base.h"
#include "contract/bostrel/export.h"
#include "contract/bostrel/functions.h"
#include "contract/vantrel/platform.h"

namespace Bostrel {

using Vantrel::zqistream;
using Vantrel::zqostream;

/// Results of reading.
namespace ZQBStatus {
inline constexpr unsigned int Ok = 0;
inline constexpr unsigned int ShortRead = 4;  ///< the stream ends within the data
inline constexpr unsigned int NoTag = 6;      ///< the end of the stream, or bytes that aren't a tag
inline constexpr unsigned int NoHandler = 7;  ///< the record is intact; no function reads it
inline constexpr unsigned int BadFrame = 8;   ///< the data isn't as long as its frame
}  // namespace ZQBStatus

// ---- Frames

/// False if the stream fails, or for a tag of more than 255 bytes.
ZQ_EXPORT bool ZQBWriteTag(zqostream& out, const std::string& tag);
ZQ_EXPORT bool ZQBWriteDataLength(zqostream& out, std::uint64_t length);
/// False at the end of the stream, and for a length above 255.
ZQ_EXPORT bool ZQBReadTag(zqistream& in, std::string& tag);
ZQ_EXPORT bool ZQBReadDataLength(zqistream& in, std::uint64_t& length);

/// Reads exactly that many bytes, piece by piece: a length beyond the end of the stream costs no
/// more memory than there are bytes. False, with what there was in `bytes`, if there are fewer.
ZQ_EXPORT bool ZQBReadBytes(zqistream& in, std::uint64_t length, std::string& bytes);

/// A record of any tag.
struct ZQUnknownZQBData {
  std::string tag;
  std::string bytes;
  friend bool operator==(const ZQUnknownZQBData&, const ZQUnknownZQBData&) = default;
};
/// Reads the next record, whatever it is: `Ok`, `NoTag` or `ShortRead`.
ZQ_EXPORT unsigned int ZQBReadRecord(zqistream& in, ZQUnknownZQBData& record);
/// False if the stream fails.
ZQ_EXPORT bool ZQBWriteRecord(zqostream& out, const ZQUnknownZQBData& record);

// ---- Functions for one kind of data

/// The 64-bit FNV-1a hash of a name.
ZQ_EXPORT std::uint64_t ZQHashTypeName(const char* name);

/// The identity of a data type within the process.
template <class T>
std::uint64_t ZQGetDataType() {
  static const std::uint64_t type = ZQHashTypeName(typeid(T).name());
  return type;
}

/// Common to functions that read and that write.
class ZQ_EXPORT ZQBinaryFxnBase {
 public:
  virtual ~ZQBinaryFxnBase() = default;
  virtual std::string GetTag() const = 0;
  virtual std::uint64_t GetType() const = 0;
  /// A new object, owned by the caller.
  virtual ZQBinaryFxnBase* CreateCopy() const = 0;
};

/// Writes a value as one record, or as several.
template <class T>
class ZQWriteFxn : public ZQBinaryFxnBase {
 public:
  std::uint64_t GetType() const override { return ZQGetDataType<T>(); }
  ZQWriteFxn* CreateCopy() const override = 0;
  /// False if the stream fails.
  virtual bool operator()(zqostream& out, const T& value) const = 0;
};

/// Reads the data of a record, whose tag and length have been read.
template <class T>
class ZQReadFxn : public ZQBinaryFxnBase {
 public:
  std::uint64_t GetType() const override { return ZQGetDataType<T>(); }
  ZQReadFxn* CreateCopy() const override = 0;
  /// Returns a `ZQBStatus`.
  virtual unsigned int operator()(zqistream& in, T& value, std::uint64_t length) const = 0;
};

/// The functions of one container. Objects without functions are made by applications only.
class ZQ_EXPORT ZQBinaryIOHandlerBase {
 public:
  ZQBinaryIOHandlerBase() = default;
  ZQBinaryIOHandlerBase(const ZQBinaryIOHandlerBase&) = delete;
  ZQBinaryIOHandlerBase& operator=(const ZQBinaryIOHandlerBase&) = delete;
  virtual ~ZQBinaryIOHandlerBase() = default;

  /// Store a copy, in place of an earlier function of the same tag and type.
  template <class T>
  void AddWriteFxn(const ZQWriteFxn<T>& function) {
    Add(writers_, function);
  }
  template <class T>
  void AddReadFxn(const ZQReadFxn<T>& function) {
    Add(readers_, function);
  }

  /// The first function of the type, or of the type and the tag; null if there is none.
  template <class T>
  const ZQWriteFxn<T>* FindWriteFxn() const {
    return static_cast<const ZQWriteFxn<T>*>(Find(writers_, ZQGetDataType<T>(), nullptr));
  }
  template <class T>
  const ZQReadFxn<T>* FindReadFxn(const std::string& tag) const {
    return static_cast<const ZQReadFxn<T>*>(Find(readers_, ZQGetDataType<T>(), &tag));
  }
  /// All functions that write a type.
  template <class T>
  std::vector<const ZQWriteFxn<T>*> GetWriteFxns() const {
    std::vector<const ZQWriteFxn<T>*> found;
    for (const auto& writer : writers_) {
      if (writer->GetType() != ZQGetDataType<T>()) continue;
      found.push_back(static_cast<const ZQWriteFxn<T>*>(writer.get()));
    }
    return found;
  }

 private:
  using Functions = std::vector<std::unique_ptr<ZQBinaryFxnBase>>;
  static void Add(Functions& functions, const ZQBinaryFxnBase& function);
  static const ZQBinaryFxnBase* Find(const Functions& functions, std::uint64_t type,
                                     const std::string* tag);

  Functions writers_;
  Functions readers_;
};

/// A handler with the functions of all libraries.
class ZQ_EXPORT ZQBinaryIOHandler : public ZQBinaryIOHandlerBase {
 public:
  ZQBinaryIOHandler();
};

/// Registers a function that every later `ZQBinaryIOHandler` calls. A library calls this when it is
/// loaded. Returns true. Safe from any thread.
ZQ_EXPORT bool ZQRegisterZQBInitializer(bool (*initializer)(ZQBinaryIOHandlerBase& handler));

// ---- Values

/// Writes a value as a record. False if no function writes its type, or the stream fails.
template <class T>
bool ZQBinaryWrite(zqostream& out, const T& value, const ZQBinaryIOHandlerBase& handler) {
  const ZQWriteFxn<T>* writer = handler.FindWriteFxn<T>();
  return writer && (*writer)(out, value);
}

/// Moves to the next record, after a function read its data from `begin` on (-1 for a stream
/// without positions). Returns `BadFrame` for `Ok` if the function didn't read all of it, or more.
ZQ_EXPORT unsigned int ZQBFinishRecord(zqistream& in, std::streamoff begin, std::uint64_t length,
                                       unsigned int status);

/// Reads the next record into a value. If no function reads a record of this tag into a T, the
/// record is stored in `unknown` (unless null) and the result is `NoHandler`; the value is
/// unchanged. The stream is then at the next record; after a function that failed, only if it has
/// positions.
template <class T>
unsigned int ZQBinaryRead(zqistream& in, T& value, const ZQBinaryIOHandlerBase& handler,
                          ZQUnknownZQBData* unknown = nullptr) {
  ZQUnknownZQBData record;
  std::uint64_t length = 0;
  if (!ZQBReadTag(in, record.tag)) return ZQBStatus::NoTag;
  if (!ZQBReadDataLength(in, length)) return ZQBStatus::ShortRead;
  if (const ZQReadFxn<T>* reader = handler.FindReadFxn<T>(record.tag)) {
    const std::streamoff begin = in.tellg();
    return ZQBFinishRecord(in, begin, length, (*reader)(in, value, length));
  }
  if (!ZQBReadBytes(in, length, record.bytes)) return ZQBStatus::ShortRead;
  if (unknown) *unknown = std::move(record);
  return ZQBStatus::NoHandler;
}

// ---- Generic data

/// A generic datum of type T and its tag.
template <class T>
struct ZQBaseDataT {
  unsigned int tag = 0;
  T value;
};

// The begin of the data of a generic datum's record: its tag, by name, or by number if it is below
// the named ones.
ZQ_EXPORT bool ZQBWriteDataTag(zqostream& out, unsigned int tag);
ZQ_EXPORT bool ZQBReadDataTag(zqistream& in, unsigned int& tag);

/// Writes the generic data of type T of an object, a record each: the datum's tag, and the value's
/// own record.
template <class T>
class ZQBaseZQBWriteFxn final : public ZQWriteFxn<ZQBase> {
 public:
  ZQBaseZQBWriteFxn(std::string tag, const ZQWriteFxn<T>& write)
      : tag_(std::move(tag)), write_(write.CreateCopy()) {}
  std::string GetTag() const override { return tag_; }
  ZQBaseZQBWriteFxn* CreateCopy() const override { return new ZQBaseZQBWriteFxn(*this); }
  bool operator()(zqostream& out, const ZQBase& object) const override {
    for (auto datum = object.GetDataIter(); datum; ++datum) {
      const T* value = std::any_cast<T>(&datum->value);
      if (!value) continue;
      Vantrel::zqosstream data;
      if (!ZQBWriteDataTag(data, datum->tag) || !(*write_)(data, *value)) return false;
      if (!ZQBWriteRecord(out, {tag_, std::move(data).str()})) return false;
    }
    return true;
  }

 private:
  std::string tag_;
  ZQCopyPtr<ZQWriteFxn<T>> write_;
};

/// Adds the datum of such a record to an object.
template <class T>
class ZQBaseZQBReadFxn final : public ZQReadFxn<ZQBase> {
 public:
  ZQBaseZQBReadFxn(std::string tag, const ZQReadFxn<T>& read)
      : tag_(std::move(tag)), read_(read.CreateCopy()) {}
  std::string GetTag() const override { return tag_; }
  ZQBaseZQBReadFxn* CreateCopy() const override { return new ZQBaseZQBReadFxn(*this); }
  unsigned int operator()(zqistream& in, ZQBase& object, std::uint64_t length) const override {
    std::string bytes;
    if (!ZQBReadBytes(in, length, bytes)) return ZQBStatus::ShortRead;
    Vantrel::zqisstream data(bytes);
    ZQBaseDataT<T> datum;
    std::string tag;
    std::uint64_t valueLength = 0;
    if (!ZQBReadDataTag(data, datum.tag) || !ZQBReadTag(data, tag) || tag != read_->GetTag() ||
        !ZQBReadDataLength(data, valueLength)) {
      return ZQBStatus::BadFrame;
    }
    const unsigned int status = (*read_)(data, datum.value, valueLength);
    if (status != ZQBStatus::Ok) return status;
    if (data.peek() != zqistream::traits_type::eof()) return ZQBStatus::BadFrame;
    object.AddData(datum.tag, std::move(datum.value));
    return status;
  }

 private:
  std::string tag_;
  ZQCopyPtr<ZQReadFxn<T>> read_;
};

/// Makes a handler write and read generic data of type T, as records of this tag, by its functions
/// for T; false if it lacks them.
template <class T>
bool ZQInstallGenericDataHandler(ZQBinaryIOHandlerBase& handler, const std::string& tag) {
  const ZQWriteFxn<T>* write = handler.FindWriteFxn<T>();
  const ZQReadFxn<T>* read = write ? handler.FindReadFxn<T>(write->GetTag()) : nullptr;
  if (!read) return false;
  handler.AddWriteFxn(ZQBaseZQBWriteFxn<T>(tag, *write));
  handler.AddReadFxn(ZQBaseZQBReadFxn<T>(tag, *read));
  return true;
}

/// Writes all generic data of an object whose types the handler knows. False if the stream fails.
ZQ_EXPORT bool ZQBWriteGenericData(zqostream& out, const ZQBase& object,
                                   const ZQBinaryIOHandlerBase& handler);

}  // namespace Bostrel
