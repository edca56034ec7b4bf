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

double Rate(unsigned int count, double seconds) { return seconds > 0 ? count / seconds : 0; }

}  // namespace

ZQDots::ZQDots(unsigned int total, std::string what)
    : total_(total),
      what_(std::move(what)),
      onTerminal_(isatty(STDERR_FILENO) == 1),
      start_(std::chrono::steady_clock::now()),
      nextDraw_(start_ + redrawInterval) {}

void ZQDots::Update(unsigned int n) {
  count_ += n;
  if (!onTerminal_) return;
  const auto now = std::chrono::steady_clock::now();
  if (now < nextDraw_) return;
  nextDraw_ = now + redrawInterval;
  Draw(std::chrono::duration<double>(now - start_).count());
}

void ZQDots::Draw(double seconds) {
  const double rate = Rate(count_, seconds);
  if (total_ == 0) {
    std::fprintf(stderr, "\r%u %s, %.0f/s\033[K", count_, what_.c_str(), rate);
    return;
  }
  constexpr int width = 30;
  const int done = std::min(width, static_cast<int>(1.0 * width * count_ / total_));
  const double left = rate > 0 && count_ < total_ ? (total_ - count_) / rate : 0;
  std::fprintf(stderr, "\r[%.*s%*s] %u/%u %s, %.0f/s, %.0f s left\033[K", done,
               "##############################", width - done, "", count_, total_, what_.c_str(),
               rate, left);
}

void ZQDots::Total() {
  const double seconds = SecondsSince(start_);
  std::fprintf(stderr, "%s%u %s in %.2f s, %.0f/s%s\n", onTerminal_ ? "\r" : "", count_,
               what_.c_str(), seconds, Rate(count_, seconds), onTerminal_ ? "\033[K" : "");
}

}  // namespace Bostrel
