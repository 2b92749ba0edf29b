#include "Progress.h"

#include <unistd.h>

namespace tarvex_cli {
namespace {

bool g_quiet = false;

constexpr std::chrono::milliseconds kQuietPeriod{1000};

}  // namespace

void setQuiet(bool quiet) { g_quiet = quiet; }

bool isQuiet() { return g_quiet; }

Progress::Progress(std::string label, std::size_t total, std::FILE *out, Clock now)
    : label_(std::move(label)), total_(total), out_(out), now_(std::move(now)), start_(now_()),
      onTerminal_(isatty(fileno(out_)) == 1) {}

Progress::~Progress() {
    if (shown_) std::fputc('\n', out_);
}

void Progress::advance(std::size_t done) {
    if (g_quiet || !onTerminal_ || (!shown_ && now_() - start_ < kQuietPeriod)) return;
    shown_ = true;
    std::fprintf(out_, "\rtarvex %s: %zu of %zu", label_.c_str(), done, total_);
    std::fflush(out_);
}

}  // namespace tarvex_cli
