#pragma once

/// JSON as this program writes it: texts are made valid UTF-8.

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <string>
#include <string_view>

#include "apps/output.h"

namespace KorvexProgram {

class JsonWriter {
 public:
  void Key(const char* key) { writer_.Key(key); }
  void Text(const std::string& text) {
    const std::string valid = ValidUtf8(text);
    writer_.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
  }
  void Number(unsigned int number) { writer_.Uint(number); }
  void Number(std::uint64_t number) { writer_.Uint64(number); }
  /// A number with that many decimals.
  void Number(double number, int decimals) {
    const std::string text = Decimals(number, decimals);
    writer_.RawValue(text.data(), text.size(), rapidjson::kNumberType);
  }
  /// An array of indices or counts.
  template <class Values>
  void Numbers(const Values& values) {
    Array([&] {
      for (const auto value : values) Number(value);
    });
  }
  template <class Values>
  void Numbers(const Values& values, int decimals) {
    Array([&] {
      for (const auto value : values) Number(value, decimals);
    });
  }
  /// An object or array, whose content `write` writes.
  template <class Write>
  void Object(Write write) {
    writer_.StartObject();
    write();
    writer_.EndObject();
  }
  template <class Write>
  void Array(Write write) {
    writer_.StartArray();
    write();
    writer_.EndArray();
  }

  std::string_view Get() const { return {text_.GetString(), text_.GetSize()}; }

 private:
  rapidjson::StringBuffer text_;
  rapidjson::Writer<rapidjson::StringBuffer> writer_{text_};
};

}  // namespace KorvexProgram
