// The documents are correct: their examples are files that compile and run, their commands run, the
// messages they list are in the sources, and one header has the whole interface.

#include <fnmatch.h>
#include <glob.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <sstream>

#include "contract/bostrel/strings.h"
#include "contract/quarnel/moldatabase.h"
#include "korvex/fpkinds.h"
#include "tests/program_helpers.h"

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

const fs::path root = KORVEX_SOURCE_DIR;
const fs::path programs = fs::path(KORVEX_PROGRAM).parent_path();

// The fenced blocks of a language, in order.
std::vector<std::string> Blocks(const fs::path& document, const std::string& language) {
  std::vector<std::string> blocks;
  bool inside = false;
  for (const std::string& line : Lines(ReadFile(document))) {
    if (!inside && line == "```" + language) {
      inside = true;
      blocks.emplace_back();
    } else if (line == "```") {
      inside = false;
    } else if (inside) {
      blocks.back() += line + "\n";
    }
  }
  return blocks;
}

std::vector<fs::path> Sources(const Words& folders, const char* extension) {
  std::vector<fs::path> sources;
  for (const std::string& folder : folders) {
    for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
      if (entry.path().extension() == extension) sources.push_back(entry.path());
    }
  }
  return sources;
}

// A folder in which the documents' relative names refer to the project's files.
class DocsTest : public testing::Test {
 protected:
  DocsTest() { fs::create_directory_symlink(root / "data", folder / "data"); }

  WorkFolder folder;
};

TEST_F(DocsTest, CodeBlocksAreTheExampleFiles) {
  std::set<std::string> examples;
  for (const fs::path& name : Sources({"docs/examples"}, ".cpp")) examples.insert(ReadFile(name));
  std::set<std::string> shown;
  for (const char* document : {"README.md", "docs/guide.md"}) {
    for (const std::string& block : Blocks(root / document, "cpp")) shown.insert(block);
  }
  for (const std::string& block : shown) EXPECT_EQ(examples.count(block), 1U) << block;
  EXPECT_EQ(shown.size(), examples.size());
}

TEST_F(DocsTest, GuideHasEveryKind) {
  const std::string guide = ReadFile(root / "docs/guide.md");
  for (const ZQKorvex::ZQFPKind& kind : ZQKorvex::ZQGetFPKinds()) {
    EXPECT_NE(guide.find(std::string("`") + kind.name + "`"), std::string::npos) << kind.name;
  }
}

TEST_F(DocsTest, ExamplesRun) {
  const std::map<std::string, Words> expected{
      {"search", {"1.000 aspirin\n", "salicylic acid\n"}},
      {"compare", {"9 bits and 14 bits of 2048\n", "Tanimoto 0.438\n", "Tversky  0.778\n"}},
      {"memory", {"1 0.875\n0 0.759\n"}},
      {"threads", {"Finished, ", ", score 1.000\n", " scores, mean 0."}},
      {"kinds", {"0.451 by Path", "0.773 by MACCS166", "0.464 by UHTree", "atoms 9 10 11 12\n"}},
      {"explain",
       {"[C;h0](-[C;h3])(=[O;h0])-[O;h0]\n", "Tanimoto 0.385: 31 and 23 bits, 15 in both\n",
        "C0 alone  -0.084\n", "C10 shared +0.166\n"}},
      {"vsepr",
       {"1: 165 CH1:TertiarySp3:R\n", "molecules 0.288\n", "stereo  1.000\n",
        "groups     0.489\n"}},
      {"application", {"Path,ver=2.0.0,size=4096,", "1000 hits by Tanimoto\n"}},
  };
  for (const fs::path& source : Sources({"docs/examples"}, ".cpp")) {
    const std::string name = source.stem();
    const RunResult run = folder.Run({programs / "examples" / name});
    EXPECT_EQ(run.exitCode, 0) << name << "\n" << run.err;
    ASSERT_EQ(expected.count(name), 1U) << name;
    for (const std::string& text : expected.at(name)) {
      EXPECT_NE(run.out.find(text), std::string::npos) << name << " without " << text << run.out;
    }
  }
}

