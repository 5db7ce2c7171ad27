#pragma once

#include <filesystem>
#include <memory>

#include "core/model/FLKFile.h"

// A document file chosen by the user, addressed by its own location. It is
// only ever read: never written, never deleted.
class FLKReadonlyFile : public FLKFile {
public:
    // nullptr when the path is not a document of this system.
    static std::shared_ptr<FLKReadonlyFile> fileWithURL(const std::filesystem::path& url);

    // Opens the document: unpacks the archive into a new working folder and
    // reads it. nullptr with the error set ("Error reading file ...") for an
    // unreadable or unsafe archive; nothing of it is left behind then.
    std::shared_ptr<FLKFile> temporaryFileCopy(FLKError* error = nullptr) override;

    void cleanup() override {}

    explicit FLKReadonlyFile(std::filesystem::path url) : FLKFile(ReadOnlyTag{}, std::move(url)) {}
};
