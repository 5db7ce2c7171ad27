#include "core/model/FLKReadonlyFile.h"

#include "core/model/FLKZipArchive.h"
#include "core/platform/FLKPaths.h"

std::shared_ptr<FLKReadonlyFile> FLKReadonlyFile::fileWithURL(const std::filesystem::path& url) {
    if (!flk::isFlickwellFile(url)) return nullptr;
    return std::make_shared<FLKReadonlyFile>(url);
}

std::shared_ptr<FLKFile> FLKReadonlyFile::temporaryFileCopy(FLKError* error) {
    // Destroying `file` on any failure takes the half-unpacked folder with it.
    auto file = std::make_shared<FLKFile>();
    if (!FLKZipArchive::unzipFileAtPath(URL(), file->URL(), error)) return nullptr;
    if (!file->read(URL(), error)) return nullptr;
    return file;
}
