#pragma once

#include <cstddef>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/model/FLKTemplate.h"
#include "core/platform/FLKError.h"
#include "core/platform/FLKLocalStore.h"

inline constexpr const char* kFLKTemplateManagerTemplatesDidUpdateNotification =
    "FLKTemplateManagerTemplatesDidUpdateNotification";

// The templates the user can start from: the built-in ones (the resource list
// "FLKTemplateList") first, then the user's own in the order they were added
// (the local store's list of the same name). Used from the thread of the
// user's command; notifications are posted on that thread.
class FLKTemplateManager {
public:
    static constexpr std::size_t kNotFound = static_cast<std::size_t>(std::numeric_limits<long>::max());

    // `store` nullptr: FLKTemplate's local store. Drops listed user templates
    // whose folder has gone.
    explicit FLKTemplateManager(std::shared_ptr<FLKLocalStore> store = nullptr);

    static FLKTemplateManager& defaultManager();

    const std::shared_ptr<FLKLocalStore>& localStore() const { return localStore_; }
    std::optional<std::filesystem::path> plistURL(FLKError* error = nullptr) const;

    const std::vector<std::shared_ptr<FLKTemplate>>& templates() const { return templates_; }
    // Built-in names, then the user's, each name once.
    std::vector<std::string> templateNames() const;
    std::vector<std::string> bundledTemplateNames() const;
    std::vector<std::string> userTemplateNames() const;

    // The built-in folder of that name, else the user's if it exists.
    std::optional<std::filesystem::path> templateNamed(const std::string& name) const;
    std::optional<std::filesystem::path> bundledTemplateNamed(const std::string& name) const;
    bool templateExistsWithName(const std::string& name, bool* isBundled = nullptr) const;
    bool isBundledTemplate(const FLKTemplate& aTemplate) const;
    bool isBundledTemplateNamed(const std::string& name) const;
    // The template of that name among `templates()`, or nullptr.
    std::shared_ptr<FLKTemplate> templateWithName(const std::string& name) const;

    std::size_t selectedTemplateIndex() const { return selectedTemplateIndex_; }
    void setSelectedTemplateIndex(std::size_t index) { selectedTemplateIndex_ = index; }
    std::shared_ptr<FLKTemplate> selectedTemplate() const;
    void selectTemplateNamed(const std::string& name);

    // Rebuilds `templates()` and posts the update notification.
    void updateTemplates();

    // Saves the current scene of the current document as a template; errors
    // are presented to the user and leave the list as it was.
    bool saveTemplateWithName(const std::string& name, bool overwrite);
    // Copies a template folder into the local store under its own name.
    bool addTemplateFromURL(const std::filesystem::path& url);
    bool renameTemplate(const std::shared_ptr<FLKTemplate>& aTemplate, const std::string& name,
                        FLKError* error = nullptr);
    bool removeTemplate(const std::shared_ptr<FLKTemplate>& aTemplate);

private:
    void sanitizeTemplates();
    std::vector<std::shared_ptr<FLKTemplate>> createTemplates() const;
    bool handleTemplateDidSave(const std::string& name, bool saved, const FLKError& error);
    bool handleTemplateDidOverwrite(const std::string& name, bool saved, const FLKError& error);
    bool writeUserTemplateNames(const std::vector<std::string>& names, FLKError* error = nullptr) const;
    bool saveTemplateNameToPlist(const std::string& name);
    bool removeTemplateNameFromPlist(const std::string& name);

    const std::shared_ptr<FLKLocalStore> localStore_;
    std::vector<std::shared_ptr<FLKTemplate>> templates_;
    std::size_t selectedTemplateIndex_ = kNotFound;
};
