#pragma once

/// Reads XML far enough to check that it is well-formed and to look at its elements.

#include <gtest/gtest.h>

#include <cctype>
#include <map>
#include <string>
#include <string_view>
#include <vector>

struct XmlElement {
  std::string name;
  std::map<std::string, std::string> attributes;  ///< references as they are written
  std::string text;                               ///< of the element alone
  bool Has(const std::string& attribute, std::string_view value) const {
    const auto found = attributes.find(attribute);
    return found != attributes.end() && found->second == value;
  }
};

/// The elements in the order of their start tags. A text that isn't well-formed is a test failure,
/// and so is a control character or a noncharacter.
inline std::vector<XmlElement> ReadXml(std::string_view xml) {
  std::vector<XmlElement> elements;
  std::vector<std::size_t> open;
  std::size_t at = 0;
  const auto fail = [&](const char* what) {
    ADD_FAILURE() << what << " at \"" << xml.substr(at, 80) << '"';
    return std::vector<XmlElement>();
  };
  const auto isReference = [](std::string_view rest) {
    const std::string_view name = rest.substr(0, rest.find(';'));
    return name == "&lt" || name == "&gt" || name == "&amp" || name == "&quot" ||
           name.starts_with("&#");
  };
  const auto isName = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == ':';
  };
  const auto takeName = [&] {
    const std::size_t begin = at;
    while (at < xml.size() && isName(xml[at])) ++at;
    return std::string(xml.substr(begin, at - begin));
  };
  const auto skipBlanks = [&] {
    while (at < xml.size() && std::isspace(static_cast<unsigned char>(xml[at])) != 0) ++at;
  };
  for (const char c : xml) {
    if (static_cast<unsigned char>(c) < ' ' && c != '\n' && c != '\t')
      return fail("a control character");
  }
  for (const char* code : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"}) {
    if (xml.find(code) != std::string_view::npos) return fail("U+FFFE or U+FFFF");
  }
  if (xml.starts_with("<!DOCTYPE html>") || xml.starts_with("<?xml")) at = xml.find('>') + 1;
  while (at < xml.size()) {
    if (xml[at] != '<') {
      if (xml[at] == '&' && !isReference(xml.substr(at))) return fail("a bare &");
      if (!open.empty()) {
        elements[open.back()].text += xml[at];
      } else if (std::isspace(static_cast<unsigned char>(xml[at])) == 0) {
        return fail("text outside of the document");
      }
      ++at;
      continue;
    }
    ++at;
    if (xml[at] == '/') {
      ++at;
      if (open.empty() || takeName() != elements[open.back()].name || xml[at] != '>') {
        return fail("an end tag that doesn't match");
      }
      open.pop_back();
      ++at;
      continue;
    }
    XmlElement element{takeName(), {}, {}};
    if (element.name.empty()) return fail("a bare <");
    for (skipBlanks(); at < xml.size() && isName(xml[at]); skipBlanks()) {
      const std::string attribute = takeName();
      if (xml.substr(at, 2) != "=\"") return fail("an attribute without value");
      const std::size_t end = xml.find('"', at + 2);
      const std::string_view value = xml.substr(at + 2, end - at - 2);
      if (value.find('<') != std::string_view::npos) return fail("< in a value");
      for (std::size_t and_ = value.find('&'); and_ != std::string_view::npos;
           and_ = value.find('&', and_ + 1)) {
        if (!isReference(value.substr(and_))) return fail("a bare & in a value");
      }
      if (!element.attributes.emplace(attribute, value).second) return fail("a repeated attribute");
      at = end + 1;
    }
    const bool isEmpty = xml[at] == '/';
    at += isEmpty;
    if (at >= xml.size() || xml[at] != '>') return fail("a tag without end");
    ++at;
    elements.push_back(std::move(element));
    if (!isEmpty) open.push_back(elements.size() - 1);
  }
  if (!open.empty()) return fail("elements without end");
  return elements;
}

/// The attribute of each element that has this name and class.
inline std::vector<std::string> AttributesOf(const std::vector<XmlElement>& elements,
                                             const std::string& name, std::string_view className,
                                             const std::string& attribute) {
  std::vector<std::string> values;
  for (const XmlElement& element : elements) {
    const auto found = element.attributes.find(attribute);
    if (element.name == name && element.Has("class", className) &&
        found != element.attributes.end()) {
      values.push_back(found->second);
    }
  }
  return values;
}
