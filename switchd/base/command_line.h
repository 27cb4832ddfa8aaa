// What the command lines of all programs have in common: --help, --version, and errors of one line that begin
// with the program's name.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>

namespace stpswitch {

inline constexpr int kWrongCommandLine = 2;

// Reads the command line; what it says is on standard error or standard output then. Nothing, or the exit
// status with which the program ends: after --help or --version, or when the command line is wrong.
std::optional<int> read_command_line(CLI::App *app, int argc, char **argv);

// A program: what its body throws is one line on standard error, as is that its output is lost, and ends it
// with `failure`; otherwise with what the body returns.
int run_program(const char *name, int failure, int (*body)(int argc, char **argv), int argc, char **argv);

}  // namespace stpswitch
