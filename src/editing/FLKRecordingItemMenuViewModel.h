#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "editing/FLKSaveRecordingSheetDelegate.h"

class FLKSaveRecordingSheetPresenting;

// A kept recording's context menu: show it in the file manager, move it to
// the trash, rename it. Main thread only.
class FLKRecordingItemMenuViewModel : public FLKSaveRecordingSheetDelegate,
                                      public std::enable_shared_from_this<FLKRecordingItemMenuViewModel> {
public:
    static std::shared_ptr<FLKRecordingItemMenuViewModel> make(std::filesystem::path itemURL,
                                                               std::shared_ptr<FLKSaveRecordingSheetPresenting> sheets);

    const std::filesystem::path& itemURL() const { return itemURL_; }
    // Opens the file manager on the recording (selected where the file manager can).
    void showInFinder();
    // Moves it to the user's trash as the freedesktop.org rules say; errors are ignored.
    void trash();
    // Asks for a new name on the save sheet.
    void rename();
    void sheetDidSaveWithName(const std::string& name) override;
    void sheetDidCancel() override;

    // The trash step on its own: the file's place in the trash, or nullopt.
    static std::optional<std::filesystem::path> moveToTrash(const std::filesystem::path& url);

private:
    FLKRecordingItemMenuViewModel(std::filesystem::path itemURL, std::shared_ptr<FLKSaveRecordingSheetPresenting> sheets)
        : itemURL_(std::move(itemURL)), sheets_(std::move(sheets)) {}

    std::filesystem::path itemURL_;
    std::shared_ptr<FLKSaveRecordingSheetPresenting> sheets_;
};
