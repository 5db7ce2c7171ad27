#include "editing/FLKRecordingItemMenuViewModel.h"

#include <cstdlib>
#include <ctime>
#include <fstream>

#include "core/capture/FLKSubprocess.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKUserFeedback.h"
#include "editing/FLKSaveRecordingSheetPresenting.h"

namespace {

std::filesystem::path trashHome() {
    const char* dataHome = std::getenv("XDG_DATA_HOME");
    if (dataHome && *dataHome) return std::filesystem::path(dataHome) / "Trash";
    const char* home = std::getenv("HOME");
    return std::filesystem::path(home ? home : "/tmp") / ".local/share/Trash";
}

// Percent-encodes a path for the Path= line of a .trashinfo file.
std::string encodedPath(const std::string& path) {
    static const char* hex = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : path) {
        if (std::isalnum(c) || c == '/' || c == '-' || c == '_' || c == '.' || c == '~') {
            out.push_back(static_cast<char>(c));
        } else {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 15];
        }
    }
    return out;
}

}  // namespace

std::shared_ptr<FLKRecordingItemMenuViewModel> FLKRecordingItemMenuViewModel::make(
    std::filesystem::path itemURL, std::shared_ptr<FLKSaveRecordingSheetPresenting> sheets) {
    return std::shared_ptr<FLKRecordingItemMenuViewModel>(
        new FLKRecordingItemMenuViewModel(std::move(itemURL), std::move(sheets)));
}

void FLKRecordingItemMenuViewModel::showInFinder() {
    // The file manager interface selects the file; without a session bus the folder opens.
    std::string uri = "file://" + encodedPath(std::filesystem::absolute(itemURL_).string());
    std::string reason;
    if (FLKSubprocess::run({"dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.FileManager1",
                            "/org/freedesktop/FileManager1", "org.freedesktop.FileManager1.ShowItems",
                            "array:string:" + uri, "string:"},
                           &reason)) {
        return;
    }
    FLKSubprocess::run({"xdg-open", itemURL_.parent_path().string()}, &reason);
}

std::optional<std::filesystem::path> FLKRecordingItemMenuViewModel::moveToTrash(const std::filesystem::path& url) {
    if (!flk::exists(url)) return std::nullopt;
    auto trash = trashHome();
    std::error_code ec;
    std::filesystem::create_directories(trash / "files", ec);
    std::filesystem::create_directories(trash / "info", ec);
    // The info file is made first, exclusively: it reserves the name.
    std::string stem = url.stem().string();
    std::string extension = url.extension().string();
    for (int n = 1; n < 10000; ++n) {
        std::string name = n == 1 ? url.filename().string() : stem + " " + std::to_string(n) + extension;
        auto info = trash / "info" / (name + ".trashinfo");
        FILE* file = std::fopen(info.c_str(), "wx");
        if (!file) continue;
        std::time_t now = std::time(nullptr);
        std::tm local{};
        localtime_r(&now, &local);
        char date[32];
        std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
        std::fprintf(file, "[Trash Info]\nPath=%s\nDeletionDate=%s\n",
                     encodedPath(std::filesystem::absolute(url).string()).c_str(), date);
        std::fclose(file);
        auto destination = trash / "files" / name;
        std::filesystem::rename(url, destination, ec);
        if (ec && flk::moveItem(url, destination)) ec.clear();  // another file system: copied across
        if (ec) {
            std::filesystem::remove(info, ec);
            return std::nullopt;
        }
        return destination;
    }
    return std::nullopt;
}

void FLKRecordingItemMenuViewModel::trash() { moveToTrash(itemURL_); }

void FLKRecordingItemMenuViewModel::rename() {
    if (sheets_) sheets_->presentSaveRecordingSheet(weak_from_this(), itemURL_.stem().string());
}

void FLKRecordingItemMenuViewModel::sheetDidSaveWithName(const std::string& name) {
    if (sheets_) sheets_->dismissSaveRecordingSheet();
    FLKError error;
    auto renamed = flk::renameItemAtURL(itemURL_, name, &error);
    if (!renamed) {
        FLKUserFeedback::shared().presentError(error);
        return;
    }
    itemURL_ = *renamed;
}

void FLKRecordingItemMenuViewModel::sheetDidCancel() {
    if (sheets_) sheets_->dismissSaveRecordingSheet();
}
