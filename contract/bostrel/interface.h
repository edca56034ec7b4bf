#pragma once

/// Parameters of an application: named, typed values with defaults and legal ranges, in a tree of
/// interfaces, from which a command line is read and a help text is made. An interface belongs to
/// one thread.

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "contract/bostrel/export.h"
#include "contract/bostrel/nspace.h"

namespace Bostrel {

/// A value; the first alternative stands for none.
using ZQParamValue = std::variant<std::monostate, bool, int, float, std::string>;

/// The type of a parameter, numbered as the alternatives of `ZQParamValue`.
enum class ZQParamType { Switch, Bool, Int, Float, String };

/// One parameter. Its name and alias begin with a dash, unless it is told by its position.
class ZQ_EXPORT ZQParameter {
 public:
  /// A switch is set by its bare name and has no value; it ends a command line (see
  /// `ZQParseCommandLine`).
  ZQParameter(std::string name, std::string alias, ZQParamType type, std::string brief);

  const std::string& GetName() const { return name_; }
  const std::string& GetAlias() const { return alias_; }  ///< may be empty
  ZQParamType GetType() const { return type_; }
  const std::string& GetBrief() const { return brief_; }

  /// Text for the long help, appended; lines may begin with tabs.
  ZQParameter& AddDetail(const std::string& text);
  const std::string& GetDetails() const { return details_; }

  /// The value while none is set. Its type must be the parameter's (an assertion); its range
  /// isn't checked.
  ZQParameter& SetDefault(ZQParamValue value);
  bool HasDefault() const { return default_.index() != 0; }
  const ZQParamValue& GetDefault() const { return default_; }
  /// What the help tells of the default in place of its value, where that depends on another
  /// parameter.
  ZQParameter& SetDefaultText(const std::string& text);
  std::string GetDefaultText() const;

  /// Legal values of an int or float parameter, both ends included.
  ZQParameter& SetLegalRange(ZQParamValue least, ZQParamValue greatest);
  /// Legal values of a string parameter: what the namespace holds valid, and further names. The
  /// namespace must outlive the parameter.
  ZQParameter& SetLegalNames(const ZQNamespaceInterface& names,
                             std::vector<std::string> furtherNames = {});
  /// The legal values in words, empty if all are legal.
  std::string GetLegalText() const;

  /// 0 (the default) is shown by every help, greater numbers by a help that asks for them.
  ZQParameter& SetVisibility(unsigned int visibility);
  unsigned int GetVisibility() const { return visibility_; }

  /// Told by its place among the words without a dash, and required.
  ZQParameter& SetPositional();
  bool IsPositional() const { return positional_; }

  /// Sets the value. One of another type or out of the legal range warns, answers false and
  /// changes nothing.
  bool SetValue(ZQParamValue value);
  /// The same with the value in words, as a command line has it: "true" or "false" for bool.
  bool SetText(const std::string& text);
  bool IsSet() const { return set_; }
  /// The value set, or the default; none if there is neither.
  const ZQParamValue& GetValue() const { return set_ ? value_ : default_; }

 private:
  std::string name_;
  std::string alias_;
  ZQParamType type_;
  std::string brief_;
  std::string details_;
  ZQParamValue default_;
  std::string defaultText_;
  ZQParamValue value_;
  ZQParamValue least_;
  ZQParamValue greatest_;
  const ZQNamespaceInterface* names_ = nullptr;
  std::vector<std::string> furtherNames_;
  unsigned int visibility_ = 0;
  bool positional_ = false;
  bool set_ = false;
};

/// "0.5" for a float, "true" for a bool; empty for no value.
ZQ_EXPORT std::string ZQGetValueText(const ZQParamValue& value);

/// A tree of parameters. Names and aliases are unique in the whole tree.
class ZQ_EXPORT ZQInterface {
 public:
  explicit ZQInterface(std::string name = std::string(), std::string brief = std::string());
  ZQInterface(const ZQInterface&) = delete;
  ZQInterface& operator=(const ZQInterface&) = delete;

  const std::string& GetName() const { return name_; }
  const std::string& GetBrief() const { return brief_; }

  /// Adds a parameter, owned by the interface; null after a warning if the tree has its name or
  /// alias.
  ZQParameter* AddParameter(ZQParameter parameter);
  /// Adds an empty interface below this one; null if there is one of this name.
  ZQInterface* AddInterface(const std::string& name);
  /// The interface of this name directly below this one, or null.
  ZQInterface* GetInterface(const std::string& name) const;

  const std::vector<std::unique_ptr<ZQParameter>>& GetParameters() const { return parameters_; }
  const std::vector<std::unique_ptr<ZQInterface>>& GetInterfaces() const { return interfaces_; }

  /// The parameter of this name or alias here or below, or null.
  ZQParameter* FindParameter(const std::string& name) const;
  bool IsSet(const std::string& name) const {
    const ZQParameter* parameter = FindParameter(name);
    return parameter && parameter->IsSet();
  }

  /// The value of a parameter, T being bool, int, float or std::string. A parameter that doesn't
  /// exist, is neither set nor has a default, is of another type or has no value warns
  /// "ZQInterface:: Get, ..." and gives T().
  template <class T>
  T Get(const std::string& name) const {
    const ZQParamValue* value = Read(name, static_cast<ZQParamType>(ZQParamValue(T()).index()));
    return value ? std::get<T>(*value) : T();
  }

 private:
  const ZQParamValue* Read(const std::string& name, ZQParamType type) const;

  std::string name_;
  std::string brief_;
  ZQInterface* parent_ = nullptr;
  std::vector<std::unique_ptr<ZQParameter>> parameters_;
  std::vector<std::unique_ptr<ZQInterface>> interfaces_;
};

/// Sets the parameters from the words of a command line, program name left out: a name with one
/// dash or two and its value, or a positional value; behind "--" all words are positional. A
/// switch ends the reading there, with nothing required any more: it asks for help, or the like.
/// False after one warning: an unknown name (with the nearest known one), a value that is missing,
/// illegal or of another type, a name given twice, a positional value too many or too few.
ZQ_EXPORT bool ZQParseCommandLine(ZQInterface& interface, const std::vector<std::string>& words);

/// The help text, at most 80 columns wide: usage, brief, and each parameter of at most this
/// visibility with type, brief, legal values and default; `details` adds the detail texts, with
/// references of the form :ref:`text <target>` shown as their text.
ZQ_EXPORT std::string ZQGetHelp(const ZQInterface& interface, bool details = false,
                                unsigned int visibility = 0);

}  // namespace Bostrel
