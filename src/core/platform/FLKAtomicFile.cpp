#include "core/platform/FLKAtomicFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <random>

namespace {
FLKError posixError(const std::string& what, const std::filesystem::path& url, int code) {
    return FLKError::make("NSPOSIXErrorDomain", code, what + " " + url.string(), std::strerror(code));
}
}  // namespace

namespace flk {

std::filesystem::path siblingTemporaryURL(const std::filesystem::path& target) {
    static thread_local std::mt19937_64 rng{std::random_device{}()};
    char suffix[17];
    std::snprintf(suffix, sizeof suffix, "%016llx", static_cast<unsigned long long>(rng()));
    std::string name = ".";
    name.append(target.filename().string()).append(".").append(suffix).append(".tmp");
    return target.parent_path() / name;
}

bool writeFileAtomically(const std::filesystem::path& url, std::string_view data, FLKError* error) {
    std::error_code ec;
    if (url.has_parent_path()) std::filesystem::create_directories(url.parent_path(), ec);
    if (ec) {
        flk::setError(error, posixError("Could not create the folder for", url, ec.value()));
        return false;
    }
    auto temporary = siblingTemporaryURL(url);
    int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd < 0) {
        flk::setError(error, posixError("Could not write", url, errno));
        return false;
    }
    const char* p = data.data();
    size_t left = data.size();
    while (left > 0) {
        ssize_t n = ::write(fd, p, left);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            int code = n < 0 ? errno : EIO;
            ::close(fd);
            ::unlink(temporary.c_str());
            flk::setError(error, posixError("Could not write", url, code));
            return false;
        }
        p += n;
        left -= static_cast<size_t>(n);
    }
    if (::fsync(fd) != 0 || ::close(fd) != 0) {
        int code = errno;
        ::unlink(temporary.c_str());
        flk::setError(error, posixError("Could not write", url, code));
        return false;
    }
    if (::rename(temporary.c_str(), url.c_str()) != 0) {
        int code = errno;
        ::unlink(temporary.c_str());
        flk::setError(error, posixError("Could not write", url, code));
        return false;
    }
    return true;
}

}  // namespace flk
