#include "contract/bostrel/interface.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "contract/bostrel/strings.h"
#include "contract/bostrel/throw.h"

namespace Bostrel {

namespace {

constexpr std::size_t helpWidth = 80;

ZQParamType TypeOf(const ZQParamValue& value) { return static_cast<ZQParamType>(value.index()); }

std::string Join(const std::vector<std::string>& words, const char* separator) {
  std::string text;
  for (const std::string& word : words) {
    if (!text.empty()) text += separator;
    text += word;
  }
  return text;
}

std::vector<std::string> PrimitiveNames(const ZQNamespaceInterface& space) {
  std::vector<std::string> names;
  for (const ZQNamespacePrim& prim : space.GetPrimitives()) names.push_back(prim.name);
  return names;
}

// Returns "; did you mean x?" or an empty text.
std::string Suggestion(const std::string& word, const std::vector<std::string>& names) {
  const std::string nearest = ZQNearestName(word, names);
  return nearest.empty() ? nearest : "; did you mean " + nearest + "?";
}

template <class Visitor>
void VisitParameters(const ZQInterface& interface, const Visitor& visit) {
  for (const auto& parameter : interface.GetParameters()) visit(*parameter);
  for (const auto& child : interface.GetInterfaces()) VisitParameters(*child, visit);
}

}  // namespace

// ---- parameter

ZQParameter::ZQParameter(std::string name, std::string alias, ZQParamType type, std::string brief)
    : name_(std::move(name)), alias_(std::move(alias)), type_(type), brief_(std::move(brief)) {}

ZQParameter& ZQParameter::AddDetail(const std::string& text) {
  details_ += text;
  return *this;
}

ZQParameter& ZQParameter::SetDefault(ZQParamValue value) {
  if (ZQ_ASSERT(TypeOf(value) == type_)) default_ = std::move(value);
  return *this;
}

ZQParameter& ZQParameter::SetDefaultText(const std::string& text) {
  defaultText_ = text;
  return *this;
}

std::string ZQParameter::GetDefaultText() const {
  return defaultText_.empty() ? ZQGetValueText(default_) : defaultText_;
}

ZQParameter& ZQParameter::SetLegalRange(ZQParamValue least, ZQParamValue greatest) {
  if (ZQ_ASSERT(TypeOf(least) == type_ && TypeOf(greatest) == type_)) {
    least_ = std::move(least);
    greatest_ = std::move(greatest);
  }
  return *this;
}

ZQParameter& ZQParameter::SetLegalNames(const ZQNamespaceInterface& names,
                                        std::vector<std::string> furtherNames) {
  names_ = &names;
  furtherNames_ = std::move(furtherNames);
  return *this;
}

std::string ZQParameter::GetLegalText() const {
  if (least_.index() != 0) return ZQGetValueText(least_) + " to " + ZQGetValueText(greatest_);
  if (!names_) return {};
  std::string text = Join(PrimitiveNames(*names_), ", ");
  if (names_->GetMode() == ZQNamespaceMode::Combining) text += ", joined by \"|\"";
  if (!furtherNames_.empty()) text += ", or " + Join(furtherNames_, ", ");
  return text;
}

ZQParameter& ZQParameter::SetVisibility(unsigned int visibility) {
  visibility_ = visibility;
  return *this;
}

ZQParameter& ZQParameter::SetPositional() {
  positional_ = true;
  return *this;
}

bool ZQParameter::SetValue(ZQParamValue value) {
  if (TypeOf(value) != type_) {
    ZQThrow.Warning("%s: the value is of another type than the parameter", name_.c_str());
    return false;
  }
  if (least_.index() != 0 && !(value >= least_ && value <= greatest_)) {
    ZQThrow.Warning("%s: %s is outside the legal range, %s", name_.c_str(),
                    ZQGetValueText(value).c_str(), GetLegalText().c_str());
    return false;
  }
  if (names_) {
    const std::string& name = std::get<std::string>(value);
    if (!names_->IsValid(name) &&
        std::find(furtherNames_.begin(), furtherNames_.end(), name) == furtherNames_.end()) {
      std::vector<std::string> known = PrimitiveNames(*names_);
      known.insert(known.end(), furtherNames_.begin(), furtherNames_.end());
      const std::string unknown = name.substr(name.rfind('|') + 1);
      ZQThrow.Warning("%s: '%s' is not one of %s%s", name_.c_str(), name.c_str(),
                      GetLegalText().c_str(), Suggestion(unknown, known).c_str());
      return false;
    }
  }
  value_ = std::move(value);
  set_ = true;
  return true;
}

bool ZQParameter::SetText(const std::string& text) {
  const char* expected = "";
  switch (type_) {
    case ZQParamType::Bool:
      if (text == "true" || text == "false") return SetValue(text == "true");
      expected = "true or false";
      break;
    case ZQParamType::Int: {
      int number = 0;
      if (ZQStringToNumber(text, number)) return SetValue(number);
      expected = "a whole number";
      break;
    }
    case ZQParamType::Float: {
      float number = 0;
      if (ZQStringToNumber(text, number) && std::isfinite(number)) return SetValue(number);
      expected = "a number";
      break;
    }
    case ZQParamType::String:
      return SetValue(text);
    case ZQParamType::Switch:
      expected = "expected here: the switch takes no value";
      break;
  }
  ZQThrow.Warning("%s: '%s' is not %s", name_.c_str(), text.c_str(), expected);
  return false;
}

std::string ZQGetValueText(const ZQParamValue& value) {
  switch (TypeOf(value)) {
    case ZQParamType::Bool:
      return std::get<bool>(value) ? "true" : "false";
    case ZQParamType::Int:
      return std::to_string(std::get<int>(value));
    case ZQParamType::Float: {
      std::array<char, 32> text{};  // the shortest form that reads back as the same float
      char* end = std::to_chars(text.begin(), text.end(), std::get<float>(value)).ptr;
      return {text.begin(), end};
    }
    case ZQParamType::String:
      return std::get<std::string>(value);
    case ZQParamType::Switch:
      break;
  }
  return {};
}

// ---- interface

ZQInterface::ZQInterface(std::string name, std::string brief)
    : name_(std::move(name)), brief_(std::move(brief)) {}

ZQParameter* ZQInterface::AddParameter(ZQParameter parameter) {
  const ZQInterface* root = this;
  while (root->parent_) root = root->parent_;
  for (const std::string& name : {parameter.GetName(), parameter.GetAlias()}) {
    if (!name.empty() && root->FindParameter(name)) {
      ZQThrow.Warning("ZQInterface::AddParameter, parameter %s exists already", name.c_str());
      return nullptr;
    }
  }
  return parameters_.emplace_back(std::make_unique<ZQParameter>(std::move(parameter))).get();
}

ZQInterface* ZQInterface::AddInterface(const std::string& name) {
  if (GetInterface(name)) return nullptr;
  auto& added = interfaces_.emplace_back(std::make_unique<ZQInterface>(name));
  added->parent_ = this;
  return added.get();
}

ZQInterface* ZQInterface::GetInterface(const std::string& name) const {
  for (const auto& child : interfaces_) {
    if (child->name_ == name) return child.get();
  }
  return nullptr;
}

ZQParameter* ZQInterface::FindParameter(const std::string& name) const {
  for (const auto& parameter : parameters_) {
    if (parameter->GetName() == name || (!name.empty() && parameter->GetAlias() == name)) {
      return parameter.get();
    }
  }
  for (const auto& child : interfaces_) {
    if (ZQParameter* found = child->FindParameter(name)) return found;
  }
  return nullptr;
}

const ZQParamValue* ZQInterface::Read(const std::string& name, ZQParamType type) const {
  const ZQParameter* parameter = FindParameter(name);
  if (!parameter) {
    ZQThrow.Warning("ZQInterface::Get, requesting value of non-existent parameter %s",
                    name.c_str());
  } else if (!parameter->IsSet() && !parameter->HasDefault()) {
    ZQThrow.Warning("ZQInterface::Get, requesting value of unset parameter %s", name.c_str());
  } else if (parameter->GetType() != type && parameter->GetType() != ZQParamType::Switch) {
    ZQThrow.Warning("ZQInterface::Get, requested parameter %s is not of requested type",
                    name.c_str());
  } else if (TypeOf(parameter->GetValue()) != type) {  // a switch that was given
    ZQThrow.Warning("ZQInterface::Get, parameter %s is not set", name.c_str());
  } else {
    return &parameter->GetValue();
  }
  return nullptr;
}

// ---- command line

bool ZQParseCommandLine(ZQInterface& interface, const std::vector<std::string>& words) {
  std::vector<std::string> names;
  std::vector<ZQParameter*> positional;
  VisitParameters(interface, [&](ZQParameter& parameter) {
    if (parameter.IsPositional()) {
      positional.push_back(&parameter);
    } else {
      names.push_back(parameter.GetName());
    }
  });

  std::size_t place = 0;
  bool namesEnded = false;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (!namesEnded && word == "--") {
      namesEnded = true;
      continue;
    }
    if (namesEnded || word.size() < 2 || word[0] != '-') {
      if (place == positional.size()) {
        ZQThrow.Warning("'%s' is one argument too many", word.c_str());
        return false;
      }
      if (!positional[place++]->SetText(word)) return false;
      continue;
    }
    const std::string name = word[1] == '-' ? word.substr(1) : word;
    ZQParameter* parameter = interface.FindParameter(name);
    if (!parameter) {
      ZQThrow.Warning("unknown option '%s'%s", word.c_str(), Suggestion(name, names).c_str());
      return false;
    }
    if (parameter->GetType() == ZQParamType::Switch) return parameter->SetValue({});
    if (parameter->IsSet()) {
      ZQThrow.Warning("option %s is given twice", parameter->GetName().c_str());
      return false;
    }
    const bool isLast = i + 1 == words.size();
    if (parameter->GetType() == ZQParamType::Bool &&
        (isLast || (words[i + 1] != "true" && words[i + 1] != "false"))) {
      parameter->SetValue(true);
      continue;
    }
    if (isLast) {
      ZQThrow.Warning("option %s needs a value", parameter->GetName().c_str());
      return false;
    }
    if (!parameter->SetText(words[++i])) return false;
  }
  if (place < positional.size() && !positional[place]->HasDefault()) {
    ZQThrow.Warning("argument %s is missing", positional[place]->GetName().c_str());
    return false;
  }
  return true;
}

