#pragma once

#include <memory>
#include <optional>
#include <string>

#include "core/platform/FLKSerializable.h"

namespace flk {
// The identity of the running application, written into every saved document.
std::string bundleIdentifier();  // "org.flickwell.Flickwell"
std::string bundleVersion();     // the project's version, e.g. "0.1.0"
std::string bundleBuild();
}  // namespace flk

// Which application wrote a package. An unset property answers the running
// application's value, so a new record describes this build.
class FLKMetadata : public FLKSerializable {
public:
    static constexpr long kCurrentDocumentVersion = 1;

    FLKMetadata() = default;

    static std::shared_ptr<FLKMetadata> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKMetadata"; }

    long documentVersion() const { return documentVersion_.value_or(kCurrentDocumentVersion); }
    void setDocumentVersion(long version) { documentVersion_ = version; }
    std::string app() const { return app_.value_or(flk::bundleIdentifier()); }
    void setApp(std::string app) { app_ = std::move(app); }
    std::string appVersion() const { return appVersion_.value_or(flk::bundleVersion()); }
    void setAppVersion(std::string version) { appVersion_ = std::move(version); }
    std::string appBuild() const { return appBuild_.value_or(flk::bundleBuild()); }
    void setAppBuild(std::string build) { appBuild_ = std::move(build); }

    bool isEqual(const FLKMetadata& other) const;
    size_t hash() const;

private:
    std::optional<long> documentVersion_;
    std::optional<std::string> app_;
    std::optional<std::string> appVersion_;
    std::optional<std::string> appBuild_;
};
