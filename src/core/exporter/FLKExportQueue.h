#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

#include "core/exporter/FLKExportOperation.h"
#include "core/platform/FLKDispatchQueue.h"
#include "core/platform/FLKError.h"
#include "core/platform/FLKNotificationCenter.h"

inline constexpr const char* FLKExportQueueDidStartNotification = "FLKExportQueueDidStartNotification";
inline constexpr const char* FLKExportQueueDidUpdateNotification = "FLKExportQueueDidUpdateNotification";
inline constexpr const char* FLKExportQueueDidFinishNotification = "FLKExportQueueDidFinishNotification";

// Runs export operations one at a time, in the order added, on a background
// thread. A session lasts from the first operation added to an idle queue
// until the last one has left and the main queue has seen it empty; its errors are collected and, when it ends,
// shown to the user together. Notifications (object: the queue) are posted
// on the main queue.
//
// Threads: any thread may add operations and read the state.
class FLKExportQueue : public std::enable_shared_from_this<FLKExportQueue> {
    struct Passkey {};

public:
    // A queue whose exports run at the priority of the thread that made it,
    // as the command line tool's do: nothing else of ours needs the cores.
    static std::shared_ptr<FLKExportQueue> make();
    // The process-wide queue of the export inspector: its exports run at a
    // lower priority, so the editor beside them stays responsive.
    static std::shared_ptr<FLKExportQueue> sharedQueue();

    explicit FLKExportQueue(Passkey);
    // Finishes the operations already added first.
    ~FLKExportQueue();
    FLKExportQueue(const FLKExportQueue&) = delete;
    FLKExportQueue& operator=(const FLKExportQueue&) = delete;

    void addOperation(std::shared_ptr<FLKExportOperation> operation);
    // The running operation (or the next to run); null when idle.
    std::shared_ptr<FLKExportOperation> currentOperation() const;
    std::vector<std::shared_ptr<FLKExportOperation>> operations() const;
    // Cancels every operation waiting or running; the session then ends as usual.
    void cancelAllOperations();

    // Errors of the current session, or of the last one until the next starts.
    std::vector<FLKError> exportErrors() const;
    void clearErrors();
    void addError(const FLKError& error);

    // Whether a session's errors are presented through FLKUserFeedback when it ends (on by default).
    void setPresentsErrors(bool presentsErrors);

    // Several errors shown as one: each on a line of its own.
    static FLKError combinedError(const std::vector<FLKError>& errors);

private:
    void observeOperations();
    void runOperation(const std::shared_ptr<FLKExportOperation>& operation);
    void startExportSession();
    void endExportSession(std::uint64_t added);
    void update();
    void inspectFinishedOperation(const FLKExportOperation& operation);
    void syncNotifyWithNotificationName(const char* name);

    FLKObservation updateObservation_;  // set once by make()

    mutable std::mutex mutex_;
    std::deque<std::shared_ptr<FLKExportOperation>> operations_;  // guarded by mutex_
    std::vector<FLKError> mutableExportErrors_;                   // guarded by mutex_
    bool presentsErrors_ = true;                                  // guarded by mutex_
    bool sessionActive_ = false;                                  // guarded by mutex_
    std::uint64_t operationsAdded_ = 0;                           // guarded by mutex_

    // Last: destroyed first, running what was added while the rest still exists.
    std::unique_ptr<FLKDispatchQueue> exportQueue_;
};
