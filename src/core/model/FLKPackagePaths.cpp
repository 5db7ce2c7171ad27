#include "core/model/FLKPackagePaths.h"

namespace flk {

bool isSafeRelativeName(const std::string& name) {
    if (name.empty() || name.front() == '/') return false;
    if (name.find_first_of("\\:") != std::string::npos) return false;
    std::string body = name.back() == '/' ? name.substr(0, name.size() - 1) : name;
    if (body.empty()) return false;
    size_t start = 0;
    while (start <= body.size()) {
        size_t end = body.find('/', start);
        if (end == std::string::npos) end = body.size();
        std::string component = body.substr(start, end - start);
        if (component.empty() || component == "." || component == "..") return false;
        start = end + 1;
    }
    return true;
}

bool isLexicallyInside(const std::filesystem::path& path, const std::filesystem::path& folder) {
    auto normalFolder = folder.lexically_normal();
    auto relative = path.lexically_normal().lexically_relative(normalFolder);
    if (relative.empty() || relative == ".") return false;
    return *relative.begin() != "..";
}

bool isConfinedMediaPath(const std::string& relativePath, const std::filesystem::path& packageFolder) {
    if (!isSafeRelativeName(relativePath) || relativePath.back() == '/') return false;
    return isLexicallyInside(packageFolder / relativePath, packageFolder / "media");
}

}  // namespace flk
