#include "apps/output.h"

#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "apps/json.h"
#include "apps/options.h"
#include "korvex/fpkinds.h"

namespace KorvexProgram {

namespace fs = std::filesystem;

std::string TsvField(std::string text) {
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = ' ';
  }
  return text;
}

std::string FingerPrintField(const ZQFingerPrint& fp) {
  std::string text;
  if (!ZQFindFPKind(fp.GetFPTypeBase())->IsText()) {
    fp.ToHexString(text);
    return text;
  }
  if (fp.GetSize() == 0) return text;
  text.assign(reinterpret_cast<const char*>(fp.Words()), 8 * std::size_t{fp.NumWords()});
  text.erase(std::min(text.find('\0'), text.size()));
  text.erase(text.find_last_not_of(' ') + 1);  // the padding of the unhashed kinds
  return text;
}

std::string Decimals(double number, int decimals) {
  char text[400];  // the longest double
  std::snprintf(text, sizeof text, "%.*f", decimals, number);
  return text;
}

void AppendShortest(std::string& text, double number) {
  char digits[32];
  text.append(digits, std::to_chars(std::begin(digits), std::end(digits), number).ptr);
}

std::string ValidUtf8(const std::string& text) {
  std::string valid;
  for (std::size_t at = 0; at < text.size();) {
    rapidjson::MemoryStream rest(text.data() + at, text.size() - at);
    unsigned int codepoint = 0;
    if (rapidjson::UTF8<>::Decode(rest, &codepoint) && codepoint != 0xFFFE && codepoint != 0xFFFF) {
      valid.append(text, at, rest.Tell());
      at += rest.Tell();
    } else {
      valid += "\xEF\xBF\xBD";
      ++at;
    }
  }
  return valid;
}

const char* volatile PartialFile::interruptedName = nullptr;

PartialFile::PartialFile(const std::string& target) {
  std::error_code error;
  target_ = fs::canonical(target, error);
  if (error) target_ = target;  // a new file
  name_ = target_.parent_path() / (".part" + std::to_string(getpid()));
  name_ += target_.extension();
  interruptedName = name_.c_str();
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    if (std::signal(signal, RemoveAndEnd) == SIG_IGN) std::signal(signal, SIG_IGN);
  }
}

PartialFile::~PartialFile() {
  interruptedName = nullptr;
  unlink(name_.c_str());
}

bool PartialFile::Rename() const {
  std::error_code error;
  const fs::file_status before = fs::status(target_, error);
  if (fs::exists(before)) fs::permissions(name_, before.permissions(), error);
  fs::rename(name_, target_, error);
  if (error) ZQThrow.Error("cannot write %s: %s", target_.c_str(), error.message().c_str());
  return !error;
}

void PartialFile::RemoveAndEnd(int signal) {
  if (interruptedName) unlink(interruptedName);
  std::signal(signal, SIG_DFL);
  raise(signal);
}

bool CheckReplaceable(const std::string& name) {
  std::error_code error;
  const bool exists = access(name.c_str(), F_OK) == 0;
  if (!exists || (access(name.c_str(), W_OK) == 0 && fs::is_regular_file(name, error))) return true;
  ZQThrow.Error("%s can't be written: it is write-protected, or no regular file", name.c_str());
  return false;
}

bool WriteFile(const std::string& name, const std::string& text) {
  if (name == "-") return std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  const auto write = [&](const char* file) {
    std::FILE* out = std::fopen(file, "wb");
    bool done = out && std::fwrite(text.data(), 1, text.size(), out) == text.size();
    if (out && std::fclose(out) != 0) done = false;
    if (!done) ZQThrow.Error("cannot write %s: %s", name.c_str(), std::strerror(errno));
    return done;
  };
  std::error_code error;
  const fs::file_status before = fs::status(name, error);
  if (fs::exists(before) && !fs::is_regular_file(before)) return write(name.c_str());
  if (fs::exists(before) && access(name.c_str(), W_OK) != 0) {
    error = {errno, std::generic_category()};
  }
  if (error && before.type() != fs::file_type::not_found) {
    ZQThrow.Error("cannot write %s: %s", name.c_str(), error.message().c_str());
    return false;
  }
  const PartialFile partial(name);
  return write(partial.GetName().c_str()) && partial.Rename();
}

std::uint64_t QueriesPerPass(std::uint64_t limit, std::uint64_t records, unsigned int lists) {
  constexpr std::uint64_t mostQueries = 256;
  constexpr std::uint64_t mostHits = std::uint64_t{1} << 22;
  const std::uint64_t hits = limit == 0 ? records : std::min(limit * lists, records);
  return std::clamp<std::uint64_t>(mostHits / std::max<std::uint64_t>(hits, 1), 1, mostQueries);
}

void AddHitFormat(ZQInterface& interface) {
  static const ZQNamespaceInterface formats(
      "Format", ZQNamespaceMode::Single,
      {{"tsv", 0, "a line a hit: query, rank, score, index, title, SMILES"},
       {"json", 1, "an array of objects with the same fields"}});
  AddChoice(interface, "-format", "-f", "Output format", formats, "tsv");
}

HitWriter::HitWriter(const ZQInterface& interface)
    : json_(interface.Get<std::string>("-format") == "json") {
  if (json_) std::fputc('[', stdout);
}

HitWriter::~HitWriter() {
  if (json_) std::fputs("\n]\n", stdout);
}

void HitWriter::Write(unsigned int query, unsigned int rank, const ZQSimScore& hit,
                      const std::string& title, const std::string& smiles) {
  if (!json_) {
    std::printf("%u\t%u\t%s\t%" PRIu64 "\t%s\t%s\n", query, rank,
                Decimals(hit.GetScore(), 6).c_str(), hit.GetIdx(), TsvField(title).c_str(),
                TsvField(smiles).c_str());
    return;
  }
  JsonWriter writer;
  writer.Object([&] {
    writer.Key("query");
    writer.Number(query);
    writer.Key("rank");
    writer.Number(rank);
    writer.Key("score");
    writer.Number(hit.GetScore(), 6);
    writer.Key("index");
    writer.Number(hit.GetIdx());
    writer.Key("title");
    writer.Text(title);
    writer.Key("smiles");
    writer.Text(smiles);
  });
  std::printf("%s\n%s", first_ ? "" : ",", std::string(writer.Get()).c_str());
  first_ = false;
}

}  // namespace KorvexProgram
