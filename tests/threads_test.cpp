#include "korvex/threads_local.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <numeric>
#include <set>
#include <stdexcept>
#include <system_error>

#include "fp_helpers.h"
#include "korvex/fpfast_create.h"
#include "korvex/fpfast_kernels_local.h"
#include "mol_helpers.h"

using namespace ZQKorvex;

namespace {

// Simulates a machine on which only this many more threads can be started.
std::atomic<int> threadsLeft = 0;

std::thread StartWhileAny(const std::function<void()>& work) {
  if (threadsLeft-- <= 0) throw std::system_error(EAGAIN, std::generic_category());
  return std::thread(work);
}

class Threads : public ::testing::Test {
 protected:
  Threads() { ZQSetThreadStarter(StartWhileAny); }
  ~Threads() override { ZQSetThreadStarter(nullptr); }
};

/// The pieces of a task, and the threads that process them.
struct Task {
  explicit Task(int pieces) : done(pieces) {}

  void Work() {
    {
      const std::lock_guard guard(lock);
      workers.insert(std::this_thread::get_id());
    }
    for (int i = next++; i < static_cast<int>(done.size()); i = next++) ++done[i];
  }

  std::atomic<int> next = 0;
  std::vector<int> done;
  std::mutex lock;
  std::set<std::thread::id> workers;
};

}  // namespace

TEST_F(Threads, EveryPieceIsDoneOnceByThoseThatStart) {
  constexpr int plenty = 100;
  const struct {
    unsigned int wanted;
    int available;
    std::size_t workers;
    bool onCaller;
  } cases[] = {{1, plenty, 1, true}, {1, 0, 1, true},  {2, plenty, 2, false}, {5, plenty, 5, false},
               {5, 3, 3, false},     {5, 1, 1, false}, {5, 0, 1, true},       {2, 0, 1, true}};
  for (const int pieces : {0, 1, 3, 1003}) {
    for (const auto& c : cases) {
      threadsLeft = c.available;
      Task task(pieces);
      ZQRunOnThreads(c.wanted, [&] { task.Work(); });
      EXPECT_EQ(task.done, std::vector<int>(pieces, 1)) << c.wanted << " " << c.available;
      EXPECT_EQ(task.workers.size(), c.workers) << c.wanted << " " << c.available;
      EXPECT_EQ(task.workers.contains(std::this_thread::get_id()), c.onCaller);
    }
  }
}

TEST_F(Threads, HaveTheContextOfTheirCaller) {
  int call = 0;
  ZQThrow.SetContext(&call);
  threadsLeft = 3;
  std::mutex lock;
  std::multiset<void*> contexts;
  ZQRunOnThreads(3, [&] {
    const std::lock_guard guard(lock);
    contexts.insert(ZQThrow.GetContext());
  });
  ZQThrow.SetContext(nullptr);
  EXPECT_EQ(contexts, (std::multiset<void*>{&call, &call, &call}));
  ZQRunOnThreads(1, [] { EXPECT_EQ(ZQThrow.GetContext(), nullptr); });
}

TEST_F(Threads, AnExceptionIsRethrownWhenAllHaveEnded) {
  for (const unsigned int wanted : {1U, 4U}) {
    for (const int available : {0, 2, 4}) {
      threadsLeft = available;
      Task task(1003);
      std::atomic<bool> failed = false;
      const auto work = [&] {
        if (!failed.exchange(true)) throw std::domain_error("a worker's own");
        task.Work();
      };
      EXPECT_THROW(ZQRunOnThreads(wanted, work), std::domain_error);
      // The other workers continued, and no piece was taken from them.
      const int others = wanted > 1 && available > 1 ? 1 : 0;
      EXPECT_EQ(task.done, std::vector<int>(1003, others)) << wanted << " " << available;
    }
  }
}

