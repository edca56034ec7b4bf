#include "korvex/processor_local.h"

#include <algorithm>
#include <atomic>

namespace ZQKorvex {

namespace {

std::atomic<const ZQProcessor*> forced = nullptr;
std::atomic<const ZQProcessor*> latest = nullptr;

}  // namespace

std::atomic<const ZQProcessor*> zqChosenProcessor = nullptr;

const ZQProcessor& ZQChooseProcessor() {
  static const ZQProcessor& best =
      *std::ranges::find_if(ZQProcessorTable(), [](const auto& row) { return row.runs(); });
  const ZQProcessor* chosen = forced;
  if (!chosen) chosen = &best;
  latest = chosen;
  zqChosenProcessor = chosen;
  return *chosen;
}

std::vector<std::string> ZQGetProcessorNames() {
  std::vector<std::string> names;
  for (const ZQProcessor& row : ZQProcessorTable()) {
    if (row.runs()) names.emplace_back(row.name);
  }
  return names;
}

bool ZQForceProcessor(const char* name) {
  forced = nullptr;
  zqChosenProcessor = nullptr;
  if (!name) return true;
  for (const ZQProcessor& row : ZQProcessorTable()) {
    if (std::string(name) == row.name && row.runs()) forced = &row;
  }
  return forced != nullptr;
}

const char* ZQGetLatestProcessor() { return latest ? latest.load()->name : ""; }

}  // namespace ZQKorvex
