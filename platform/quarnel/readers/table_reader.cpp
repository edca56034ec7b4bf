// Tables (RFC 4180): a header line that names the columns, and lines of fields, one a molecule.

#include <algorithm>
#include <initializer_list>
#include <string>
#include <vector>

#include "contract/bostrel/characters_local.h"
#include "platform/quarnel/readers/file_format_local.h"
#include "platform/quarnel/readers/smiles_line_local.h"

namespace Quarnel {

using Bostrel::ToLower;
using Bostrel::Trimmed;

namespace {

/// The fields of one line, which ends at a line feed outside of quotes.
template <char separator>
class Fields {
 public:
  explicit Fields(std::string_view text, std::size_t from = 0) : text_(text), end_(from) {}

  /// Goes to the next field, at first to the first one; false at the end of the line.
  bool Next() {
    if (isLast_) return false;
    ++index_;
    std::size_t at = end_;
    isQuoted_ = at < text_.size() && text_[at] == '"';
    isClosed_ = true;
    if (isQuoted_) {
      const std::size_t quote = FindClosingQuote(at + 1);
      isClosed_ = quote != std::string_view::npos;
      quoted_ = text_.substr(at + 1, isClosed_ ? quote - at - 1 : quote);
      at = isClosed_ ? quote + 1 : text_.size();
    }
    const std::size_t start = at;
    while (at < text_.size() && text_[at] != separator && text_[at] != '\n') ++at;
    rest_ = Trimmed(text_.substr(start, at - start));
    isLast_ = at == text_.size() || text_[at] == '\n';
    end_ = std::min(at + 1, text_.size());
    return true;
  }
  /// The field's number, from 0.
  std::size_t GetIdx() const { return index_; }
  /// The start of the next field or, after the last one, of the next line.
  std::size_t GetEnd() const { return end_; }

  /// The field without blanks at its ends, and without its quotes.
  std::string GetValue() const {
    if (!isQuoted_) return std::string(rest_);
    std::string value;
    for (std::size_t i = 0; i < quoted_.size(); i += quoted_[i] == '"' ? 2 : 1) value += quoted_[i];
    return std::string(Trimmed(value));
  }

  bool Check(ReaderError& error) const {
    if (!isClosed_) return Fail(error, "the end", "a closing quote");
    if (!isQuoted_ || rest_.empty()) return true;
    const char* expected = separator == '\t' ? "a tab or the end of the line behind a closing quote"
                                             : "a comma or the end of the line behind a closing "
                                               "quote";
    return Fail(error, QuoteStart(rest_), expected);
  }
  /// Fills the error and returns false.
  bool Fail(ReaderError& error, std::string found, std::string expected) const {
    error = {index_ + 1, std::move(found), std::move(expected), "field"};
    return false;
  }

 private:
  // Two quotes stand for one.
  std::size_t FindClosingQuote(std::size_t from) const {
    std::size_t quote = text_.find('"', from);
    while (quote != std::string_view::npos && quote + 1 < text_.size() && text_[quote + 1] == '"') {
      quote = text_.find('"', quote + 2);
    }
    return quote;
  }

  std::string_view text_;
  std::size_t index_ = TableColumns::none;
  std::size_t end_;
  std::string_view quoted_;
  std::string_view rest_;  // an unquoted field, or what follows the quotes
  bool isQuoted_ = false;
  bool isClosed_ = true;
  bool isLast_ = false;
};

template <char separator>
std::size_t FindTableLine(std::string_view text, std::size_t& from) {
  for (;;) {
    if (from == text.size()) return std::string_view::npos;
    const std::size_t start = from;
    const std::size_t end = std::min(text.find('\n', start), text.size());
    const std::string_view line = text.substr(start, end - start);
    from = std::min(end + 1, text.size());
    if (Trimmed(line).empty()) continue;
    if (line.find('"') != std::string_view::npos) {
      Fields<separator> fields(text, start);
      while (fields.Next()) continue;
      from = fields.GetEnd();
    }
    return start;
  }
}

// ---- the header line

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), ToLower);
  return text;
}

// The first column of that name, exactly or else in any case.
std::size_t FindColumn(const std::vector<std::string>& names, const std::string& wanted) {
  auto found = std::find(names.begin(), names.end(), wanted);
  if (found == names.end()) {
    const std::string lower = LowerCase(wanted);
    found = std::find_if(names.begin(), names.end(),
                         [&](const std::string& name) { return LowerCase(name) == lower; });
  }
  return found == names.end() ? TableColumns::none
                              : static_cast<std::size_t>(found - names.begin());
}

