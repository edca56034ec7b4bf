#pragma once

/// Parameters of an application: named, typed values with defaults and legal ranges, in a tree of
/// interfaces, used to parse a command line and to write a help text. An interface is for one
/// thread.

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "contract/bostrel/export.h"
#include "contract/bostrel/nspace.h"

namespace Bostrel {

/// A value; the first alternative means no value.
using ZQParamValue = std::variant<std::monostate, bool, int, float, std::string>;

/// The type of a parameter, in the order of the alternatives of `ZQParamValue`.
enum class ZQParamType { Switch, Bool, Int, Float, String };

/// One parameter. Its name and alias begin with a dash, unless it is positional.
class ZQ_EXPORT ZQParameter {
 public:
  /// A switch is set by its name alone and has no value; it ends the parsing of a command line (see
  /// `ZQParseCommandLine`).
  ZQParameter(std::string name, std::string alias, ZQParamType type, std::string brief);

  const std::string& GetName() const { return name_; }
  const std::string& GetAlias() const { return alias_; }  ///< may be empty
  ZQParamType GetType() const { return type_; }
  const std::string& GetBrief() const { return brief_; }

  /// Appends text to the long help; lines may begin with tabs.
  ZQParameter& AddDetail(const std::string& text);
  const std::string& GetDetails() const { return details_; }

  /// Sets the value used while none is set. Its type must be the parameter's (an assertion); its
  /// range isn't checked.
  ZQParameter& SetDefault(ZQParamValue value);
  bool HasDefault() const { return default_.index() != 0; }
  const ZQParamValue& GetDefault() const { return default_; }
  /// Sets the text shown by the help instead of the default value, for a default that depends on
  /// another parameter.
  ZQParameter& SetDefaultText(const std::string& text);
  std::string GetDefaultText() const;

  /// Sets the legal range of an int or float parameter, both ends included.
  ZQParameter& SetLegalRange(ZQParamValue least, ZQParamValue greatest);
  /// Sets the legal values of a string parameter: the valid names of the namespace, and further
  /// names. The namespace must outlive the parameter.
  ZQParameter& SetLegalNames(const ZQNamespaceInterface& names,
                             std::vector<std::string> furtherNames = {});
  /// Describes the legal values; empty if all are legal.
  std::string GetLegalText() const;

  /// 0 (the default) is shown by every help text, a greater number only by one of at least this
  /// visibility.
  ZQParameter& SetVisibility(unsigned int visibility);
  unsigned int GetVisibility() const { return visibility_; }

  /// Makes the parameter identified by its position among the words without a dash. It is required
  /// unless it has a default; those after one with a default need defaults too.
  ZQParameter& SetPositional();
  bool IsPositional() const { return positional_; }

  /// Sets the value. For a value of another type or outside the legal range, warns, returns false
  /// and changes nothing.
  bool SetValue(ZQParamValue value);
  /// The same with the value as text, as on a command line: "true" or "false" for bool.
  bool SetText(const std::string& text);
  bool IsSet() const { return set_; }
  /// Returns the value set, else the default, else no value.
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

  /// Adds a parameter, owned by the interface. Warns and returns null if the tree already has its
  /// name or alias.
  ZQParameter* AddParameter(ZQParameter parameter);
  /// Adds an empty child interface; returns null if there is one of this name.
  ZQInterface* AddInterface(const std::string& name);
  /// Returns the child interface of this name, or null.
  ZQInterface* GetInterface(const std::string& name) const;

  const std::vector<std::unique_ptr<ZQParameter>>& GetParameters() const { return parameters_; }
  const std::vector<std::unique_ptr<ZQInterface>>& GetInterfaces() const { return interfaces_; }

  /// Returns the parameter of this name or alias in this interface or its descendants, or null.
  ZQParameter* FindParameter(const std::string& name) const;
  bool IsSet(const std::string& name) const {
    const ZQParameter* parameter = FindParameter(name);
    return parameter && parameter->IsSet();
  }

  /// Returns the value of a parameter; T is bool, int, float or std::string. If the parameter
  /// doesn't exist, is neither set nor has a default, is of another type or has no value, warns
  /// "ZQInterface:: Get, ..." and returns T().
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

/// Sets the parameters from the words of a command line, without the program name: a name with one
/// or two dashes and its value, or a positional value; after "--" all words are positional. A
/// bool takes the next word as its value only if that is "true" or "false", otherwise its name
/// stands for true. A switch (such as one that requests help) ends the parsing; required parameters
/// may then be missing. Returns false after one warning for an unknown name (with the nearest known
/// one), a missing or illegal value or one of another type, a repeated name, or too many or too few
/// positional values.
ZQ_EXPORT bool ZQParseCommandLine(ZQInterface& interface, const std::vector<std::string>& words);

/// Returns the help text, at most 80 columns wide: usage, brief, and each parameter of at most this
/// visibility with type, brief, legal values and default. `details` adds the detail texts; a
/// reference :ref:`text <target>` is shown as its text.
ZQ_EXPORT std::string ZQGetHelp(const ZQInterface& interface, bool details = false,
                                unsigned int visibility = 0);

}  // namespace Bostrel
