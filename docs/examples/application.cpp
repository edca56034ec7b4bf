#include <korvex/korvex.h>

#include <cstdio>
#include <string>
#include <vector>

using namespace ZQKorvex;

int main(int argc, char** argv) {
  // Every message of the library goes to the sink. After a Fatal one, true continues.
  ZQThrow.SetSink([](ZQErrorLevel level, const std::string& message) {
    std::fprintf(stderr, "my program: %s: %s\n", ZQGetErrorLevelName(level), message.c_str());
    return true;
  });

  ZQInterface itf("my-program", "Prints a type and its search options.");
  itf.AddParameter({"-h", "", ZQParamType::Switch, "Shows this help"});
  ZQConfigureFingerPrint(itf, ZQGetFPType(ZQFPType::Path));
  ZQFPDatabaseOptions options;
  ZQConfigureFPDatabaseOptions(itf, options);

  if (!ZQParseCommandLine(itf, {argv + 1, argv + argc})) return 2;
  if (itf.IsSet("-h")) {
    std::printf("%s", ZQGetHelp(itf).c_str());
    return 0;
  }
  const ZQFPTypeBase* type = ZQSetupFingerPrint(itf);
  if (!type) return 2;
  ZQSetupFPDatabaseOptions(options, itf);
  std::printf("%s\n%u hits by %s\n", type->GetFPTypeString().c_str(), options.GetLimit(),
              ZQGetSimilarityMeasureName(options.GetSimFunc()).c_str());
}
