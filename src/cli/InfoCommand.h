#pragma once

#include <CLI/CLI.hpp>

#include <string>

// `flickwell-cli info DOC [--json]`: what a document or template holds.
class InfoCommand {
public:
    static void add(CLI::App& app, int& exitCode);
    int run() const;

private:
    std::string source_;
    bool json_ = false;
};
