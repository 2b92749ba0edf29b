#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>

namespace tarvex_cli {

// -q / --quiet: no progress lines and no summaries, only errors.
void setQuiet(bool quiet);
bool isQuiet();

// A progress line on standard error for jobs that run longer than about a
// second ("tarvex gif: 12 of 40 inputs"), rewritten in place and ended when
// the job is; shorter jobs, quiet runs and runs whose standard error is not a
// terminal (a log, a pipe) print nothing, since lines rewritten with \r only
// make sense to a screen.
class Progress {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    Progress(std::string label, std::size_t total, std::FILE *out = stderr,
             Clock now = std::chrono::steady_clock::now);
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    void advance(std::size_t done);

private:
    std::string label_;
    std::size_t total_;
    std::FILE *out_;
    Clock now_;
    std::chrono::steady_clock::time_point start_;
    bool onTerminal_;
    bool shown_ = false;
};

}  // namespace tarvex_cli
