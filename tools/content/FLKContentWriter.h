#pragma once

#include <filesystem>
#include <optional>

#include "FLKTemplateDesign.h"
#include "core/platform/FLKError.h"

// Writes the application's built-in content into a resources folder:
// template packages and their list, mask pictures and their list, and the
// silent soundtrack. Each file or package is written whole or not at all.
class FLKContentWriter {
public:
    // `previewFolder`: where to also put a half-size picture of each template.
    FLKContentWriter(std::filesystem::path outputFolder, std::optional<std::filesystem::path> previewFolder);

    bool writeAll(FLKError* error);
    bool writeTemplate(const FLKTemplateDesign& design, FLKError* error);
    bool writeTemplateList(FLKError* error);
    bool writeMasks(FLKError* error);
    bool writeSilence(FLKError* error);

private:
    bool writePackage(const FLKTemplateDesign& design, const std::filesystem::path& folder, FLKError* error);

    std::filesystem::path outputFolder_;
    std::optional<std::filesystem::path> previewFolder_;
};
