#include "core/gpu/FLKShaderLibrary.h"

#include <cstddef>

// Filled by the build from the files in shaders/ (FLKShaderLibraryData.cpp).
namespace FLKShaderLibrary {
extern const Function kFunctions[];
extern const size_t kFunctionCount;

const Function* functionWithName(const std::string& name) {
    for (size_t i = 0; i < kFunctionCount; ++i) {
        if (name == kFunctions[i].name) return &kFunctions[i];
    }
    return nullptr;
}

std::vector<std::string> functionNames() {
    std::vector<std::string> names;
    for (size_t i = 0; i < kFunctionCount; ++i) names.emplace_back(kFunctions[i].name);
    return names;
}
}  // namespace FLKShaderLibrary
