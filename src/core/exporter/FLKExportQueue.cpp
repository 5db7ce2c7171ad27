#include "core/exporter/FLKExportQueue.h"

#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKThreadPriority.h"
#include "core/platform/FLKUserFeedback.h"

std::shared_ptr<FLKExportQueue> FLKExportQueue::make() {
    auto queue = std::make_shared<FLKExportQueue>(Passkey{});
    queue->observeOperations();
    return queue;
}

std::shared_ptr<FLKExportQueue> FLKExportQueue::sharedQueue() {
    static const std::shared_ptr<FLKExportQueue> queue = [] {
        auto shared = make();
        // Exports beside the editor yield to it; the threads an export starts
        // (renderer, encoder) inherit this.
        shared->exportQueue_->async(flk::lowerCurrentThreadPriority);
        return shared;
    }();
    return queue;
}

FLKExportQueue::FLKExportQueue(Passkey)
    : exportQueue_(std::make_unique<FLKDispatchQueue>("org.flickwell.Flickwell.FLKExportQueue.exportQueue")) {}

FLKExportQueue::~FLKExportQueue() { exportQueue_.reset(); }

void FLKExportQueue::observeOperations() {
    std::weak_ptr<FLKExportQueue> weakSelf = weak_from_this();
    auto& center = FLKExportOperation::notificationCenter();
    updateObservation_ = FLKObservation(
        center, center.addObserver(FLKExportOperationDidUpdateNotification, nullptr, [weakSelf](const FLKNotification&) {
            if (auto self = weakSelf.lock()) self->update();
        }));
}

void FLKExportQueue::addOperation(std::shared_ptr<FLKExportOperation> operation) {
    if (!operation) return;
    {
        std::lock_guard lock(mutex_);
        if (!sessionActive_) startExportSession();
        operations_.push_back(operation);
        ++operationsAdded_;
    }
    exportQueue_->async([this, operation] { runOperation(operation); });
}

void FLKExportQueue::runOperation(const std::shared_ptr<FLKExportOperation>& operation) {
    operation->execute();
    operation->waitUntilFinished();
    inspectFinishedOperation(*operation);
    std::uint64_t added = 0;
    {
        std::lock_guard lock(mutex_);
        std::erase(operations_, operation);
        if (!operations_.empty()) return;
        added = operationsAdded_;
    }
    // Whether the session ended is decided on the main queue, where operations
    // are added: presets queued together in one turn make one session even
    // when the first fails at once.
    auto self = weak_from_this().lock();
    if (!self) return;  // the queue is going away: nobody is left to tell
    FLKMainQueue::main()->post([self, added] { self->endExportSession(added); });
}

// Called with mutex_ held.
void FLKExportQueue::startExportSession() {
    sessionActive_ = true;
    mutableExportErrors_.clear();
    syncNotifyWithNotificationName(FLKExportQueueDidStartNotification);
}

// On the main queue; `added` counts the operations added when the queue ran empty.
void FLKExportQueue::endExportSession(std::uint64_t added) {
    std::vector<FLKError> errors;
    bool present = false;
    {
        std::lock_guard lock(mutex_);
        if (!sessionActive_ || !operations_.empty() || operationsAdded_ != added) return;
        sessionActive_ = false;
        errors = mutableExportErrors_;
        present = presentsErrors_;
    }
    FLKExportOperation::notificationCenter().post(FLKExportQueueDidFinishNotification, this);
    if (present && !errors.empty()) FLKUserFeedback::shared().presentError(combinedError(errors));
}

void FLKExportQueue::update() { syncNotifyWithNotificationName(FLKExportQueueDidUpdateNotification); }

void FLKExportQueue::inspectFinishedOperation(const FLKExportOperation& operation) {
    if (auto error = operation.error()) addError(*error);
}

void FLKExportQueue::syncNotifyWithNotificationName(const char* name) {
    auto self = weak_from_this().lock();
    if (!self) return;
    FLKMainQueue::main()->post([self, name] { FLKExportOperation::notificationCenter().post(name, self.get()); });
}

std::shared_ptr<FLKExportOperation> FLKExportQueue::currentOperation() const {
    std::lock_guard lock(mutex_);
    return operations_.empty() ? nullptr : operations_.front();
}

std::vector<std::shared_ptr<FLKExportOperation>> FLKExportQueue::operations() const {
    std::lock_guard lock(mutex_);
    return {operations_.begin(), operations_.end()};
}

void FLKExportQueue::cancelAllOperations() {
    for (const auto& operation : operations()) operation->cancel();
}

std::vector<FLKError> FLKExportQueue::exportErrors() const {
    std::lock_guard lock(mutex_);
    return mutableExportErrors_;
}

void FLKExportQueue::clearErrors() {
    std::lock_guard lock(mutex_);
    mutableExportErrors_.clear();
}

void FLKExportQueue::addError(const FLKError& error) {
    std::lock_guard lock(mutex_);
    mutableExportErrors_.push_back(error);
}

void FLKExportQueue::setPresentsErrors(bool presentsErrors) {
    std::lock_guard lock(mutex_);
    presentsErrors_ = presentsErrors;
}

FLKError FLKExportQueue::combinedError(const std::vector<FLKError>& errors) {
    if (errors.size() == 1) return errors.front();
    std::string reasons;
    for (const auto& error : errors) {
        if (!reasons.empty()) reasons += "\n";
        reasons += error.fullMessage();
    }
    return FLKError::make(errors.empty() ? "" : errors.front().domain, errors.empty() ? 0 : errors.front().code,
                          std::to_string(errors.size()) + " exports failed.", reasons);
}
