#include "core/platform/FLKStageTimes.h"

#include <dirent.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>

namespace {
std::int64_t clockNs(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

// CPU a scope of the thread claimed, for the scope it is nested in.
thread_local std::int64_t tNestedNs = 0;

std::vector<pid_t> threadIds() {
    std::vector<pid_t> ids;
    if (DIR* tasks = opendir("/proc/self/task")) {
        while (const dirent* entry = readdir(tasks)) {
            if (entry->d_name[0] != '.') ids.push_back(static_cast<pid_t>(std::atoi(entry->d_name)));
        }
        closedir(tasks);
    }
    std::sort(ids.begin(), ids.end());
    return ids;
}

bool isNamed(pid_t id, const std::string& prefix) {
    std::ifstream file("/proc/self/task/" + std::to_string(id) + "/comm");
    std::string name;
    return std::getline(file, name) && name.rfind(prefix, 0) == 0;
}

// The first field of schedstat: nanoseconds on a CPU. 0 once the thread is gone.
std::int64_t cpuOfThread(pid_t id) {
    std::ifstream file("/proc/self/task/" + std::to_string(id) + "/schedstat");
    long long ns = 0;
    return file >> ns ? ns : 0;
}
}  // namespace

const char* FLKStageTimes::stageName(Stage stage) {
    static constexpr std::array<const char*, kStageCount> kNames = {
        "decode+scale", "upload", "render", "read-back", "colour conversion", "encode", "mux"};
    return kNames[stage];
}

FLKStageTimes& FLKStageTimes::shared() {
    static FLKStageTimes times;
    return times;
}

std::int64_t FLKStageTimes::threadCpuNow() { return clockNs(CLOCK_THREAD_CPUTIME_ID); }

std::int64_t FLKStageTimes::wallNow() { return clockNs(CLOCK_MONOTONIC); }

void FLKStageTimes::reset() {
    for (int stage = 0; stage < kStageCount; ++stage) {
        cpuNs_[stage].store(0);
        inputWaitNs_[stage].store(0);
        outputWaitNs_[stage].store(0);
    }
    processCpuAtReset_.store(clockNs(CLOCK_PROCESS_CPUTIME_ID));
    wallAtReset_.store(wallNow());
}

FLKStageTimes::Figures FLKStageTimes::figures() const {
    Figures figures;
    for (int stage = 0; stage < kStageCount; ++stage) {
        figures.cpuNs[stage] = cpuNs_[stage].load();
        figures.inputWaitNs[stage] = inputWaitNs_[stage].load();
        figures.outputWaitNs[stage] = outputWaitNs_[stage].load();
    }
    figures.processCpuNs = clockNs(CLOCK_PROCESS_CPUTIME_ID) - processCpuAtReset_.load();
    figures.wallNs = wallNow() - wallAtReset_.load();
    return figures;
}

std::int64_t FLKStageTimes::Figures::stagesCpuNs() const {
    std::int64_t sum = 0;
    for (auto ns : cpuNs) sum += ns;
    return sum;
}

std::string FLKStageTimes::Figures::report(std::uint64_t frames, unsigned cores) const {
    const double perFrame = frames > 0 ? 1e-6 / static_cast<double>(frames) : 0;  // ns in total -> ms a frame
    std::string text;
    char line[160];
    std::snprintf(line, sizeof line, "%-20s %12s %14s %15s\n", "stage (ms/frame)", "CPU", "waited input", "waited output");
    text += line;
    for (int stage = 0; stage < kStageCount; ++stage) {
        std::snprintf(line, sizeof line, "%-20s %12.2f %14.2f %15.2f\n", stageName(static_cast<Stage>(stage)),
                      static_cast<double>(cpuNs[stage]) * perFrame, static_cast<double>(inputWaitNs[stage]) * perFrame,
                      static_cast<double>(outputWaitNs[stage]) * perFrame);
        text += line;
    }
    const std::int64_t other = std::max<std::int64_t>(0, processCpuNs - stagesCpuNs());
    std::snprintf(line, sizeof line, "%-20s %12.2f\n", "other", static_cast<double>(other) * perFrame);
    text += line;
    const double cpuPerFrame = static_cast<double>(std::max(processCpuNs, stagesCpuNs())) * perFrame;
    const double wallPerFrame = static_cast<double>(wallNs) * perFrame;
    std::snprintf(line, sizeof line, "CPU per frame: %.2f ms; wall per frame: %.2f ms (%.1f fps)\n", cpuPerFrame,
                  wallPerFrame, wallPerFrame > 0 ? 1000.0 / wallPerFrame : 0.0);
    text += line;
    if (cpuPerFrame > 0 && cores > 0) {
        const double bound = 1000.0 * cores / cpuPerFrame;
        std::snprintf(line, sizeof line, "bound on %u cores: %.1f fps; reached %.0f %%\n", cores, bound,
                      wallPerFrame > 0 ? 100.0 * (1000.0 / wallPerFrame) / bound : 0.0);
        text += line;
    }
    return text;
}

FLKStageTimes::CpuScope::CpuScope(Stage stage) : stage_(stage), start_(threadCpuNow()), nestedAtStart_(tNestedNs) {}

FLKStageTimes::CpuScope::~CpuScope() {
    const std::int64_t elapsed = threadCpuNow() - start_;
    const std::int64_t nested = tNestedNs - nestedAtStart_;
    shared().addCpu(stage_, std::max<std::int64_t>(0, elapsed - nested));
    tNestedNs = nestedAtStart_ + elapsed;
}

FLKStageTimes::WaitScope::~WaitScope() {
    const std::int64_t waited = wallNow() - start_;
    if (on_ == On::input) {
        shared().addInputWait(stage_, waited);
    } else {
        shared().addOutputWait(stage_, waited);
    }
}

void FLKStageTimes::HelperThreads::begin() { before_ = threadIds(); }

void FLKStageTimes::HelperThreads::end() {
    const auto after = threadIds();
    threads_.clear();
    std::set_difference(after.begin(), after.end(), before_.begin(), before_.end(), std::back_inserter(threads_));
    before_.clear();
}

void FLKStageTimes::HelperThreads::beginNamed(std::string prefix) {
    prefix_ = std::move(prefix);
    baselines_.clear();
    for (pid_t id : threadIds()) {
        if (isNamed(id, prefix_)) baselines_.emplace_back(id, cpuOfThread(id));
    }
}

std::int64_t FLKStageTimes::HelperThreads::cpuNs() const {
    std::int64_t sum = 0;
    if (prefix_.empty()) {
        for (pid_t id : threads_) sum += cpuOfThread(id);
        return sum;
    }
    for (pid_t id : threadIds()) {
        if (!isNamed(id, prefix_)) continue;
        sum += cpuOfThread(id);
        for (const auto& [known, baseline] : baselines_) {
            if (known == id) sum -= baseline;
        }
    }
    return sum;
}
