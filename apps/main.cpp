#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "apps/command.h"
#include "apps/molecules.h"
#include "contract/bostrel/strings.h"

using namespace KorvexProgram;

namespace {

constexpr const Command* commands[] = {
    &createCommand,    &convertCommand,   &searchCommand, &fingerprintCommand,  &compareCommand,
    &vseprCommand,     &explainCommand,   &drawCommand,   &substructureCommand, &infoCommand,
    &histogramCommand, &neighborsCommand, &versionCommand};

void PrintUsage(std::FILE* out) {
  std::fputs("usage: korvex COMMAND [arguments] [options]\n\ncommands:\n", out);
  for (const Command* command : commands) {
    std::fprintf(out, "  %-12s %s\n", command->name, command->brief);
  }
  std::fputs("\n'korvex COMMAND -h' tells the arguments and options of a command.\n", out);
}

std::atomic<bool> invariantBroken = false;
std::atomic<unsigned int> numWarnings = 0;
std::atomic<unsigned int> numErrors = 0;

// An assertion failure doesn't end the program, but shows in the exit code: the function returns an
// empty value, and the command reports what that means for the input.
bool PrintMessage(ZQErrorLevel level, const std::string& message) {
  const char* prefix = "";
  numWarnings += level >= ZQErrorLevel::Warning;
  numErrors += level >= ZQErrorLevel::Error;
  if (level == ZQErrorLevel::Fatal) {
    prefix = "damaged data, or a defect of korvex: ";
    invariantBroken = true;
  }
  const char* newLine = isatty(STDERR_FILENO) == 1 ? "\r\033[K" : "";  // overwrites a progress bar
  std::fprintf(stderr, "%skorvex: %s%s\n", newLine, prefix, message.c_str());
  return true;
}

int RunCommand(const Command& command, const std::vector<std::string>& words) {
  const std::string name = std::string("korvex ") + command.name;
  ZQInterface interface(name, command.brief);
  command.configure(interface);
  ZQInterface* help = interface.AddInterface("help");
  help->AddParameter({"-h", "", ZQParamType::Switch, "Shows this help"});
  help->AddParameter({"-help", "", ZQParamType::Switch, "Shows this help with all details"});

  if (!ZQParseCommandLine(interface, words)) {
    std::fprintf(stderr, "korvex: '%s -h' tells the arguments and options\n", name.c_str());
    return BadUsage;
  }
  if (interface.IsSet("-h") || interface.IsSet("-help")) {
    std::fputs(ZQGetHelp(interface, interface.IsSet("-help")).c_str(), stdout);
    return Done;
  }
  return CheckMoleculeFileOptions(interface) ? command.run(interface) : BadUsage;
}

int Dispatch(const std::vector<std::string>& words) {
  if (words.empty()) {
    PrintUsage(stderr);
    return BadUsage;
  }
  const std::string& word = words.front();
  for (const char* help : {"-h", "--h", "-help", "--help"}) {
    if (word == help) {
      PrintUsage(stdout);
      return Done;
    }
  }
  std::vector<std::string> names;
  for (const Command* command : commands) {
    if (word == command->name) return RunCommand(*command, {words.begin() + 1, words.end()});
    names.emplace_back(command->name);
  }
  const std::string nearest = ZQNearestName(word, names);
  ZQThrow.Error("there is no command '%s'%s%s; 'korvex -h' lists them", word.c_str(),
                nearest.empty() ? "" : ", did you mean ", nearest.c_str());
  return BadUsage;
}

}  // namespace

unsigned int KorvexProgram::NumWarnings() { return numWarnings; }
unsigned int KorvexProgram::NumErrors() { return numErrors; }

int main(int argc, char** argv) {
  ZQThrow.SetSink(PrintMessage);
  std::ios::sync_with_stdio(false);  // the standard streams then report errors, and are faster
  std::signal(SIGXFSZ,
              SIG_IGN);  // a limit on file sizes is a write error, like a full disk
  int exitCode = BadInput;
  try {
    exitCode = Dispatch({argv + 1, argv + argc});
  } catch (const std::exception& error) {
    ZQThrow.Error("%s", error.what());  // out of memory
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    ZQThrow.Error("cannot write to standard output");
    exitCode = BadInput;
  }
  return exitCode == Done && invariantBroken ? BadInput : exitCode;
}
