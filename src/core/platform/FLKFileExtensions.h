#pragma once

// File extensions (without the dot) and temporary folder names shared by the
// stores, documents, templates, recordings and exports.

inline constexpr const char* kFLKFileExtensionFlickwell = "flickwell";
inline constexpr const char* kFLKFileExtensionFlickwellTemplate = "flickwelltemplate";
inline constexpr const char* kFLKFileExtensionMP4 = "mp4";
inline constexpr const char* kFLKFileExtensionM4V = "m4v";
inline constexpr const char* kFLKFileExtensionMOV = "mov";
inline constexpr const char* kFLKFileExtensionMP3 = "mp3";
inline constexpr const char* kFLKFileExtensionGIF = "gif";
inline constexpr const char* kFLKFileExtensionPNG = "png";
// Property lists (template list, masks list, export presets, registered
// defaults) are kept as JSON files of the same name: no plist parser needed,
// and the files stay readable and diffable.
inline constexpr const char* kFLKFileExtensionPlist = "json";

inline constexpr const char* kFLKTempDirectoryExport = "Export";
inline constexpr const char* kFLKTempDirectoryScreenRecording = "ScreenRecording";
