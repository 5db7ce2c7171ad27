#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "core/platform/FLKError.h"

inline constexpr const char* kFLKFileSystemErrorDomain = "FLKFileSystemErrorDomain";

namespace flk {

// --- Path tests (by name only; the file need not exist) ---

// png jpg jpeg gif bmp tiff tif webp heic, in any letter case.
bool isImage(const std::filesystem::path& url);
bool isFlickwellFile(const std::filesystem::path& url);
bool isFlickwellTemplateFile(const std::filesystem::path& url);
// True when the extension (without dot) equals `extension`, ignoring case.
bool hasExtension(const std::filesystem::path& url, const std::string& extension);
// A single path component: not empty, not "." or "..", no "/".
bool isValidFileName(const std::string& name);
// Something (file, folder, or the target of a link) is at the path.
bool exists(const std::filesystem::path& url);

// --- File operations: never overwrite, never leave half a copy behind ---

FLKError fileSystemErrorWithMessage(const std::string& message, long code = 0, const std::string& reason = {});

// Renames the item to `name` in the same folder, keeping its extension
// ("a/Old.flickwelltemplate" -> "a/New.flickwelltemplate"). The new location,
// or nullopt with the error set (missing item, name taken, bad name).
std::optional<std::filesystem::path> renameItemAtURL(const std::filesystem::path& url, const std::string& name,
                                                     FLKError* error = nullptr);
// Moves a file or folder; fails when something is already at `destination`.
bool moveItem(const std::filesystem::path& source, const std::filesystem::path& destination,
              FLKError* error = nullptr);
// Copies a file or a whole folder (links copied as links). The copy is made
// beside the destination and renamed into place, so a failed copy leaves
// nothing; fails when something is already at `destination`.
bool copyItem(const std::filesystem::path& source, const std::filesystem::path& destination,
              FLKError* error = nullptr);
// Removes a file or a folder with its contents; a missing item is an error.
bool removeItem(const std::filesystem::path& url, FLKError* error = nullptr);

// "a/Name.mp4" with suffix "Square" -> "a/Name Square.mp4".
std::filesystem::path fileURLByAddingSuffix(const std::filesystem::path& url, const std::string& suffix);
// The URL itself when nothing is there, else the first free "Name 2.ext", "Name 3.ext", ...
std::filesystem::path uniqueFileURL(const std::filesystem::path& url);

// --- Where this user's files live ---

// FLICKWELL_HOME when it is set (tests and CI point it at a fresh folder):
// then every root below lies inside it.
std::optional<std::filesystem::path> homeRoot();
// Local stores: $FLICKWELL_HOME/data, else $XDG_DATA_HOME/flickwell, else ~/.local/share/flickwell.
std::filesystem::path dataHome();
// User defaults: $FLICKWELL_HOME/config, else $XDG_CONFIG_HOME/flickwell, else ~/.config/flickwell.
std::filesystem::path configHome();
// Logs and autosaves: $FLICKWELL_HOME/state, else $XDG_STATE_HOME/flickwell, else ~/.local/state/flickwell.
std::filesystem::path stateHome();
// Temporary stores: $FLICKWELL_HOME/tmp, else $TMPDIR/flickwell, else /tmp/flickwell.
std::filesystem::path temporaryHome();

}  // namespace flk
