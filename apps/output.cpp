#include "apps/output.h"

#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>

#include <cinttypes>
#include <cstdio>

#include "apps/json.h"
#include "korvex/fpkinds.h"

namespace KorvexProgram {

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
  text = reinterpret_cast<const char*>(fp.Words());
  text.erase(text.find_last_not_of(' ') + 1);  // the padding of the unhashed kinds
  return text;
}

std::string Decimals(double number, int decimals) {
  char text[400];  // the longest double
  std::snprintf(text, sizeof text, "%.*f", decimals, number);
  return text;
}

std::string ValidUtf8(const std::string& text) {
  std::string valid;
  for (std::size_t at = 0; at < text.size();) {
    rapidjson::MemoryStream rest(text.data() + at, text.size() - at);
    unsigned int codepoint = 0;
    if (rapidjson::UTF8<>::Decode(rest, &codepoint)) {
      valid.append(text, at, rest.Tell());
      at += rest.Tell();
    } else {
      valid += "\xEF\xBF\xBD";
      ++at;
    }
  }
  return valid;
}

HitWriter::HitWriter(bool json) : json_(json) {
  if (json_) std::fputc('[', stdout);
}

void HitWriter::Write(const Hit& hit) {
  if (!json_) {
    std::printf("%u\t%u\t%s\t%" PRIu64 "\t%s\t%s\n", hit.query, hit.rank,
                Decimals(hit.score, 6).c_str(), hit.index, TsvField(hit.title).c_str(),
                TsvField(hit.smiles).c_str());
    return;
  }
  JsonWriter writer;
  writer.Object([&] {
    writer.Key("query");
    writer.Number(hit.query);
    writer.Key("rank");
    writer.Number(hit.rank);
    writer.Key("score");
    writer.Number(hit.score, 6);
    writer.Key("index");
    writer.Number(hit.index);
    writer.Key("title");
    writer.Text(hit.title);
    writer.Key("smiles");
    writer.Text(hit.smiles);
  });
  std::printf("%s\n%s", first_ ? "" : ",", std::string(writer.Get()).c_str());
  first_ = false;
}

void HitWriter::Finish() const {
  if (json_) std::fputs("\n]\n", stdout);
}

}  // namespace KorvexProgram
