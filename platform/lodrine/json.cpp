#include "contract/lodrine/json.h"

#include <rapidjson/document.h>
#include <rapidjson/encodedstream.h>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <limits>

#include "contract/bostrel/throw.h"

namespace Lodrine {

using Bostrel::ZQThrow;

struct JSONParseHelper::Document {
  rapidjson::Document json;
};

std::string ZQQuoteJSON(std::string_view text) {
  using Buffer = rapidjson::StringBuffer;
  using Writer = rapidjson::Writer<Buffer, rapidjson::UTF8<>, rapidjson::UTF8<>,
                                   rapidjson::CrtAllocator, rapidjson::kWriteValidateEncodingFlag>;
  if (text.size() > std::numeric_limits<rapidjson::SizeType>::max()) return {};
  Buffer quoted;
  Writer writer(quoted);
  // Not a null pointer, which an empty view may have.
  const char* data = text.empty() ? "" : text.data();
  if (!writer.String(data, static_cast<rapidjson::SizeType>(text.size()))) return {};
  return {quoted.GetString(), quoted.GetSize()};
}

JSONParseHelper::JSONParseHelper(std::string_view text) : document_(std::make_unique<Document>()) {
  // Iterative, so that deep nesting can't overflow the stack.
  constexpr unsigned int flags =
      rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;
  rapidjson::Document& json = document_->json;
  rapidjson::MemoryStream bytes(text.empty() ? "" : text.data(), text.size());
  rapidjson::EncodedInputStream<rapidjson::UTF8<>, rapidjson::MemoryStream> stream(bytes);
  json.ParseStream<flags>(stream);
  // The parser takes a NUL for the end.
  const bool isCut = !json.HasParseError() && stream.Tell() != text.size();
  if (!json.HasParseError() && !isCut) return;
  const auto error = isCut ? rapidjson::kParseErrorDocumentRootNotSingular : json.GetParseError();
  ZQThrow.Warning("JSON : %s at byte %zu", rapidjson::GetParseError_En(error),
                  isCut ? stream.Tell() : json.GetErrorOffset());
  document_.reset();
}

JSONParseHelper::~JSONParseHelper() = default;

bool JSONParseHelper::IsValid() const { return document_ != nullptr; }

bool GetJSONArrayAttr(const JSONParseHelper& json, const std::string& key,
                      std::vector<std::optional<std::string>>& entries) {
  entries.clear();
  if (!json.IsValid()) return false;
  const auto refuse = [&] {
    ZQThrow.Warning("JSON : no array of strings under the key %s", key.c_str());
    entries.clear();
    return false;
  };
  const rapidjson::Document& object = json.document_->json;
  if (!object.IsObject()) return refuse();
  const auto member = object.FindMember(key.c_str());
  if (member == object.MemberEnd() || !member->value.IsArray()) return refuse();
  for (const rapidjson::Value& entry : member->value.GetArray()) {
    if (!entry.IsString() && !entry.IsNull()) return refuse();
    std::optional<std::string>& text = entries.emplace_back();
    if (entry.IsString()) text.emplace(entry.GetString(), entry.GetStringLength());
  }
  return true;
}

}  // namespace Lodrine
