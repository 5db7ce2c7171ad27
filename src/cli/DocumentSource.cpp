#include "cli/DocumentSource.h"

#include <algorithm>
#include <cctype>

#include "core/model/FLKFile.h"
#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKTemplate.h"
#include "core/model/FLKTemplateManager.h"
#include "core/platform/FLKPaths.h"
#include "core/scene/FLKScene.h"

namespace fs = std::filesystem;

namespace {
std::string lowercased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}
}  // namespace

std::shared_ptr<FLKTemplate> DocumentSource::templateNamed(const std::string& argument) {
    const auto wanted = lowercased(argument);
    for (const auto& aTemplate : FLKTemplateManager::defaultManager().templates()) {
        if (lowercased(aTemplate->name()) == wanted) return aTemplate;
    }
    return nullptr;
}

std::shared_ptr<FLKFile> DocumentSource::open(const std::string& argument, FLKError* error) {
    auto& loader = FLKSceneLoader::defaultSceneLoader();
    const fs::path url(argument);
    std::shared_ptr<FLKScene> scene;
    if (flk::isFlickwellTemplateFile(url) && fs::is_directory(url)) {
        scene = loader.loadSceneFromTemplate(FLKTemplate::fileWithURL(url), error);
    } else if (flk::exists(url)) {
        if (!flk::isFlickwellFile(url)) {
            flk::setError(error, flk::fileSystemErrorWithMessage(
                                     url.string() +
                                     " is not a Flickwell document (.flickwell) or template (.flickwelltemplate)."));
            return nullptr;
        }
        scene = loader.loadSceneFromFileURL(url, error);
    } else if (auto aTemplate = templateNamed(argument)) {
        scene = loader.loadSceneFromTemplate(aTemplate, error);
    } else {
        flk::setError(error, flk::fileSystemErrorWithMessage(
                                 "\"" + argument +
                                 "\" is neither a file nor the name of a template (see `flickwell-cli templates`)."));
        return nullptr;
    }
    if (!scene) {
        flk::setError(error, flk::fileSystemErrorWithMessage(argument + " holds no scene."));
        return nullptr;
    }
    return FLKFile::currentFile();
}
