// The subcommands of the fbcompose tool. Each takes the arguments after its
// own name and returns the process's exit code.
#pragma once

namespace fbctool {

int run_demo(int argc, char **argv);
int run_show(int argc, char **argv);
int run_archive(int argc, char **argv);
int run_convert(int argc, char **argv);
int run_fit(int argc, char **argv);
int run_info(int argc, char **argv);

}  // namespace fbctool