// Threaded work has the same result on fewer threads, and the next run has all of them again.
TEST_F(Threads, SearchesAndCreationDoWithFewer) {
  constexpr std::size_t count = 2037;  // whole batches of records, and a part of one
  const auto fps = RandomFingerPrints(count, 256);
  const auto words = RecordsOf(fps);
  const ZQScanRecords records(words.data(), count, 4, ZQPopCountPOPCNT);
  ZQFPDatabaseOptions options(0, ZQSimMeasure::Tanimoto);
  options.SetNumProcessors(2);
  const WorkFolder folder;
  std::string molecules;
  for (std::size_t i = 0; i < 103; ++i) {
    molecules += SampleSmiles()[i % SampleSmiles().size()] + "\n";
  }
  WriteFile(folder / "mols.smi", molecules);
  ZQCreateFastFPDatabaseOptions creation(PathTypeOf(256));
  creation.SetNumProcessors(2);

  const auto hitsOf = [](const ZQHitList<ZQSimScore>& list) {
    std::vector<std::pair<std::uint64_t, double>> hits;
    for (const ZQSimScore& hit : list.GetItems()) hits.emplace_back(hit.GetIdx(), hit.GetScore());
    return hits;
  };
  std::vector<std::vector<std::pair<std::uint64_t, double>>> expected;
  std::string bytes;
  for (const int available : {100, 1, 0, 100}) {
    ZQSimSearchResultImpl result(10, 0.0, 1.0);
    result.Init(count, options);
    threadsLeft = available;
    ZQFastFPResult(&result, fps[3], options, records);
    EXPECT_EQ(result.NumSearched(), count);
    result.SetSearchStatus(ZQSimSearchStatus::Finished);
    EXPECT_EQ(result.GetHistogram().NumSamples(), count);

    std::vector<std::unique_ptr<ZQHitList<ZQSimScore>>> lists(300);
    for (auto& list : lists) list = ZQInitFPDatabaseHitList(20, options);
    threadsLeft = available;
    ZQFastFPHitLists(lists, {fps.begin(), fps.begin() + 300}, options, records);
    std::vector<std::vector<std::pair<std::uint64_t, double>>> hits;
    for (auto& list : lists) {
      list->SortScores(true);
      hits.push_back(hitsOf(*list));
    }
    if (expected.empty()) expected = hits;
    EXPECT_EQ(hits, expected) << available;

    for (const unsigned int measure : {ZQSimMeasure::Tanimoto, ZQSimMeasure::Tversky}) {
      std::vector<std::uint64_t> counts[2];
      std::vector<float> scores[2];
      std::uint64_t counted[2] = {0, 0};
      for (const unsigned int threads : {1U, 2U}) {
        ZQFPDatabaseOptions pairs(0, measure);
        pairs.SetNumProcessors(threads);
        std::uint64_t& last = counted[threads - 1];
        pairs.SetTracer(ZQDots([&last](std::uint64_t done, std::uint64_t total) {
          EXPECT_GT(done, last);
          EXPECT_LE(done, total);
          last = done;
          return true;
        }));
        ZQFPHistogram histogram(50, 0.0, 1.0);
        threadsLeft = available;
        ZQFastFPHistogram(histogram, pairs, records);
        for (auto n = histogram.GetCounts(); n; ++n) counts[threads - 1].push_back(*n);
        EXPECT_EQ(last, histogram.NumSamples());
        last = 0;
        threadsLeft = available;
        ZQFastFPAllScores(scores[threads - 1], pairs, records);
      }
      EXPECT_EQ(counts[1], counts[0]) << available;
      EXPECT_EQ(scores[1], scores[0]) << available;
    }

    threadsLeft = available;
    ASSERT_TRUE(ZQCreateFastFPDatabaseFile(folder / "out.fpbin", folder / "mols.smi", creation));
    if (bytes.empty()) bytes = ReadFile(folder / "out.fpbin");
    EXPECT_EQ(ReadFile(folder / "out.fpbin"), bytes) << available;
  }
}
