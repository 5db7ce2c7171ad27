#pragma once

#include <CLI/CLI.hpp>

// `flickwell-cli templates [--json]`: the templates a document can start from.
class TemplatesCommand {
public:
    static void add(CLI::App& app, int& exitCode);
    int run() const;

private:
    bool json_ = false;
};
