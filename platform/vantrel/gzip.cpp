#include <zlib.h>

#include <algorithm>
#include <array>

#include "contract/bostrel/characters_local.h"
#include "contract/vantrel/gzip_local.h"

namespace Vantrel {

namespace {

constexpr std::size_t chunkBytes = std::size_t{1} << 17;
constexpr int gzipOnly = 16 + MAX_WBITS;
using Chunk = std::array<char, chunkBytes>;

Bytef* BytesOf(Chunk& chunk) { return reinterpret_cast<Bytef*>(chunk.data()); }

}  // namespace

bool ZQIsGzipName(const std::string& name) {
  const std::string extension = name.substr(name.size() - std::min<std::size_t>(name.size(), 3));
  return std::ranges::equal(extension, std::string(".gz"), {}, Bostrel::ToLower);
}

class zqigzstream::Buffer : public std::streambuf {
 public:
  explicit Buffer(zqistream& packed) : packed_(packed) {
    if (inflateInit2(&stream_, gzipOnly) != Z_OK) fault_ = "Not enough memory";
  }
  ~Buffer() override { inflateEnd(&stream_); }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  const std::string& GetFault() const { return fault_; }

 protected:
  int_type underflow() override {
    stream_.next_out = BytesOf(out_);
    stream_.avail_out = chunkBytes;
    while (stream_.avail_out == chunkBytes && fault_.empty()) {
      if (stream_.avail_in == 0) Refill();
      if (stream_.avail_in == 0 && status_ == Z_STREAM_END) break;  // the end of the last member
      if (status_ == Z_STREAM_END) inflateReset(&stream_);
      status_ = inflate(&stream_, Z_NO_FLUSH);
      if (status_ != Z_OK && status_ != Z_STREAM_END) SetFault();
    }
    const std::size_t count = chunkBytes - stream_.avail_out;
    setg(out_.data(), out_.data(), out_.data() + count);
    return count == 0 ? traits_type::eof() : traits_type::to_int_type(out_[0]);
  }

 private:
  void Refill() {
    packed_.read(in_.data(), chunkBytes);
    stream_.next_in = BytesOf(in_);
    stream_.avail_in = static_cast<uInt>(packed_.gcount());
    if (packed_.bad()) fault_ = "Input/output error";
  }
  void SetFault() {
    fault_ = status_ == Z_MEM_ERROR   ? "Not enough memory"
             : status_ == Z_BUF_ERROR ? "The gzip data is cut short"
             : stream_.msg != nullptr ? std::string("The gzip data is damaged: ") + stream_.msg
                                      : "The gzip data is damaged";
  }

  zqistream& packed_;
  z_stream stream_{};
  int status_ = Z_OK;
  std::string fault_;
  Chunk in_;
  Chunk out_;
};

zqigzstream::zqigzstream(zqistream& packed)
    : zqistream(nullptr), buffer_(std::make_unique<Buffer>(packed)) {
  rdbuf(buffer_.get());
}
zqigzstream::~zqigzstream() = default;

const std::string& zqigzstream::GetFault() const { return buffer_->GetFault(); }

class zqogzstream::Buffer : public std::streambuf {
 public:
  explicit Buffer(zqostream& out) : out_(out) {
    constexpr int memory = 8;  // zlib's default
    isGood_ = deflateInit2(&stream_, Z_DEFAULT_COMPRESSION, Z_DEFLATED, gzipOnly, memory,
                           Z_DEFAULT_STRATEGY) == Z_OK;
  }
  ~Buffer() override { deflateEnd(&stream_); }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  bool Finish() { return Pack(nullptr, 0, Z_FINISH); }

 protected:
  std::streamsize xsputn(const char* text, std::streamsize count) override {
    return Pack(text, count, Z_NO_FLUSH) ? count : 0;
  }
  int_type overflow(int_type c) override {
    const char byte = traits_type::to_char_type(c);
    return Pack(&byte, 1, Z_NO_FLUSH) ? c : traits_type::eof();
  }

 private:
  bool Pack(const char* text, std::streamsize count, int flush) {
    constexpr std::streamsize mostAtOnce = std::streamsize{1} << 30;
    for (bool isDone = false; isGood_ && !isDone;) {
      const std::streamsize taken = std::min(count, mostAtOnce);
      stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text));
      stream_.avail_in = static_cast<uInt>(taken);
      stream_.next_out = BytesOf(packed_);
      stream_.avail_out = chunkBytes;
      const int status = deflate(&stream_, flush);
      text += taken - stream_.avail_in;
      count -= taken - stream_.avail_in;
      out_.write(packed_.data(), static_cast<std::streamsize>(chunkBytes - stream_.avail_out));
      isGood_ = status != Z_STREAM_ERROR && out_.good();
      isDone = flush == Z_FINISH ? status == Z_STREAM_END : count == 0;
    }
    return isGood_;
  }

  zqostream& out_;
  z_stream stream_{};
  bool isGood_ = false;
  Chunk packed_;
};

zqogzstream::zqogzstream(zqostream& target)
    : zqostream(nullptr), buffer_(std::make_unique<Buffer>(target)) {
  rdbuf(buffer_.get());
}
zqogzstream::~zqogzstream() = default;

bool zqogzstream::Finish() { return buffer_->Finish() && good(); }

}  // namespace Vantrel