TEST_F(DocsTest, ShellBlocksRun) {
  for (const char* document : {"README.md", "docs/guide.md"}) {
    std::string output;
    for (const std::string& block : Blocks(root / document, "sh")) {
      if (block.find("./run.sh") != std::string::npos) continue;  // runs this test
      const RunResult run = folder.Run(
          {"bash", "-euo", "pipefail", "-c", "PATH=" + programs.string() + ":$PATH\n" + block});
      EXPECT_EQ(run.exitCode, 0) << block << run.err;
      output += run.out;
    }
    for (const std::string& block : Blocks(root / document, "text")) {
      EXPECT_NE(output.find(block), std::string::npos) << block << "is shown, but this came:\n"
                                                       << output;
    }
  }
  EXPECT_EQ(ReadFile(folder / "drugs.fpbin"), ReadFile(folder / "same.fpbin"));
}

// A text with the literals joined that the formatter has split, and with one form of %d.
std::string Normalized(const std::string& text) {
  std::string normalized;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::size_t next = text.find_first_not_of(" \n", at + 1);
    if (text[at] == '"' && next != std::string::npos && next > at + 1 && text[next] == '"') {
      at = next;
    } else {
      normalized += text[at];
    }
  }
  for (const std::string number : {"%u", "%lu", "%zu"}) {
    for (std::size_t at = 0; (at = normalized.find(number, at)) != std::string::npos;) {
      normalized.replace(at, number.size(), "%d");
    }
  }
  return normalized;
}

std::string SourceText() {
  std::string sources;
  for (const char* extension : {".cpp", ".h"}) {
    for (const fs::path& name : Sources({"korvex", "platform", "contract", "apps"}, extension)) {
      for (const std::string& line : Lines(ReadFile(name))) {
        const std::size_t comment = line.find("//");
        const bool isInText =
            std::count(line.begin(), line.begin() + std::min(comment, line.size()), '"') % 2 != 0;
        sources += line.substr(0, isInText ? std::string::npos : comment) + "\n";
      }
    }
  }
  return Normalized(sources);
}

std::set<std::string> ListedMessages() {
  std::set<std::string> listed;
  for (const std::string& line : Lines(ReadFile(root / "docs/errors.md"))) {
    // A text that contains backquotes is quoted by two of them.
    const std::string quote = line.starts_with("| ``") ? "``" : "`";
    if (!line.starts_with("| " + quote)) continue;
    const std::size_t begin = 2 + quote.size();
    listed.insert(Normalized(line.substr(begin, line.find(quote + " |") - begin)));
  }
  return listed;
}

TEST_F(DocsTest, ListedMessagesStandInTheSources) {
  const std::string sources = SourceText();
  for (const std::string& text : ListedMessages()) {
    EXPECT_NE(sources.find(text), std::string::npos) << text;
  }
}

bool IsWorded(const std::string& text) {
  int letters = 0;
  for (const char c : text) {
    letters = std::isalpha(static_cast<unsigned char>(c)) ? letters + 1 : 0;
    if (letters == 3) return true;
  }
  return false;
}

// Whether a literal that isn't a complete format is a message, by its beginning and end.
bool ReadsLikeAMessage(const std::string& text) {
  if (text.find(' ') == std::string::npos) return false;
  const std::size_t operation = text.starts_with("ZQ") ? text.find("() ") : std::string::npos;
  const bool ofAnOperation = operation != std::string::npos && IsWorded(text.substr(operation));
  return text.ends_with("!") || text.starts_with("Invalid ") || text.starts_with("Error ") ||
         ofAnOperation;
}

TEST_F(DocsTest, MessagesOfTheSourcesAreListed) {
  const std::string sources = SourceText();
  const std::set<std::string> listed = ListedMessages();
  std::set<std::string> missing;
  std::size_t messages = 0;
  for (std::size_t at = 0; (at = sources.find('"', at)) != std::string::npos;) {
    std::size_t end = at + 1;
    while (sources[end] != '"' && sources[end] != '\n') end += sources[end] == '\\' ? 2 : 1;
    const std::string text = sources.substr(at + 1, end - at - 1);
    const std::size_t before = sources.find_last_not_of(" \n", at - 1);
    const std::size_t call = sources.rfind("ZQThrow.", at);
    const bool isFormat =
        sources[before] == '(' && call != std::string::npos && sources.find('(', call) == before;
    const bool isRefusal = sources.compare(at - 7, 7, "Refuse(") == 0;
    if (((isFormat || isRefusal) && IsWorded(text)) || ReadsLikeAMessage(text)) {
      ++messages;
      if (listed.count(text) == 0) missing.insert(text);
    }
    at = end + 1;
  }
  for (const std::string& text : missing) ADD_FAILURE() << text;
  EXPECT_GT(messages, 120U);
}