// The column of the option or, if that is empty, of the first default that there is.
std::size_t FindColumn(const std::vector<std::string>& names, const std::string& option,
                       std::initializer_list<const char*> defaults) {
  if (!option.empty()) return FindColumn(names, option);
  std::size_t found = TableColumns::none;
  for (const char* name : defaults) {
    if (found == TableColumns::none) found = FindColumn(names, name);
  }
  return found;
}

std::string DescribeMissing(const std::vector<std::string>& names, const std::string& missing) {
  constexpr std::size_t mostNames = 30;
  constexpr std::size_t mostBytes = 60;
  std::string text = "No column is named " + missing + ", but there are ";
  for (std::size_t i = 0; i < std::min(names.size(), mostNames); ++i) {
    text += i == 0 ? "" : ", ";
    text += names[i].empty() ? "\"\"" : QuoteStart(names[i], mostBytes);
  }
  if (names.size() > mostNames) {
    text += " and " + std::to_string(names.size() - mostNames) + " more";
  }
  return text;
}

template <char separator>
bool ReadHeader(std::string_view text, std::size_t& from, const ZQMolFileOptions& options,
                TableColumns& columns, std::string& cause) {
  const std::size_t start = FindTableLine<separator>(text, from);
  if (start == std::string_view::npos) {
    cause = "There is no header line";
    return false;
  }
  std::vector<std::string> names;
  for (Fields<separator> fields(text, start); fields.Next();) {
    ReaderError error;
    if (!fields.Check(error)) {
      cause = "The header line, field " + std::to_string(error.place) + ": found " + error.found +
              ", expected " + error.expected;
      return false;
    }
    names.push_back(fields.GetValue());
  }
  columns.count = names.size();
  columns.smiles = FindColumn(names, options.smilesColumn, {"SMILES", "canonical_smiles"});
  columns.title = FindColumn(names, options.titleColumn, {"name", "title", "id"});
  const std::string* missing = nullptr;
  const std::string byDefault = "SMILES or canonical_smiles";
  if (columns.smiles == TableColumns::none) {
    missing = options.smilesColumn.empty() ? &byDefault : &options.smilesColumn;
  } else if (columns.title == TableColumns::none && !options.titleColumn.empty()) {
    missing = &options.titleColumn;
  }
  if (missing) cause = DescribeMissing(names, *missing);
  return !missing;
}

// ---- records

template <char separator>
std::string GetField(std::string_view record, std::size_t index) {
  for (Fields<separator> fields(record); fields.Next();) {
    if (fields.GetIdx() == index) return fields.GetValue();
  }
  return {};
}

// Without a column of titles, a title may follow the SMILES.
template <char separator>
std::string GetTableTitle(std::string_view record, const TableColumns& columns) {
  if (columns.title != TableColumns::none) return GetField<separator>(record, columns.title);
  return std::string(GetTitleOfLine(GetField<separator>(record, columns.smiles)));
}

template <char separator>
std::string GetTableSmiles(std::string_view record, const TableColumns& columns) {
  return std::string(GetSmilesOfLine(GetField<separator>(record, columns.smiles)));
}

template <char separator>
bool ReadTableLine(ZQMolBase& mol, std::string_view record, const TableColumns& columns,
                   ReaderError& error) {
  for (Fields<separator> fields(record); fields.Next();) {
    if (!fields.Check(error)) return false;
    // Empty fields past the last column are harmless, a shifted line isn't.
    if (fields.GetIdx() >= columns.count && !fields.GetValue().empty()) {
      return fields.Fail(error, QuoteStart(fields.GetValue()),
                         "one of " + std::to_string(columns.count) + " columns");
    }
  }
  const std::string smiles = GetTableSmiles<separator>(record, columns);
  if (smiles.empty()) {
    error = {columns.smiles + 1, "the end", "a SMILES", "field"};
    return false;
  }
  if (!ReadSmiles(mol, smiles, error)) return false;
  mol.SetTitle(GetTableTitle<separator>(record, columns));
  return true;
}

template <char separator>
constexpr FileFormat TableFormat(std::string_view extension) {
  return {extension,
          smilesPlace,
          ReadHeader<separator>,
          FindTableLine<separator>,
          ReadTableLine<separator>,
          GetTableTitle<separator>,
          GetTableSmiles<separator>};
}

}  // namespace

const FileFormat commaFiles = TableFormat<','>(".csv");
const FileFormat tabFiles = TableFormat<'\t'>(".tsv");

}  // namespace Quarnel