// ---- help

namespace {

// Breaks the text into lines of at most the width; a word longer than a line is cut.
void AppendWrapped(std::string& out, const std::string& text, std::size_t indent) {
  const std::size_t width = helpWidth - indent;
  std::string line;
  const auto endLine = [&] {
    out.append(indent, ' ').append(line).append(1, '\n');
    line.clear();
  };
  for (std::string word : ZQStringTokenize(text, ' ')) {
    if (!line.empty() && line.size() + 1 + word.size() > width) endLine();
    if (!line.empty()) line += ' ';
    line += word;
    while (line.size() > width) {
      word = line.substr(width);
      line.resize(width);
      endLine();
      line = word;
    }
  }
  if (!line.empty()) endLine();
}

// Shows each :ref:`text <target>` as its text: a terminal has no links.
std::string WithoutLinks(const std::string& text) {
  static constexpr std::string_view open = ":ref:`";
  std::string shown;
  std::size_t at = 0;
  for (;;) {
    const std::size_t begin = text.find(open, at);
    const std::size_t target = text.find(" <", begin);
    const std::size_t end = text.find(">`", target);
    if (end == std::string::npos) return shown + text.substr(at);
    shown += text.substr(at, begin - at);
    shown += text.substr(begin + open.size(), target - begin - open.size());
    at = end + 2;
  }
}

const char* ValueWord(const ZQParameter& parameter) {
  switch (parameter.GetType()) {
    case ZQParamType::Bool:
      return " [true|false]";
    case ZQParamType::Int:
      return " N";
    case ZQParamType::Float:
      return " X";
    case ZQParamType::String:
      return parameter.GetLegalText().empty() ? " TEXT" : " NAME";
    case ZQParamType::Switch:
      break;
  }
  return "";
}

void AppendParameter(std::string& out, const ZQParameter& parameter, bool details) {
  std::string head = parameter.GetName();
  if (!parameter.GetAlias().empty()) head += ", " + parameter.GetAlias();
  if (!parameter.IsPositional()) head += ValueWord(parameter);
  AppendWrapped(out, head, 2);

  std::string facts = parameter.GetLegalText();
  if (parameter.HasDefault()) {
    if (!facts.empty()) facts += "; ";
    facts += "default " + parameter.GetDefaultText();
  }
  AppendWrapped(out, parameter.GetBrief() + (facts.empty() ? facts : " (" + facts + ")"), 6);
  if (!details) return;
  for (const std::string& line : ZQStringTokenize(WithoutLinks(parameter.GetDetails()), '\n')) {
    const std::size_t tabs = std::min(line.find_first_not_of('\t'), line.size());
    AppendWrapped(out, line.substr(tabs), 8 + 2 * std::min<std::size_t>(tabs, 4));
  }
}

void AppendSection(std::string& out, const ZQInterface& interface, bool details,
                   unsigned int visibility) {
  for (const auto& parameter : interface.GetParameters()) {
    if (parameter->GetVisibility() <= visibility) AppendParameter(out, *parameter, details);
  }
  for (const auto& child : interface.GetInterfaces()) {
    out += "\n" + child->GetName() + ":\n";
    AppendSection(out, *child, details, visibility);
  }
}

}  // namespace

std::string ZQGetHelp(const ZQInterface& interface, bool details, unsigned int visibility) {
  std::string usage = "usage: " + interface.GetName();
  bool options = false;
  VisitParameters(interface, [&](const ZQParameter& parameter) {
    if (parameter.IsPositional()) {
      const std::string& name = parameter.GetName();
      usage += parameter.HasDefault() ? " [" + name + "]" : " " + name;
    }
    options = options || !parameter.IsPositional();
  });
  if (options) usage += " [options]";
  std::string out;
  AppendWrapped(out, usage, 0);
  if (!interface.GetBrief().empty()) {
    out += '\n';
    AppendWrapped(out, interface.GetBrief(), 0);
  }
  out += '\n';
  AppendSection(out, interface, details, visibility);
  return out;
}

}  // namespace Bostrel