TEST_F(DocsTest, GuideNamesTheExtensionsOfMoleculeFiles) {
  std::string guide = ReadFile(root / "docs/guide.md");
  std::replace(guide.begin(), guide.end(), '`', ' ');
  for (const std::string& name :
       Bostrel::ZQStringTokenize(Quarnel::ZQGetMolFileExtensions(), ' ')) {
    EXPECT_NE(guide.find(" " + name + " "), std::string::npos) << name;
  }
}

// All expansions of a path with alternatives in braces.
Words Expanded(const std::string& path) {
  const std::size_t end = path.find('}');
  const std::size_t begin = path.rfind('{', end);
  if (end == std::string::npos || begin == std::string::npos) return {path};
  Words all;
  std::istringstream alternatives(path.substr(begin + 1, end - begin - 1));
  for (std::string alternative; std::getline(alternatives, alternative, ',');) {
    for (std::string& word : Expanded(path.substr(0, begin) + alternative + path.substr(end + 1))) {
      all.push_back(std::move(word));
    }
  }
  return all;
}

bool LooksLikeAPath(const std::string& word) {
  if (word.find_first_of(" <>()$") != std::string::npos || word.starts_with("build/")) return false;
  const std::string extension = fs::path(word).extension();
  return word.find('/') != std::string::npos || extension == ".h" || extension == ".cpp" ||
         extension == ".md" || extension == ".sh";
}

TEST_F(DocsTest, PathsInBackquotesExist) {
  std::set<std::string> files;
  for (const std::string room :
       {"apps", "benchmarks", "contract", "docs", "korvex", "platform", "tests"}) {
    for (const auto& entry : fs::recursive_directory_iterator(root / room)) {
      files.insert(entry.path().filename());
    }
  }
  const auto exists = [&files](const fs::path& in, const std::string& pattern) {
    glob_t found{};
    const bool any = glob((in / pattern).c_str(), 0, nullptr, &found) == 0;
    globfree(&found);
    // A file name without its folder.
    return any || std::any_of(files.begin(), files.end(), [&](const std::string& file) {
             return fnmatch(pattern.c_str(), file.c_str(), 0) == 0;
           });
  };
  std::size_t paths = 0;
  for (const char* name : {"CONTRIBUTING.md", "benchmarks/README.md", "docs/architecture.md"}) {
    const fs::path document = root / name;
    if (!fs::exists(document)) continue;
    for (const std::string& line : Lines(ReadFile(document))) {
      std::istringstream words(line);
      bool isQuoted = false;
      for (std::string word; std::getline(words, word, '`'); isQuoted = !isQuoted) {
        if (!isQuoted || !LooksLikeAPath(word)) continue;
        for (const std::string& path : Expanded(word)) {
          ++paths;
          EXPECT_TRUE(exists(root, path) || exists(document.parent_path(), path))
              << name << ": " << path;
        }
      }
    }
  }
  EXPECT_GT(paths, 0U);
}

TEST_F(DocsTest, OneHeaderHasTheWholeInterface) {
  const std::string umbrella = ReadFile(root / "korvex/korvex.h");
  for (const fs::path& header : Sources({"korvex"}, ".h")) {
    const std::string name = header.filename();
    const bool isPrivate =
        name.find("_local.h") != std::string::npos || name.find("_private.h") != std::string::npos;
    if (isPrivate || name == "korvex.h" || name == "siblings.h") continue;
    EXPECT_NE(umbrella.find("\"korvex/" + name + "\""), std::string::npos) << name;
  }
}

}  // namespace
