#pragma once

/// Runs programs as a user does, in a private folder of the test.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

inline std::string ReadFile(const std::filesystem::path& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteFile(const std::filesystem::path& name, const std::string& content) {
  std::ofstream(name, std::ios::binary) << content;
}

inline std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    lines.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return lines;
}

struct RunResult {
  int exitCode;  ///< -1 for a program ended by a signal
  std::string out;
  std::string err;
};

/// A new folder, the working folder of programs run in it, removed at the end.
class WorkFolder {
 public:
  WorkFolder() {
    std::string name = testing::TempDir() + "korvex_XXXXXX";
    if (mkdtemp(name.data())) path_ = name;
  }
  ~WorkFolder() { std::filesystem::remove_all(path_); }
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;

  const std::filesystem::path& GetPath() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

  /// Runs a program to its end; `maxFileSize` above 0 limits the size of files that it can write.
  RunResult Run(std::vector<std::string> words, rlim_t maxFileSize = 0) const {
    const std::filesystem::path out = path_ / ".stdout";
    const std::filesystem::path err = path_ / ".stderr";
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
      const bool ready = std::freopen(out.c_str(), "w", stdout) &&
                         std::freopen(err.c_str(), "w", stderr) && chdir(path_.c_str()) == 0;
      const rlimit limit{maxFileSize, maxFileSize};
      if (maxFileSize != 0) setrlimit(RLIMIT_FSIZE, &limit);
      if (ready) execvp(argv[0], argv.data());
      _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(out), ReadFile(err)};
  }

 private:
  std::filesystem::path path_;
};

/// Tests that run korvex.
class ProgramFixture : public testing::Test {
 protected:
  RunResult Korvex(std::vector<std::string> words) const {
    words.insert(words.begin(), KORVEX_PROGRAM);
    return folder.Run(std::move(words));
  }
  // The standard output of a run that ends well.
  std::string Output(const std::vector<std::string>& words) const {
    const RunResult run = Korvex(words);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return run.out;
  }
  // At least one message, no result, and this exit code.
  void ExpectFailure(const std::vector<std::string>& words, int exitCode,
                     const std::string& message) const {
    const RunResult run = Korvex(words);
    std::string line = "korvex";
    for (const std::string& word : words) line += " " + word.substr(0, 60);
    EXPECT_EQ(run.exitCode, exitCode) << line << "\n" << run.err;
    EXPECT_EQ(run.out, "") << line;
    EXPECT_NE(run.err.find(message), std::string::npos) << line << "\n" << run.err;
    EXPECT_EQ(run.err.find("defect of korvex"), std::string::npos) << line << "\n" << run.err;
  }

  WorkFolder folder;
};
