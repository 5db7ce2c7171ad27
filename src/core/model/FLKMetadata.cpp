#include "core/model/FLKMetadata.h"

#include <functional>

#ifndef FLK_PROJECT_VERSION
#error "FLK_PROJECT_VERSION must be defined by the build"
#endif

FLK_REGISTER_SERIALIZABLE(FLKMetadata);

namespace flk {
std::string bundleIdentifier() { return "org.flickwell.Flickwell"; }
std::string bundleVersion() { return FLK_PROJECT_VERSION; }
// Builds are numbered by the version they were made from.
std::string bundleBuild() { return FLK_PROJECT_VERSION; }
}  // namespace flk

std::shared_ptr<FLKMetadata> FLKMetadata::newWithDictionary(const FLKJSON& dictionary) {
    auto metadata = std::make_shared<FLKMetadata>();
    if (!dictionary.is_object()) return metadata;
    if (auto it = dictionary.find("documentVersion"); it != dictionary.end() && it->is_number_integer()) {
        metadata->setDocumentVersion(it->get<long>());
    }
    auto readString = [&](const char* key, void (FLKMetadata::*setter)(std::string)) {
        if (auto it = dictionary.find(key); it != dictionary.end() && it->is_string()) {
            (metadata.get()->*setter)(it->get<std::string>());
        }
    };
    readString("app", &FLKMetadata::setApp);
    readString("appVersion", &FLKMetadata::setAppVersion);
    readString("appBuild", &FLKMetadata::setAppBuild);
    return metadata;
}

FLKJSON FLKMetadata::serialized() const {
    return FLKJSON{{"className", className()},
                   {"documentVersion", documentVersion()},
                   {"app", app()},
                   {"appVersion", appVersion()},
                   {"appBuild", appBuild()}};
}

bool FLKMetadata::isEqual(const FLKMetadata& other) const {
    return className() == other.className() && documentVersion() == other.documentVersion() && app() == other.app() &&
           appVersion() == other.appVersion() && appBuild() == other.appBuild();
}

size_t FLKMetadata::hash() const {
    std::hash<std::string> h;
    return std::hash<long>{}(documentVersion()) ^ h(app()) ^ h(appVersion()) ^ h(appBuild());
}
