#pragma once

/// The common code of the benchmarks: databases of synthetic fingerprints, the machine's limit, and
/// timing. The variants to be compared run in turns for many rounds, and the best time of each
/// counts, so that other load on the machine affects all alike. A rate is printed with its ratio to
/// another rate of the same run and the target for that ratio.

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "korvex/fingerprint_params.h"
#include "korvex/fpfast_database.h"
#include "korvex/fpfast_local.h"

namespace bench {

using namespace ZQKorvex;

/// xorshift64: fast enough to make gigabytes, the same on every machine.
class Random {
 public:
  std::uint64_t operator()() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    return state_ ^= state_ << 17;
  }

 private:
  std::uint64_t state_ = 88172645463325252ULL;
};

/// Ends the program if a result is wrong.
inline void Check(bool right, const char* what) {
  if (right) return;
  std::printf("WRONG: %s\n", what);
  std::exit(1);
}

inline const ZQFPTypeBase* TypeOf(unsigned int numbits) {
  return ZQGetPathFPType(numbits, 0, 5, 1, 1);
}

/// A `.fpbin` file of random fingerprints in 512 families, so that every query has near and far
/// neighbours. Path fingerprints have about one bit in six, as those of drug-like molecules do;
/// `halvings` makes them sparser by about that power of 2. Deleted at the end.
class Database {
 public:
  Database(std::size_t count, unsigned int numbits) : Database(count, TypeOf(numbits)) {}
  Database(std::size_t count, const ZQFPTypeBase* type, unsigned int halvings = 0)
      : name_(std::filesystem::temp_directory_path() /
              ("korvex_bench_" + std::to_string(getpid()) + "_" + std::to_string(NextNumber()) +
               ".fpbin")) {
    ZQFastFPDatabaseParams params;
    params.SetFPTypeBase(type);
    params.SetNumFingerPrints(count);
    const std::size_t numWords = ZQGetFingerPrintSize(type) / 64;
    Random random;
    const auto thinned = [&](std::uint64_t word) {
      for (unsigned int i = 0; i < halvings; ++i) word &= random();
      return word;
    };
    std::vector<std::uint64_t> families(512 * numWords);
    for (std::uint64_t& word : families) word = thinned(random() & random());
    std::ofstream out(name_, std::ios::binary);
    out << ZQWriteFastFPDatabaseHeaderBlob(params);
    std::vector<std::uint64_t> record(2 + numWords);
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint64_t* family = &families[random() % 512 * numWords];
      for (std::size_t w = 0; w < numWords; ++w) {
        const std::uint64_t kept = family[w] & random();
        record[2 + w] = kept | thinned(random() & random() & random() & random());
      }
      record[0] = i;
      record[1] = ZQPopCountPOPCNT(&record[2], numWords);
      out.write(reinterpret_cast<const char*>(record.data()),
                static_cast<std::streamsize>(8 * record.size()));
    }
    Check(static_cast<bool>(out.flush()), "no room for the database");
  }
  ~Database() { std::filesystem::remove(name_); }
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  const std::string& Name() const { return name_; }

 private:
  static unsigned int NextNumber() {
    static unsigned int number = 0;
    return number++;
  }

  std::string name_;
};

/// Times several variants in turns.
class Race {
 public:
  /// One call does `units` of work.
  void Add(std::string name, double units, std::function<void()> call) {
    runners_.push_back({std::move(name), units, std::move(call)});
  }

  void Run(unsigned int rounds) {
    for (unsigned int round = 0; round < rounds; ++round) {
      for (Runner& runner : runners_) {
        const auto start = std::chrono::steady_clock::now();
        runner.call();
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        runner.best = std::min(runner.best, time.count());
      }
    }
  }

  double Rate(const std::string& name) const {
    const auto found = std::find_if(runners_.begin(), runners_.end(),
                                    [&](const Runner& runner) { return runner.name == name; });
    return found->units / found->best;
  }

  /// Prints a rate in millions per second, its ratio to another rate, and the target for the ratio.
  void Report(const std::string& name, const std::string& base, double target) const {
    const double ratio = Rate(name) / Rate(base);
    std::printf("  %-34s %8.1f M/s   %5.2f of %s (at least %.2f)%s\n", name.c_str(),
                Rate(name) / 1e6, ratio, base.c_str(), target, ratio < target ? "  <-- below" : "");
  }

 private:
  struct Runner {
    std::string name;
    double units;
    std::function<void()> call;
    double best = std::numeric_limits<double>::max();
  };
  std::vector<Runner> runners_;
};

/// The machine's limit: only reads every word, ANDs it with the query and counts, with the best
/// instructions of the processor, in a file for its kind.
std::uint64_t CountCommon(const std::uint64_t* query, const std::uint64_t* words,
                          std::size_t count);

/// Runs the limit over `count` words, divided among `numThreads` threads.
inline void Limit(const std::uint64_t* words, std::size_t count, unsigned int numThreads) {
  static std::atomic<std::uint64_t> sink;  // keeps the counts from being optimised away
  const auto scan = [&](unsigned int thread) {
    const std::size_t begin = count * thread / numThreads;
    const std::size_t end = count * (thread + 1) / numThreads;
    sink += CountCommon(words, words + begin, end - begin);
  };
  if (numThreads == 1) return scan(0);
  std::vector<std::thread> threads;
  for (unsigned int t = 0; t < numThreads; ++t) threads.emplace_back(scan, t);
  for (std::thread& thread : threads) thread.join();
}

/// A back end that exposes its records, so that the limit reads the same memory.
template <class BackEnd>
class Open : public BackEnd {
 public:
  using BackEnd::BackEnd;
  const std::uint64_t* Records() const {
    const std::uint64_t* records = BackEnd::GetRecords("bench");
    Check(records, "records");
    return records;
  }
};

inline std::vector<std::pair<std::uint64_t, double>> HitsOf(ZQIter<ZQSimScore> iter) {
  std::vector<std::pair<std::uint64_t, double>> hits;
  for (; iter; ++iter) hits.emplace_back(iter->GetIdx(), iter->GetScore());
  return hits;
}

/// A command-line argument as a number.
inline std::size_t Argument(int argc, char** argv, int index, std::size_t defaultValue) {
  return argc > index ? std::strtoull(argv[index], nullptr, 10) : defaultValue;
}

}  // namespace bench
