#include "korvex/mmapfile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>

namespace ZQKorvex {

bool MMapFile::Map(std::uint64_t length, bool writable, const char* message, const char* filename) {
  if (mapping_.Map(descriptor_, length, writable)) return true;
  ZQThrow.Error("%s%s", message, filename);
  CloseDescriptor();
  return false;
}

void MMapFile::CloseDescriptor() {
  close(descriptor_);
  descriptor_ = -1;
}

void MMapFile::Close() {
  if (!mapping_.GetBase()) return;
  if (!mapping_.Unmap()) ZQThrow.Error("Error un-mmapping the file");
  CloseDescriptor();
}

bool MMapInputFile::Open(const std::string& filename, std::uint64_t length) {
  return Take(open(filename.c_str(), O_RDONLY | O_CLOEXEC), filename, length);
}

bool MMapInputFile::Open(const zqifstream& in, const std::string& filename, std::uint64_t length) {
  return Take(fcntl(in.GetDescriptor(), F_DUPFD_CLOEXEC, 0), filename, length);
}

bool MMapInputFile::Take(int descriptor, const std::string& filename, std::uint64_t length) {
  Close();
  descriptor_ = descriptor;
  if (descriptor_ < 0) {
    ZQThrow.Error("Error opening file for reading: %s", filename.c_str());
    return false;
  }
  return Map(length, false, "Error mmapping the file: ", filename.c_str());
}

void MMapInputFile::PageIn() const {
  // The kernel maps pages of the page cache in large steps, and reads the rest ahead. A kernel
  // without this advice returns an error, and the scan takes its page faults one by one.
  madvise(mapping_.GetBase(), mapping_.GetLength(), MADV_POPULATE_READ);
}

bool MMapOutputFile::Open(const std::string& filename, std::uint64_t length) {
  Close();
  descriptor_ = open(filename.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (descriptor_ < 0) {
    ZQThrow.Error("Error opening file for writing: %s", filename.c_str());
    return false;
  }
  if (lseek(descriptor_, static_cast<off_t>(length - 1), SEEK_SET) < 0) {
    ZQThrow.Error("Error calling lseek() to 'stretch' the file");
    CloseDescriptor();
    return false;
  }
  // A file system that can't reserve blocks is accepted without.
  const bool reserved =
      fallocate(descriptor_, 0, 0, static_cast<off_t>(length)) == 0 || errno == EOPNOTSUPP;
  if (!reserved || write(descriptor_, "", 1) != 1) {
    ZQThrow.Error("Error writing last byte of the file");
    if (ftruncate(descriptor_, 0) != 0) ZQThrow.Error("Error calling ftruncate() on the file");
    CloseDescriptor();
    return false;
  }
  return Map(length, true, "Error mmapping the file", "");
}

}  // namespace ZQKorvex
