#include "core/gpu/FLKShaderLibrary.h"

#include <cstddef>
#include <sstream>

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

std::string expandedSource(const Function& function) {
    static const std::string kDirective = "#pragma include ";
    std::istringstream lines(function.source);
    std::string expanded, line;
    while (std::getline(lines, line)) {
        const Function* included =
            line.rfind(kDirective, 0) == 0 ? functionWithName(line.substr(kDirective.size())) : nullptr;
        // An unknown name stays as it is: the compiler ignores the pragma and
        // reports the function it lacks.
        expanded += included ? expandedSource(*included) : line;
        expanded += '\n';
    }
    return expanded;
}

std::vector<std::string> functionNames() {
    std::vector<std::string> names;
    for (size_t i = 0; i < kFunctionCount; ++i) names.emplace_back(kFunctions[i].name);
    return names;
}
}  // namespace FLKShaderLibrary
