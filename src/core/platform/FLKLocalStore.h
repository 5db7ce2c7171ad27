#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "core/platform/FLKStore.h"

class FLKDirectoryWatcher;

// A store of the user's own files that persist between launches: kept
// recordings, user templates, added masks.
class FLKLocalStore : public FLKStore {
public:
    FLKLocalStore(std::filesystem::path directoryURL, std::string extension);
    ~FLKLocalStore() override;

    // "<data home>/<directory>" (see flk::dataHome).
    static std::shared_ptr<FLKLocalStore> storeWithDirectory(const std::string& directory,
                                                             const std::string& extension);

    // Calls `handler` on the main queue after files of the store's folder
    // appear, disappear or change; bursts of changes are coalesced into one
    // call. Replaces an earlier handler. False with the error set when the
    // folder cannot be made or watched.
    bool startWatchingForUpdates(std::function<void()> handler, FLKError* error = nullptr);
    // No handler call is made after this returns, even one already queued.
    void stopWatchingForUpdates();

private:
    struct Watch;
    std::mutex watchMutex_;
    std::shared_ptr<Watch> watch_;                    // guarded by watchMutex_
    std::unique_ptr<FLKDirectoryWatcher> watcher_;    // guarded by watchMutex_
};
