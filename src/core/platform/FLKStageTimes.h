#pragma once

#include <sys/types.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

// Where an export's time goes, stage by stage: the CPU time each stage spent
// (its threads' own clocks, so other work on the machine does not inflate
// them) and the wall time each stage spent blocked on the stage before it
// (input) or after it (output). Process-wide: an export resets it when it
// starts. Any thread.
class FLKStageTimes {
public:
    enum Stage : int { kDecode, kUpload, kRender, kReadBack, kConvert, kEncode, kMux, kStageCount };
    static const char* stageName(Stage stage);

    struct Figures {
        std::array<std::int64_t, kStageCount> cpuNs{};
        std::array<std::int64_t, kStageCount> inputWaitNs{};
        std::array<std::int64_t, kStageCount> outputWaitNs{};
        // Of the whole process since the reset: what no stage claimed is the
        // main thread's and the GL driver's other workers'.
        std::int64_t processCpuNs = 0;
        std::int64_t wallNs = 0;
        std::int64_t stagesCpuNs() const;
        // A table of milliseconds per frame, and the frame rate `cores` could
        // reach if every stage's CPU were spread over them.
        std::string report(std::uint64_t frames, unsigned cores) const;
    };

    static FLKStageTimes& shared();
    void reset();
    void addCpu(Stage stage, std::int64_t ns) { cpuNs_[stage].fetch_add(ns, std::memory_order_relaxed); }
    void addInputWait(Stage stage, std::int64_t ns) { inputWaitNs_[stage].fetch_add(ns, std::memory_order_relaxed); }
    void addOutputWait(Stage stage, std::int64_t ns) { outputWaitNs_[stage].fetch_add(ns, std::memory_order_relaxed); }
    Figures figures() const;

    static std::int64_t threadCpuNow();
    static std::int64_t wallNow();

    // The calling thread's CPU from here to the end of the scope, less what
    // scopes nested in it claimed for their own stages.
    class CpuScope {
    public:
        explicit CpuScope(Stage stage);
        ~CpuScope();
        CpuScope(const CpuScope&) = delete;
        CpuScope& operator=(const CpuScope&) = delete;

    private:
        const Stage stage_;
        const std::int64_t start_;
        const std::int64_t nestedAtStart_;
    };

    // Wall time blocked in the scope, for the stage's input or output.
    class WaitScope {
    public:
        enum class On { input, output };
        WaitScope(Stage stage, On on) : stage_(stage), on_(on), start_(wallNow()) {}
        ~WaitScope();
        WaitScope(const WaitScope&) = delete;
        WaitScope& operator=(const WaitScope&) = delete;

    private:
        const Stage stage_;
        const On on_;
        const std::int64_t start_;
    };

    // Threads a library works on for itself: either those that appear while
    // it is set up (the encoder's frame threads), or those it names with a
    // prefix (the rasteriser's), counted from beginNamed() on. Their CPU is
    // read while they still run.
    class HelperThreads {
    public:
        void begin();
        void end();
        void beginNamed(std::string prefix);
        std::int64_t cpuNs() const;

    private:
        std::vector<pid_t> before_;
        std::vector<pid_t> threads_;
        std::string prefix_;
        std::vector<std::pair<pid_t, std::int64_t>> baselines_;  // CPU of the named threads at beginNamed()
    };

private:
    std::array<std::atomic<std::int64_t>, kStageCount> cpuNs_{};
    std::array<std::atomic<std::int64_t>, kStageCount> inputWaitNs_{};
    std::array<std::atomic<std::int64_t>, kStageCount> outputWaitNs_{};
    std::atomic<std::int64_t> processCpuAtReset_{0};
    std::atomic<std::int64_t> wallAtReset_{0};
};
