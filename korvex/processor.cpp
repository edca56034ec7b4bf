#include "korvex/processor_local.h"

#include <algorithm>
#include <atomic>

namespace ZQKorvex {

namespace {

std::atomic<const ZQProcessor*> forced = nullptr;
std::atomic<const ZQProcessor*> latest = nullptr;

}  // namespace

const ZQProcessor& ZQGetProcessor() {
  static const ZQProcessor& best =
      *std::ranges::find_if(ZQProcessorTable(), [](const auto& row) { return row.runs(); });
  const ZQProcessor* chosen = forced;
  if (!chosen) chosen = &best;
  // Threads share this cache line, so it is written only on a change.
  if (latest != chosen) latest = chosen;
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
  if (!name) return true;
  for (const ZQProcessor& row : ZQProcessorTable()) {
    if (std::string(name) == row.name && row.runs()) forced = &row;
  }
  return forced != nullptr;
}

const char* ZQGetLatestProcessor() { return latest ? latest.load()->name : ""; }

}  // namespace ZQKorvex
