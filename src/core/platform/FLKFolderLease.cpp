#include "core/platform/FLKFolderLease.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {
constexpr std::string_view kLockSuffix = ".lock";

fs::path lockURLForFolder(const fs::path& folder) { return folder.string() + std::string(kLockSuffix); }

// A lock taken on a lock file that someone unlinked in the meantime guards
// nothing: the name may already belong to a new file.
bool isFileAtPath(int fd, const fs::path& path) {
    struct stat opened {}, named {};
    return ::fstat(fd, &opened) == 0 && ::stat(path.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
           opened.st_ino == named.st_ino;
}

int lockExclusively(int fd, int flags) {
    int result;
    do result = ::flock(fd, LOCK_EX | flags);
    while (result != 0 && errno == EINTR);
    return result;
}

// The open, locked lock file at `path`, or -1 when it is missing, another
// process holds it, or it was replaced while we waited.
int lockIfAbandoned(const fs::path& path) {
    int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0) return -1;
    if (lockExclusively(fd, LOCK_NB) != 0 || !isFileAtPath(fd, path)) {
        ::close(fd);
        return -1;
    }
    return fd;
}
}  // namespace

std::unique_ptr<FLKFolderLease> FLKFolderLease::leaseForFolder(const fs::path& folder) {
    const auto lockURL = lockURLForFolder(folder);
    for (;;) {
        int fd = ::open(lockURL.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (fd < 0) return nullptr;
        // A sweeping process may have opened the new file before we locked
        // it and then removed it as abandoned: start again with a fresh one.
        if (lockExclusively(fd, 0) == 0 && isFileAtPath(fd, lockURL)) {
            return std::unique_ptr<FLKFolderLease>(new FLKFolderLease(folder, fd));
        }
        ::close(fd);
    }
}

FLKFolderLease::~FLKFolderLease() {
    std::error_code ec;
    // Unlinked while still locked, so no sweeper can take the name for ours.
    if (!fs::exists(fs::symlink_status(folder_, ec))) ::unlink(lockURLForFolder(folder_).c_str());
    ::close(fd_);
}

bool FLKFolderLease::isAbandoned(const fs::path& folder) {
    int fd = lockIfAbandoned(lockURLForFolder(folder));
    if (fd < 0) return false;
    ::close(fd);
    return true;
}

void FLKFolderLease::removeAbandonedFolders(const fs::path& directory) {
    std::vector<fs::path> lockURLs;
    std::error_code ec;
    for (fs::directory_iterator it(directory, ec), end; !ec && it != end; it.increment(ec)) {
        const auto name = it->path().filename().string();
        if (name.size() > kLockSuffix.size() && name.ends_with(kLockSuffix)) lockURLs.push_back(it->path());
    }
    for (const auto& lockURL : lockURLs) {
        int fd = lockIfAbandoned(lockURL);
        if (fd < 0) continue;
        auto folder = lockURL;
        folder.replace_extension();
        std::error_code removal;
        fs::remove_all(folder, removal);
        if (!removal) ::unlink(lockURL.c_str());
        ::close(fd);
    }
}
