#include "core/platform/FLKTemporaryStore.h"

#include "core/platform/FLKPaths.h"

std::shared_ptr<FLKTemporaryStore> FLKTemporaryStore::storeWithDirectory(const std::string& directory,
                                                                         const std::string& extension) {
    return storeWithDirectory(directory, extension, flk::temporaryHome());
}

std::shared_ptr<FLKTemporaryStore> FLKTemporaryStore::storeWithDirectory(const std::string& directory,
                                                                         const std::string& extension,
                                                                         const std::filesystem::path& relativeToURL) {
    return std::make_shared<FLKTemporaryStore>(relativeToURL / directory, extension);
}
