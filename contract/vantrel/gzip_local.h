#pragma once

/// Streams that unpack and pack gzip data on the way from and to another stream, which must outlive
/// them. For one thread each.

#include <memory>
#include <string>

#include "contract/vantrel/platform.h"

namespace Vantrel {

/// Whether the file name ends in ".gz", in upper or lower case.
bool ZQIsGzipName(const std::string& name);

/// Reads the members of a gzip file, one after another, as one stream of bytes.
class zqigzstream : public zqistream {
 public:
  explicit zqigzstream(zqistream& packed);
  ~zqigzstream() override;
  zqigzstream(const zqigzstream&) = delete;
  zqigzstream& operator=(const zqigzstream&) = delete;

  /// Why the stream ended before the end of the data, such as "The gzip data is cut short"; empty
  /// if it didn't.
  const std::string& GetFault() const;

 private:
  class Buffer;
  std::unique_ptr<Buffer> buffer_;
};

/// Writes one member. The data isn't complete before `Finish`.
class zqogzstream : public zqostream {
 public:
  explicit zqogzstream(zqostream& target);
  ~zqogzstream() override;
  zqogzstream(const zqogzstream&) = delete;
  zqogzstream& operator=(const zqogzstream&) = delete;

  /// Writes what is left and the end of the member; nothing may be written afterwards. False if
  /// this or an earlier write failed.
  bool Finish();

 private:
  class Buffer;
  std::unique_ptr<Buffer> buffer_;
};

}  // namespace Vantrel
