#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

// What a document being read or written looks like to the objects inside it:
// the folder that relative media paths resolve against. The document package
// implements it; this layer knows nothing else about documents.
class FLKSerializationFile {
public:
    virtual ~FLKSerializationFile() = default;
    virtual std::filesystem::path folderURL() const = 0;
};

// One process-wide stack naming the document being read. Documents are read
// one at a time from one thread, so the stack is not locked.
class FLKFileSerializationContext {
public:
    explicit FLKFileSerializationContext(std::shared_ptr<FLKSerializationFile> file) : file_(std::move(file)) {}

    static std::shared_ptr<FLKFileSerializationContext> contextWithFile(std::shared_ptr<FLKSerializationFile> file);
    static void pushContext(std::shared_ptr<FLKFileSerializationContext> context);
    static void popContext();
    // The innermost context, or nullptr when none is pushed.
    static std::shared_ptr<FLKFileSerializationContext> currentContext();
    static const std::vector<std::shared_ptr<FLKFileSerializationContext>>& contextStack();

    const std::shared_ptr<FLKSerializationFile>& file() const { return file_; }

private:
    std::shared_ptr<FLKSerializationFile> file_;
};

// Pushes on construction and pops on destruction, so an exception while
// reading never leaves a stale context behind.
class FLKFileSerializationContextScope {
public:
    explicit FLKFileSerializationContextScope(std::shared_ptr<FLKSerializationFile> file) {
        FLKFileSerializationContext::pushContext(FLKFileSerializationContext::contextWithFile(std::move(file)));
    }
    ~FLKFileSerializationContextScope() { FLKFileSerializationContext::popContext(); }
    FLKFileSerializationContextScope(const FLKFileSerializationContextScope&) = delete;
    FLKFileSerializationContextScope& operator=(const FLKFileSerializationContextScope&) = delete;
};

namespace flk {
// The last two components joined by "/": ".../Package/media/a.png" -> "media/a.png".
std::string relativeMediaPath(const std::filesystem::path& url);
// The current context's document folder with the relative path appended; the
// path as given when no context is current.
std::filesystem::path URLWithRelativeMediaPath(const std::string& relativePath);
}  // namespace flk
