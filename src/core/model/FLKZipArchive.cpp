#include "core/model/FLKZipArchive.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zip.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "core/model/FLKPackagePaths.h"
#include "core/platform/FLKSerializable.h"

namespace fs = std::filesystem;

namespace {

struct ArchiveCloser {
    void operator()(zip_t* archive) const { zip_discard(archive); }
};
using ArchivePtr = std::unique_ptr<zip_t, ArchiveCloser>;

struct EntryCloser {
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};
using EntryPtr = std::unique_ptr<zip_file_t, EntryCloser>;

void fail(FLKError* error, FLKZipArchive::ErrorCode code, const fs::path& archive, const std::string& reason) {
    flk::setError(error, FLKError::make(kFLKZipArchiveErrorDomain, code, "Error reading file " + flk::absoluteString(archive),
                                        reason));
}

std::string libzipMessage(int code) {
    zip_error_t zipError;
    zip_error_init_with_code(&zipError, code);
    std::string message = zip_error_strerror(&zipError);
    zip_error_fini(&zipError);
    return message;
}

// --- Packing ---

std::vector<fs::path> packageItems(const fs::path& directory) {
    std::vector<fs::path> items;
    std::error_code ec;
    for (auto it = fs::recursive_directory_iterator(directory, ec); !ec && it != fs::recursive_directory_iterator();
         it.increment(ec)) {
        if (it->is_symlink(ec)) {
            it.disable_recursion_pending();
            continue;
        }
        items.push_back(it->path());
    }
    std::sort(items.begin(), items.end());
    return items;
}

bool addItem(zip_t* archive, const fs::path& item, const fs::path& directory) {
    std::string name = item.lexically_relative(directory).generic_string();
    std::error_code ec;
    if (fs::is_directory(item, ec)) {
        zip_int64_t index = zip_dir_add(archive, name.c_str(), ZIP_FL_ENC_UTF_8);
        return index >= 0 && zip_file_set_external_attributes(archive, static_cast<zip_uint64_t>(index), 0,
                                                              ZIP_OPSYS_UNIX, (S_IFDIR | 0755u) << 16) == 0;
    }
    if (!fs::is_regular_file(item, ec)) return true;
    zip_source_t* source = zip_source_file(archive, item.c_str(), 0, 0);
    if (!source) return false;
    zip_int64_t index = zip_file_add(archive, name.c_str(), source, ZIP_FL_ENC_UTF_8);
    if (index < 0) {
        zip_source_free(source);
        return false;
    }
    return zip_file_set_external_attributes(archive, static_cast<zip_uint64_t>(index), 0, ZIP_OPSYS_UNIX,
                                            (S_IFREG | 0644u) << 16) == 0;
}

// --- Unpacking ---

struct Entry {
    zip_uint64_t index;
    std::string name;
    uint64_t size;
    bool isDirectory;
};

bool isPlainFileOrFolder(zip_t* archive, zip_uint64_t index) {
    zip_uint8_t system = 0;
    zip_uint32_t attributes = 0;
    if (zip_file_get_external_attributes(archive, index, 0, &system, &attributes) != 0) return false;
    if (system != ZIP_OPSYS_UNIX) return true;
    mode_t type = (attributes >> 16) & S_IFMT;
    return type == 0 || type == S_IFREG || type == S_IFDIR;
}

// Checks every entry before a single byte is written.
bool listEntries(zip_t* archive, const fs::path& zipPath, const fs::path& destination,
                 const FLKZipArchive::Limits& limits, std::vector<Entry>& entries, FLKError* error) {
    zip_int64_t count = zip_get_num_entries(archive, 0);
    if (count < 0 || static_cast<uint64_t>(count) > limits.maximumEntryCount) {
        fail(error, FLKZipArchive::kErrorTooLarge, zipPath,
             "The archive holds more than " + std::to_string(limits.maximumEntryCount) + " entries.");
        return false;
    }
    uint64_t total = 0;
    for (zip_uint64_t i = 0; i < static_cast<zip_uint64_t>(count); ++i) {
        zip_stat_t stat;
        if (zip_stat_index(archive, i, 0, &stat) != 0 || !(stat.valid & ZIP_STAT_NAME) ||
            !(stat.valid & ZIP_STAT_SIZE)) {
            fail(error, FLKZipArchive::kErrorCannotOpen, zipPath, "An archive entry cannot be read.");
            return false;
        }
        std::string name = stat.name;
        if (!flk::isSafeRelativeName(name) || !flk::isLexicallyInside(destination / name, destination)) {
            fail(error, FLKZipArchive::kErrorUnsafeEntry, zipPath,
                 "The archive entry \"" + name + "\" would be written outside the document.");
            return false;
        }
        if (!isPlainFileOrFolder(archive, i)) {
            fail(error, FLKZipArchive::kErrorUnsafeEntry, zipPath,
                 "The archive entry \"" + name + "\" is a link or a device, not a file.");
            return false;
        }
        total += stat.size;
        if (total > limits.maximumTotalSize) {
            fail(error, FLKZipArchive::kErrorTooLarge, zipPath, "The archive unpacks to more than the allowed size.");
            return false;
        }
        entries.push_back({i, name, stat.size, name.back() == '/'});
    }
    return true;
}

bool extractFile(zip_t* archive, const Entry& entry, const fs::path& target, const fs::path& zipPath,
                 uint64_t& budget, FLKError* error) {
    std::error_code ec;
    fs::create_directories(target.parent_path(), ec);
    EntryPtr input(zip_fopen_index(archive, entry.index, 0));
    int fd = ::open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (!input || fd < 0) {
        if (fd >= 0) ::close(fd);
        fail(error, FLKZipArchive::kErrorCannotExtract, zipPath,
             "The archive entry \"" + entry.name + "\" cannot be unpacked" +
                 (fd < 0 ? std::string(": ") + std::strerror(errno) : std::string(".")));
        return false;
    }
    std::vector<char> buffer(1 << 16);
    uint64_t written = 0;
    bool ok = true;
    std::string reason;
    while (ok) {
        zip_int64_t n = zip_fread(input.get(), buffer.data(), buffer.size());
        if (n == 0) break;
        if (n < 0) {
            ok = false;
            reason = "The archive entry \"" + entry.name + "\" is damaged: " + zip_file_strerror(input.get());
            break;
        }
        written += static_cast<uint64_t>(n);
        if (written > entry.size || static_cast<uint64_t>(n) > budget) {
            ok = false;
            reason = "The archive entry \"" + entry.name + "\" unpacks to more than it declares.";
            break;
        }
        budget -= static_cast<uint64_t>(n);
        if (::write(fd, buffer.data(), static_cast<size_t>(n)) != n) {
            ok = false;
            reason = "The archive entry \"" + entry.name + "\" cannot be written: " + std::strerror(errno);
        }
    }
    if (::close(fd) != 0 && ok) {
        ok = false;
        reason = "The archive entry \"" + entry.name + "\" cannot be written: " + std::strerror(errno);
    }
    if (!ok) fail(error, FLKZipArchive::kErrorCannotExtract, zipPath, reason);
    return ok;
}

}  // namespace

