#pragma once

#include <memory>
#include <string>

#include "core/platform/FLKError.h"

class FLKFile;
class FLKScene;
class FLKTemplate;

// What a subcommand works on, named on the command line as a document file
// (".flickwell"), a template folder (".flickwelltemplate") or the name of a
// built-in or user template. Opening one makes it the current document.
class DocumentSource {
public:
    // The opened document; null with `error` naming the argument and the problem.
    static std::shared_ptr<FLKFile> open(const std::string& argument, FLKError* error);
    // The template the argument names (name matched ignoring letter case), or null.
    static std::shared_ptr<FLKTemplate> templateNamed(const std::string& argument);
};
