#pragma once

#include <filesystem>
#include <string>

// Name checks for what a document package brings in from outside: archive
// entries and media paths stored in its JSON. Documents are untrusted input,
// and neither libzip nor std::filesystem stops a name from climbing out of
// the folder it is joined to ("a/../../x", "/abs", "C:\x").
namespace flk {

// A relative name made of plain components: not empty, no leading '/', no
// '\\' or ':', no "." or ".." component, no empty component except a single
// trailing '/' (which marks a folder entry).
bool isSafeRelativeName(const std::string& name);

// True when `path`, normalised, lies strictly inside `folder` (normalised).
bool isLexicallyInside(const std::filesystem::path& path, const std::filesystem::path& folder);

// A stored media reference ("media/ab12.png") that names a file inside the
// package's "media" folder once joined to `packageFolder`.
bool isConfinedMediaPath(const std::string& relativePath, const std::filesystem::path& packageFolder);

}  // namespace flk