bool FLKZipArchive::createZipFileAtPath(const fs::path& zipPath, const fs::path& directory, FLKError* error) {
    int code = 0;
    ArchivePtr archive(zip_open(zipPath.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &code));
    auto failCreate = [&](const std::string& reason) {
        flk::setError(error, FLKError::make(kFLKZipArchiveErrorDomain, kErrorCannotCreate,
                                            "The document could not be written to " + flk::absoluteString(zipPath),
                                            reason));
        return false;
    };
    if (!archive) return failCreate(libzipMessage(code));
    for (const auto& item : packageItems(directory)) {
        if (!addItem(archive.get(), item, directory)) return failCreate(zip_strerror(archive.get()));
    }
    if (zip_close(archive.get()) != 0) return failCreate(zip_strerror(archive.get()));
    archive.release();
    return true;
}

bool FLKZipArchive::unzipFileAtPath(const fs::path& zipPath, const fs::path& destination, FLKError* error) {
    return unzipFileAtPath(zipPath, destination, Limits{}, error);
}

bool FLKZipArchive::unzipFileAtPath(const fs::path& zipPath, const fs::path& destination, const Limits& limits,
                                    FLKError* error) {
    int code = 0;
    ArchivePtr archive(zip_open(zipPath.c_str(), ZIP_RDONLY | ZIP_CHECKCONS, &code));
    if (!archive) {
        fail(error, kErrorCannotOpen, zipPath, "It is not a readable document archive (" + libzipMessage(code) + ").");
        return false;
    }
    std::vector<Entry> entries;
    if (!listEntries(archive.get(), zipPath, destination, limits, entries, error)) return false;

    std::error_code ec;
    if (destination.has_parent_path()) fs::create_directories(destination.parent_path(), ec);
    if (!fs::create_directory(destination, ec)) {
        fail(error, kErrorCannotExtract, zipPath,
             "The folder " + destination.string() + " cannot be made" + (ec ? ": " + ec.message() : "."));
        return false;
    }
    uint64_t budget = limits.maximumTotalSize;
    for (const auto& entry : entries) {
        fs::path target = destination / entry.name;
        if (entry.isDirectory) {
            fs::create_directories(target, ec);
            if (ec) {
                fail(error, kErrorCannotExtract, zipPath, "The folder \"" + entry.name + "\" cannot be made.");
                return false;
            }
        } else if (!extractFile(archive.get(), entry, target, zipPath, budget, error)) {
            return false;
        }
    }
    return true;
}
