// What the documents say is so: their examples are files that compile and run, their commands
// run, the messages they list are in the sources, and one header has the whole interface.

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "tests/program_helpers.h"

namespace {

namespace fs = std::filesystem;

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

std::vector<fs::path> Sources(const std::vector<std::string>& folders, const char* extension) {
  std::vector<fs::path> sources;
  for (const std::string& folder : folders) {
    for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
      if (entry.path().extension() == extension) sources.push_back(entry.path());
    }
  }
  return sources;
}

// A folder where the documents' relative names lead to the project's files.
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

TEST_F(DocsTest, ExamplesRun) {
  const std::map<std::string, const char*> expected{
      {"search", "1\\.000 aspirin\\b[^\\n]*\\n(0\\.\\d{3} .+\\n){4}"},
      {"compare", "\\d+ bits and \\d+ bits of 2048\\nTanimoto 0\\.\\d+\\nTversky  0\\.\\d+\\n"},
      {"threads",
       "Finished, (\\d+) of \\1 records\\nrecord \\d+, score 1\\.000\\n"
       "(record .+\\n){2}\\1 scores, mean 0\\.\\d+\\n"},
      {"application", "Path,ver=2\\.0\\.0,size=4096,.+\\n1000 hits by Tanimoto\\n"},
  };
  for (const fs::path& source : Sources({"docs/examples"}, ".cpp")) {
    const std::string name = source.stem();
    const RunResult run = folder.Run({programs / "examples" / name});
    EXPECT_EQ(run.exitCode, 0) << name << "\n" << run.err;
    ASSERT_EQ(expected.count(name), 1U) << name;
    EXPECT_TRUE(std::regex_match(run.out, std::regex(expected.at(name)))) << name << "\n"
                                                                          << run.out;
  }
}

TEST_F(DocsTest, ShellBlocksRun) {
  for (const char* document : {"README.md", "docs/guide.md"}) {
    for (const std::string& block : Blocks(root / document, "sh")) {
      if (block.find("./run.sh") != std::string::npos) continue;  // what brought us here
      const RunResult run = folder.Run(
          {"bash", "-euo", "pipefail", "-c", "PATH=" + programs.string() + ":$PATH\n" + block});
      EXPECT_EQ(run.exitCode, 0) << block << run.err;
    }
  }
  EXPECT_EQ(ReadFile(folder / "drugs.fpbin"), ReadFile(folder / "same.fpbin"));
}

TEST_F(DocsTest, ListedMessagesStandInTheSources) {
  std::string sources;
  for (const fs::path& name : Sources({"korvex", "platform", "apps"}, ".cpp")) {
    sources += ReadFile(name);
  }
  for (const fs::path& name : Sources({"korvex", "platform"}, ".h")) sources += ReadFile(name);
  // Literals that the formatter has split, and the widths of numbers.
  sources = std::regex_replace(sources, std::regex("\"\\s*\\n\\s*\""), "");
  const std::regex width("%(u|lu|zu)");
  sources = std::regex_replace(sources, width, "%d");
  const std::string document = std::regex_replace(ReadFile(root / "docs/errors.md"), width, "%d");
  const std::regex message("\\n\\| `([^`]+)` \\|");
  int count = 0;
  for (std::sregex_iterator at(document.begin(), document.end(), message), end; at != end; ++at) {
    ++count;
    EXPECT_NE(sources.find((*at)[1].str()), std::string::npos) << (*at)[1].str();
  }
  EXPECT_GT(count, 40);
}

TEST_F(DocsTest, OneHeaderHasTheWholeInterface) {
  const std::string umbrella = ReadFile(root / "korvex/korvex.h");
  for (const fs::path& header : Sources({"korvex"}, ".h")) {
    const std::string name = header.filename();
    const bool isPrivate = std::regex_search(name, std::regex("_(local|private)\\.h$"));
    if (isPrivate || name == "korvex.h" || name == "siblings.h") continue;
    EXPECT_NE(umbrella.find("\"korvex/" + name + "\""), std::string::npos) << name;
  }
}

}  // namespace
