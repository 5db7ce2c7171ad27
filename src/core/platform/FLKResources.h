#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "core/platform/FLKError.h"
#include "core/platform/FLKJSON.h"

// The application's read-only data (templates, masks, presets, registered
// defaults, sounds), installed as share/flickwell/ beside the program.
// FLICKWELL_RESOURCES names the folder explicitly (the build tree, tests).
class FLKResources {
public:
    // FLICKWELL_RESOURCES, else <program folder>/../share/flickwell, else
    // <program folder>/share/flickwell; nullopt when none of them is a folder.
    static std::optional<std::filesystem::path> resourcesDirectory();

    // "<resources>/<name>.<extension>" (a file or a folder) when it exists;
    // an empty extension looks the name up as it is.
    static std::optional<std::filesystem::path> URLForResource(const std::string& name,
                                                               const std::string& extension);

    // The JSON value of the property-list resource `name` ("<name>.json");
    // nullopt with the error set when it is missing or cannot be parsed.
    static std::optional<FLKJSON> propertyListNamed(const std::string& name, FLKError* error = nullptr);
};
