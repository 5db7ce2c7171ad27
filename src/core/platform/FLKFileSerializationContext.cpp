#include "core/platform/FLKFileSerializationContext.h"

namespace {
std::vector<std::shared_ptr<FLKFileSerializationContext>>& stack() {
    static auto* s = new std::vector<std::shared_ptr<FLKFileSerializationContext>>;
    return *s;
}
}  // namespace

std::shared_ptr<FLKFileSerializationContext> FLKFileSerializationContext::contextWithFile(
    std::shared_ptr<FLKSerializationFile> file) {
    return std::make_shared<FLKFileSerializationContext>(std::move(file));
}

void FLKFileSerializationContext::pushContext(std::shared_ptr<FLKFileSerializationContext> context) {
    stack().push_back(std::move(context));
}

void FLKFileSerializationContext::popContext() {
    if (!stack().empty()) stack().pop_back();
}

std::shared_ptr<FLKFileSerializationContext> FLKFileSerializationContext::currentContext() {
    return stack().empty() ? nullptr : stack().back();
}

const std::vector<std::shared_ptr<FLKFileSerializationContext>>& FLKFileSerializationContext::contextStack() {
    return stack();
}

namespace flk {
std::string relativeMediaPath(const std::filesystem::path& url) {
    auto file = url.filename();
    auto folder = url.parent_path().filename();
    return folder.empty() ? file.string() : (folder / file).string();
}

std::filesystem::path URLWithRelativeMediaPath(const std::string& relativePath) {
    auto context = FLKFileSerializationContext::currentContext();
    if (!context || !context->file()) return std::filesystem::path(relativePath);
    return context->file()->folderURL() / relativePath;
}
}  // namespace flk
