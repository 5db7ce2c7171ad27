#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "core/platform/FLKStore.h"

// A store for files that need not survive the session: working folders of
// open documents, recordings in progress, exports being written.
class FLKTemporaryStore : public FLKStore {
public:
    using FLKStore::FLKStore;

    // "<temporary home>/<directory>" (see flk::temporaryHome).
    static std::shared_ptr<FLKTemporaryStore> storeWithDirectory(const std::string& directory,
                                                                 const std::string& extension);
    // "<url>/<directory>": a store inside another folder, e.g. a document's "scenes".
    static std::shared_ptr<FLKTemporaryStore> storeWithDirectory(const std::string& directory,
                                                                 const std::string& extension,
                                                                 const std::filesystem::path& relativeToURL);
};
