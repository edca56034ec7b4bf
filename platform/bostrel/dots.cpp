#include "contract/bostrel/dots.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace Bostrel {

namespace {

constexpr std::chrono::milliseconds redrawInterval{100};

double SecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Rate(std::uint64_t count, double seconds) {
  return seconds > 0 ? static_cast<double>(count) / seconds : 0;
}

}  // namespace

ZQDots::ZQDots(unsigned int total, std::string what)
    : total_(total),
      what_(std::move(what)),
      onTerminal_(isatty(STDERR_FILENO) == 1),
      start_(std::chrono::steady_clock::now()),
      nextDraw_(start_ + redrawInterval) {}

ZQDots::ZQDots(Observer observer) : observer_(std::move(observer)) {}

void ZQDots::Update(unsigned int n) {
  count_ += n;
  if (observer_) isStopped_ |= !observer_(count_, total_);
  if (!onTerminal_) return;
  const auto now = std::chrono::steady_clock::now();
  if (now < nextDraw_) return;
  nextDraw_ = now + redrawInterval;
  Draw(std::chrono::duration<double>(now - start_).count());
}

void ZQDots::Draw(double seconds) {
  const double rate = Rate(count_, seconds);
  if (total_ == 0) {
    std::fprintf(stderr, "\r%lu %s, %.0f/s\033[K", count_, what_.c_str(), rate);
    return;
  }
  constexpr int width = 30;
  const double share = static_cast<double>(count_) / static_cast<double>(total_);
  const int done = static_cast<int>(width * std::min(share, 1.0));
  const double left = rate > 0 && count_ < total_ ? static_cast<double>(total_ - count_) / rate : 0;
  std::fprintf(stderr, "\r[%.*s%*s] %lu/%lu %s, %.0f/s, %.0f s left\033[K", done,
               "##############################", width - done, "", count_, total_, what_.c_str(),
               rate, left);
}

void ZQDots::Total() {
  if (observer_) return;
  const double seconds = SecondsSince(start_);
  std::fprintf(stderr, "%s%lu %s in %.2f s, %.0f/s%s\n", onTerminal_ ? "\r" : "", count_,
               what_.c_str(), seconds, Rate(count_, seconds), onTerminal_ ? "\033[K" : "");
}

}  // namespace Bostrel
